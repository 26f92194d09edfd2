#ifndef HOST_MODULE_DECODE_CONTROLS_H_
#define HOST_MODULE_DECODE_CONTROLS_H_

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "host/module/module.h"
#include "host/module/window_handle.h"
#include "host/rows/decoded_row.h"

namespace host {

// The two controls that the module writes a decode into, in a window that is
// never shown, and what stands in them. One pair serves any number of
// connections, one after the other.
class DecodeControls {
 public:
  // What takes the hex dump. An edit control may measure every line of a text
  // that it gets: where nobody asks for the dump, a control that only keeps its
  // text saves most of the time of a display.
  enum class HexWindow { kEdit, kPlain };

  explicit DecodeControls(HexWindow hex_window);  // throws Failure

  const DecodeWindows& Windows() const { return windows_; }

  // Empties the hex window, which keeps its text when a decode fails before the
  // dump. The tree is emptied by the module, whose lines it holds.
  void ForgetHex();
  // What stands in them. Texts are code page 1252.
  std::vector<TreeLine> Tree() const;
  // Nothing without an edit control.
  std::optional<std::string> Hex() const;

 private:
  HexWindow hex_window_;
  WindowHandle parent_;
  DecodeWindows windows_;  // owned by the parent
};

}  // namespace host

#endif  // HOST_MODULE_DECODE_CONTROLS_H_
