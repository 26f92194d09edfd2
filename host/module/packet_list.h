#ifndef HOST_MODULE_PACKET_LIST_H_
#define HOST_MODULE_PACKET_LIST_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "host/module/host_window.h"
#include "host/module/module.h"
#include "host/rows/decoded_row.h"

namespace host {

// The module's two lists for one host window, read by repeated calls of
// GetDicomPacketList. All windows of a module share some of its state, so one
// window's lists are read to their end before another one's are begun.
//
// The reading ends for any module and any capture: a place at which the module
// fails again and again ends the lists before it, and Notes() says so.
class PacketList {
 public:
  // Told after each call, with the module's progress in per cent; false ends
  // the reading, which may be taken up later.
  using Progress = std::function<bool(unsigned percent)>;

  // The window and the module must outlive the list, which makes the window
  // known to the module and, at its own end, forgotten.
  PacketList(Module& module, HostWindow& window, bool live);
  ~PacketList();
  PacketList(const PacketList&) = delete;
  PacketList& operator=(const PacketList&) = delete;

  // Lets the module read every packet that the window reports now; again and
  // again, also when the feed has grown.
  void Read(const Progress& progress = nullptr);
  // The module was loaded anew and forgot the window: the next Read() begins at
  // the first packet.
  void BeginAnew();
  // What the list calls say from now on; false only when the feed is complete.
  // Lists that ended early stay live.
  void SetLive(bool live);

  // Rows that the module lists by now.
  std::uint32_t Count(ListKind list);
  // At most DICOM_ROWS_PER_CALL rows from row `first` on; fewer at the end of
  // the list.
  std::vector<ListedRow> Page(ListKind list, std::uint32_t first);

  // What went wrong while reading, one whole sentence each, none twice.
  const std::vector<std::string>& Notes() const { return notes_; }

 private:
  enum class Outcome { kUpToDate, kMore, kFailed, kCrashed };

  // Makes the call and keeps what its message boxes said. A module that crashed
  // is loaded again at once.
  Outcome Call(Module::ListRequest& request);
  // One call that reads and lists nothing.
  Outcome ReadSome();
  // Reads to the end, or until `progress` says no; false when the module keeps
  // failing.
  bool ReadOn(const Progress& progress);
  // Counts a failure; true when there were enough, and no further call helps.
  bool GivesUp(Outcome outcome);
  // Whether the lists hold all that the window reports, or the module stands
  // still. `taken_before` and `fetched_before` are what the window counted
  // before the call that had this outcome.
  bool IsFinished(Outcome outcome, std::uint32_t taken_before,
                  std::uint64_t fetched_before);
  // Reads anew, only the packets before the one at which it failed first.
  void EndBeforeFailure(const Progress& progress);
  void AddNote(const std::string& note);

  Module& module_;
  HostWindow& window_;
  bool live_;
  bool ends_early_ = false;  // at the packet where the module keeps failing
  unsigned percent_ = 0;
  unsigned failures_ = 0;  // since the beginning, or the last retreat
  unsigned idle_calls_ = 0;
  // The first packet of those at which it failed.
  std::uint32_t first_failure_ = 0;
  std::string failure_text_;
  std::vector<std::string> notes_;
};

}  // namespace host

#endif  // HOST_MODULE_PACKET_LIST_H_
