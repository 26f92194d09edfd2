#ifndef HOST_CAPVIEW_CAPTURE_DOCUMENT_H_
#define HOST_CAPVIEW_CAPTURE_DOCUMENT_H_

#include <windows.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/capview/capture_findings.h"
#include "host/dialogue/dialogue.h"
#include "host/dialogue/negotiation.h"
#include "host/module/decode_controls.h"
#include "host/module/module.h"
#include "host/module/module_session.h"
#include "host/rows/decoded_row.h"
#include "host/rows/row_trace.h"
#include "host/streams/ae_titles.h"
#include "host/streams/capture_loader.h"
#include "host/timing/connection_timing.h"

namespace host {

// What a person names to be opened: files, folders, names with wildcards.
using CaptureNames = std::vector<std::filesystem::path>;

// An open capture and the module that lists and decodes it, without any window
// that is seen. All reading is done in slices by Work(). One connection is
// chosen at a time; what was listed of the others is kept.
class CaptureDocument {
 public:
  // Loads nothing yet.
  explicit CaptureDocument(std::filesystem::path module_path);

  // The files that the names stand for, see FindCaptures(), as one capture.
  // Throws CaptureError, and Failure when there is no usable module or several
  // files are to be followed. What was open before stays open then.
  void Open(const CaptureNames& names, HandOver hand_over, bool follow);
  bool IsOpen() const { return loader_ != nullptr; }
  const CaptureNames& names() const { return names_; }
  // "ring_1.pcap", "ring_1.pcap and 2 more files".
  std::string Title() const;

  // Reads on in the capture and in the list of the chosen connection until the
  // time is up. True when there is more to do at once. Throws Failure when the
  // module cannot be loaded again.
  bool Work(const TimeIsUp& time_is_up);
  // Looks whether a followed capture has grown, with the next Work().
  void LookAgain();
  // The capture ends with what is there.
  void Stop();

  CaptureLoader& loader() { return *loader_; }
  const CaptureLoader& loader() const { return *loader_; }
  // Per cent of all that is to be read.
  unsigned Percent() const;

  // Connections by their index in the capture, as many as were met by now.
  std::size_t ConnectionCount() const;
  const Connection& ConnectionAt(std::size_t index) const;
  // Nothing while no association request was read.
  std::optional<AeTitles> TitlesOf(std::size_t index) const;
  std::optional<std::size_t> chosen() const { return chosen_; }
  void Choose(std::size_t index);
  // Reads the chosen connection anew.
  void Refresh();

  // Rows that are shown, and those that the module can deliver at the moment:
  // fewer while a module that had to be loaded again catches up.
  std::uint32_t Count(ListKind list) const;
  std::uint32_t Available(ListKind list) const;
  bool IsListed() const;  // the module has read all that there is by now
  // As ModuleSession::Page; nothing without a chosen connection.
  std::vector<ListedRow> Page(ListKind list, std::uint32_t first);
  // Null without a chosen connection.
  const RowTrace* Trace(ListKind list) const;
  // On the capture, the chosen connection and its lists.
  std::vector<std::string> Notes() const;
  bool HasModuleFailed() const;  // while it listed the chosen connection
  // A connection's responses with a failure status, and the row of the first
  // one in the list of messages.
  struct Failures {
    std::uint32_t count = 0;
    std::uint32_t first = 0;
  };
  Failures FailedMessages(std::size_t connection) const;

  // A part of a connection's dialogue.
  struct DialoguePart {
    const Dialogue* dialogue = nullptr;
    std::uint32_t index = 0;  // of a message or an association in it
  };
  // The message that is the row, or the one that its PDU has a part of; of the
  // chosen connection. Empty when there is none.
  std::optional<DialoguePart> MessageOf(RowRef row) const;
  std::optional<DialoguePart> AssociationOf(RowRef row) const;
  // Of what was read by now.
  Acceptances AllAcceptances() const;

  // What is wrong in the capture, as far as it was read: see CaptureFindings.
  const std::vector<Finding>& Findings() const { return findings_.All(); }
  const std::string& Verdict() const { return findings_.Verdict(); }
  // Another number for each time that they have become others.
  unsigned FindingsVersion() const { return findings_version_; }

  // Where the time of the chosen connection went; null until the capture was
  // read and the connection listed.
  const std::shared_ptr<const ConnectionTiming>& Timing() const {
    return timing_;
  }

  // What a person wants to see of a decode: see DisplayState.
  struct Switches {
    bool show_message_data = true;
    std::uint32_t expand_mask = 0;
  };
  // Shows the row in both controls. As the two below it answers why the decode
  // stopped early, or nothing; the row's index is below Available().
  std::string Display(RowRef row, const DecodeWindows& windows,
                      const Switches& switches);
  // Writes the row's lines to the file: see SaveFile::Handle.
  std::string Save(RowRef row, std::int32_t file);
  // Draws the row's lines from the top of the page on.
  std::string Print(RowRef row, const Paper& paper);
  // Has the module empty both controls.
  void Clear(const DecodeWindows& windows);

  // Null when none is loaded.
  Module* module() { return module_.get(); }
  void LoadModule();  // unless it is loaded; throws Failure

 private:
  // Of the chosen connection; null without one.
  ModuleSession* Current() const;
  // Whether the feed of the chosen connection may get more packets.
  bool IsGrowing() const;
  // The dialogue of the chosen connection, and the row's record in it; empty
  // when either is not known.
  std::optional<DialoguePart> RecordOf(RowRef row) const;
  void ListSome(ModuleSession& session, const TimeIsUp& time_is_up);
  void ChooseFirstDicom();
  // Once for each choice, when nothing is left to be read or listed.
  void TimeTheChosen();

  std::filesystem::path module_path_;
  std::unique_ptr<Module> module_;
  // For saving and printing.
  DecodeControls hidden_{DecodeControls::HexWindow::kPlain};
  CaptureNames names_;
  std::string first_file_;            // its name
  std::vector<std::string> unfound_;  // a sentence for each name of nothing
  std::unique_ptr<CaptureLoader> loader_;
  std::map<std::size_t, std::unique_ptr<ModuleSession>> sessions_;
  mutable std::map<std::size_t, AeTitles> titles_;
  std::optional<std::size_t> chosen_;
  bool clean_streams_ = false;
  CaptureFindings findings_;
  unsigned findings_version_ = 0;
  std::shared_ptr<const ConnectionTiming> timing_;  // of the chosen connection
  bool look_again_ = false;
};

}  // namespace host

#endif  // HOST_CAPVIEW_CAPTURE_DOCUMENT_H_
