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

// The module's packet list for one host window, read by repeated calls of
// GetDicomPacketList. All windows of a module share some of its state, so one
// list is read to its end before another one is begun.
class PacketList {
 public:
  // Told after each call, with the module's progress in per cent; false ends
  // the reading, which may be taken up later.
  using Progress = std::function<bool(unsigned percent)>;

  // `live` as the feed wants it: see Connection. The window and the module must
  // outlive the list. Makes the window known to the module and, at its end,
  // forgotten.
  PacketList(Module& module, HostWindow& window, bool live);
  ~PacketList();
  PacketList(const PacketList&) = delete;
  PacketList& operator=(const PacketList&) = delete;

  // Lets the module read every packet that the window reports now. Ends for any
  // module and any capture: a place at which the module fails again and again
  // ends the list before it, and Notes() says so.
  void Read(const Progress& progress = nullptr);
  // The same after Module::Reload(), which forgot the window.
  void ReadAgain(const Progress& progress = nullptr);
  // For reading in slices: Begin() when the module knows nothing of the window
  // yet, then Resume() again and again, also when the feed has grown.
  void Begin();
  void Resume(const Progress& progress);
  // What the list calls say from now on; false only when the feed is complete.
  void SetLive(bool live);

  // Rows of the view that the module lists.
  std::uint32_t Count(ListKind view);
  // At most DICOM_ROWS_PER_CALL rows from position `first`, which counts from
  // 0; fewer at the end of the list.
  std::vector<ListedRow> Page(ListKind view, std::uint32_t first);
  std::vector<ListedRow> AllRows(ListKind view);

  // What went wrong while reading, one sentence each.
  const std::vector<std::string>& Notes() const { return notes_; }

 private:
  enum class Outcome { kUpToDate, kMore, kFailed, kCrashed };

  Outcome Call(Module::ListRequest& request);
  Outcome ReadSome();
  bool ReadOn(const Progress& progress);
  bool GivesUp(Outcome outcome);
  bool IsFinished(Outcome outcome, std::uint32_t taken_before,
                  std::uint64_t fetched_before);
  void EndBeforeFailure(const Progress& progress);
  void AddNote(const std::string& note);

  Module& module_;
  HostWindow& window_;
  bool live_;
  bool ends_early_ = false;  // at the packet where the module keeps failing
  unsigned percent_ = 0;
  unsigned failures_ = 0;
  unsigned idle_calls_ = 0;
  std::uint32_t first_failure_ = 0;  // packets taken when it happened, lowest
  std::string failure_text_;
  std::vector<std::string> notes_;
};

}  // namespace host

#endif  // HOST_MODULE_PACKET_LIST_H_
