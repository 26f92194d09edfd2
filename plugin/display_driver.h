#ifndef PLUGIN_DISPLAY_DRIVER_H_
#define PLUGIN_DISPLAY_DRIVER_H_

#include <cstdint>

#include "dimse/dicom_dictionary.h"
#include "interface/host_interface.h"
#include "plugin/host_context.h"
#include "tree/tree_lines.h"

namespace dicom {

// What the host asks to be shown, and where. The windows stay the host's.
struct DisplayRequest {
  LineTarget target;
  HWND hex_window;
  std::int32_t index;  // position in the list of the chosen view, from 0
  bool message_view;
};

// Shows one PDU or message: its bytes in the hex window, its decode in the tree
// (or, while the host prints or saves, on paper or in the file). There is one
// for all host windows.
class DisplayDriver {
 public:
  DisplayDriver(HostContexts& contexts, const DicomDictionary& dictionary)
      : contexts_(contexts), dictionary_(dictionary) {}

  // An index behind the end shows the last record. Catches nothing: a negative
  // index (std::out_of_range), a packet that the host no longer delivers
  // (UnableToGetPacketFromTapvane) or WrongTreeDepth leave the call.
  // Deliberate: the busy flag then stays set and every later call is turned
  // away.
  void Display(const DisplayRequest& request);

 private:
  // Both gather the record's bytes from the host, dump them, and decode them
  // into lines. The list of the view is not empty.
  void ShowPdu(const DisplayRequest& request, const HostContext& context);
  void ShowMessage(const DisplayRequest& request, const HostContext& context);

  HostContexts& contexts_;
  const DicomDictionary& dictionary_;
  bool busy_ = false;
};

}  // namespace dicom

#endif  // PLUGIN_DISPLAY_DRIVER_H_
