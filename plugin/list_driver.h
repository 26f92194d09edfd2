#ifndef PLUGIN_LIST_DRIVER_H_
#define PLUGIN_LIST_DRIVER_H_

#include <cstdint>
#include <exception>

#include "interface/host_interface.h"
#include "plugin/host_context.h"

namespace dicom {

// What the host asks of one list call, and where it wants the answers. Any
// pointer may be null: nothing is then written.
struct ListRequest {
  HWND host_window;
  PacketListRow* rows;             // room for DICOM_ROWS_PER_CALL
  std::int32_t* first_index;       // in/out
  std::uint32_t* row_count;        // in/out
  std::uint32_t* first_available;  // out
  std::uint32_t* last_available;   // out
  bool message_view;
  bool live;  // the capture still grows
};

// Fills the host's packet list: each call reads a few more segments, then
// copies rows. Catches every failure of the reading and reports every third
// one. There is one for all host windows.
class ListDriver {
 public:
  explicit ListDriver(HostContexts& contexts) : contexts_(contexts) {}

  // Answers a DICOM_LIST_... code in the low 16 bits and the progress in per
  // cent in the high ones. A call from inside another one does nothing.
  std::uint32_t List(const ListRequest& request);

 private:
  // List without the guard against a call inside a call.
  std::uint32_t ListGuarded(const ListRequest& request);

  // Hands what the accessor delivers to the context, a call's worth of it, and
  // at the end of a capture closes it. True when the last read delivered a
  // segment, so that there may be more. Throws what the two throw.
  bool ReadSegments(PacketAccessor& accessor, HostContext& context, bool live);

  // Counts the failure, shows it or forgets the window's capture, and answers
  // what List answers then.
  std::uint32_t ReportFailure(HWND host_window, const std::exception& failure,
                              std::uint32_t progress_word);

  HostContexts& contexts_;
  // Deliberate: for all host windows together, and no success resets the
  // failures.
  bool busy_ = false;
  std::uint32_t failure_counter_ = 0;
};

}  // namespace dicom

#endif  // PLUGIN_LIST_DRIVER_H_
