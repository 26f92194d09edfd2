#ifndef HOST_CAPVIEW_CAPTURE_DOCUMENT_H_
#define HOST_CAPVIEW_CAPTURE_DOCUMENT_H_

#include <windows.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/module/decode_view.h"
#include "host/module/host_window.h"
#include "host/module/module.h"
#include "host/module/packet_list.h"
#include "host/rows/decoded_row.h"
#include "host/rows/wire_index.h"
#include "host/streams/ae_titles.h"
#include "host/streams/capture_loader.h"

namespace host {

// An open capture and the module that lists and decodes it, without any window
// that is seen. All reading is done in slices by Work().
class CaptureDocument {
 public:
  explicit CaptureDocument(std::wstring module_path);
  ~CaptureDocument();

  // Throws CaptureError, and Failure when there is no usable module. What was
  // open before stays open then.
  void Open(const std::filesystem::path& path, HandOver hand_over, bool follow);
  bool IsOpen() const { return loader_ != nullptr; }
  const std::filesystem::path& path() const { return path_; }

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

  std::size_t ConnectionCount() const;
  const Connection& ConnectionAt(std::size_t index) const;
  std::optional<AeTitles> TitlesOf(std::size_t index) const;
  std::optional<std::size_t> chosen() const { return chosen_; }
  void Choose(std::size_t index);
  // Reads the chosen connection anew.
  void Refresh();

  // Rows that are shown, and those that the module can deliver at the moment:
  // fewer while a module that had to be loaded again catches up.
  std::uint32_t Count(ListKind view) const;
  std::uint32_t Available(ListKind view) const;
  bool IsListed() const;  // the module has read all that there is by now
  std::vector<ListedRow> Page(ListKind view, std::uint32_t first);
  WireIndex* Wire(ListKind view);  // null without a chosen connection
  std::vector<std::string> Notes() const;
  bool HasModuleFailed() const;  // while it listed the chosen connection
  // A connection's responses with a failure status, and the first one's
  // position in the message view.
  struct Failures {
    std::uint32_t count = 0;
    std::uint32_t first = 0;
  };
  Failures FailedMessages(std::size_t connection) const;

  struct Switches {
    bool show_message_data = true;
    std::uint32_t expand_mask = 0;
  };
  // Shows the row in both controls; answers why it stopped early, or nothing.
  // `index` is below Available().
  std::string Display(ListKind view, std::uint32_t index, HWND tree, HWND hex,
                      const Switches& switches);
  std::string Save(ListKind view, std::uint32_t index, HFILE file);
  struct Paper {
    HDC printer = nullptr;
    std::int32_t line_height = 0;
    std::int32_t lines_per_page = 0;
  };
  // Draws the row's lines from the top of the page on.
  std::string Print(ListKind view, std::uint32_t index, const Paper& paper);
  // Empties both controls by the module.
  void Clear(HWND tree, HWND hex);

  // Null when none is loaded.
  Module* module() { return module_.get(); }
  void LoadModule();  // unless it is loaded; throws Failure

 private:
  struct Session;

  Session* Current() const;
  void ListSome(const TimeIsUp& time_is_up);
  bool NeedsListing(const Session& session) const;
  void ReadCounts(Session& session);
  void ChooseFirstDicom();
  std::string RecoverFrom(std::string failure);

  std::wstring module_path_;
  std::unique_ptr<Module> module_;
  // For saving and printing.
  DecodeView hidden_{DecodeView::HexWindow::kPlain};
  std::filesystem::path path_;
  std::unique_ptr<CaptureLoader> loader_;
  std::map<std::size_t, std::unique_ptr<Session>> sessions_;
  mutable std::map<std::size_t, AeTitles> titles_;
  std::optional<std::size_t> chosen_;
  std::size_t looked_for_dicom_ = 0;
  bool look_again_ = false;
};

}  // namespace host

#endif  // HOST_CAPVIEW_CAPTURE_DOCUMENT_H_
