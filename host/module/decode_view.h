#ifndef HOST_MODULE_DECODE_VIEW_H_
#define HOST_MODULE_DECODE_VIEW_H_

#include <windows.h>
// After windows.h.
#include <commctrl.h>

#include <string>
#include <vector>

#include "host/module/host_window.h"
#include "host/module/module.h"
#include "host/rows/decoded_row.h"

namespace host {

// Reads every line of a tree view that the module filled, collapsed ones
// included, in one pass.
// `items` receives the item of each line unless it is null.
std::vector<TreeLine> ReadTree(HWND tree,
                               std::vector<HTREEITEM>* items = nullptr);

// Bytes of a window's text, code page 1252.
std::string ReadWindowText(HWND window);

// The two controls that the module writes a decode into, in a window that is
// never shown: a tree view and a hex window.
class DecodeView {
 public:
  // What takes the hex dump. An edit control may measure every line of a text
  // that it gets: where nobody asks for the dump, a control that only keeps its
  // text saves most of the time of a display.
  enum class HexWindow { kEdit, kPlain };

  explicit DecodeView(HexWindow hex_window);  // throws Failure
  ~DecodeView();
  DecodeView(const DecodeView&) = delete;
  DecodeView& operator=(const DecodeView&) = delete;

  // Displays the row at `index` and reads back what came. When the decoding
  // stopped by a failure, the answer holds what was there until then, and the
  // module has to be reloaded before the next display.
  // `hex` of the answer is empty without an edit control.
  DecodedRow Display(Module& module, HostWindow& window, ListKind view,
                     std::int32_t index);
  // Writes the row's lines to `file`, as the module saves them; answers why it
  // stopped early, or nothing.
  std::string Save(Module& module, HostWindow& window, ListKind view,
                   std::int32_t index, HFILE file);
  // Draws the row's lines on the printer that the window's display state names.
  std::string Print(Module& module, HostWindow& window, ListKind view,
                    std::int32_t index);
  // Empties both controls; needed while the module that filled them is loaded.
  void Clear(Module& module);

 private:
  std::string Divert(DisplayState::Output output, Module& module,
                     HostWindow& window, ListKind view, std::int32_t index);
  std::string Show(Module& module, HostWindow& window, ListKind view,
                   std::int32_t index);

  HexWindow hex_window_;
  HWND parent_ = nullptr;
  HWND tree_ = nullptr;
  HWND hex_ = nullptr;
};

}  // namespace host

#endif  // HOST_MODULE_DECODE_VIEW_H_
