#ifndef HOST_CAPVIEW_HEX_PANE_H_
#define HOST_CAPVIEW_HEX_PANE_H_

#include <windows.h>

#include <cstdint>
#include <functional>
#include <optional>

#include "host/rows/decoded_row.h"
#include "host/rows/hex_layout.h"

namespace host {

// The edit control that the module writes the hex dump into. On top of the text
// it marks one range of bytes, digits and characters alike, which a selection
// of the control could not do.
class HexPane {
 public:
  HexPane(HWND parent, int id);

  HWND Handle() const { return window_; }
  void SetFont(HFONT font);

  // Marks the bytes and scrolls the first of them into sight.
  void Highlight(const std::optional<ByteRange>& bytes);
  const std::optional<ByteRange>& Highlighted() const { return bytes_; }
  // The bytes of the dump from `offset` on, as hex digits with blanks between.
  std::wstring Digits(std::uint32_t offset, std::uint32_t length) const;
  std::uint32_t ByteCount() const;
  // Where byte `offset` stands: its digits, in client coordinates.
  RECT DigitsRect(std::uint32_t offset) const;
  RECT CharacterRect(std::uint32_t offset) const;

  // Told which byte was clicked.
  void OnByte(std::function<void(std::uint32_t)> handler) {
    on_byte_ = std::move(handler);
  }

 private:
  static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wide,
                                    LPARAM data, UINT_PTR id, DWORD_PTR object);
  LRESULT Handle(UINT message, WPARAM wide, LPARAM data);
  void Paint();
  void PaintRun(HDC device, std::uint32_t line, ColumnRun run);
  void Click(LPARAM point);
  void ScrollTo(std::uint32_t line);
  std::wstring LineText(std::uint32_t line) const;
  std::uint32_t FirstLine() const;
  std::uint32_t LinesInSight() const;
  POINT Origin(std::uint32_t line) const;  // of its first column
  RECT RunRect(std::uint32_t line, ColumnRun run) const;

  HWND window_ = nullptr;
  HFONT font_ = nullptr;
  SIZE cell_{8, 16};
  std::optional<ByteRange> bytes_;
  std::function<void(std::uint32_t)> on_byte_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_HEX_PANE_H_
