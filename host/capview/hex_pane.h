#ifndef HOST_CAPVIEW_HEX_PANE_H_
#define HOST_CAPVIEW_HEX_PANE_H_

#include <windows.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "host/capview/ui_fonts.h"
#include "host/rows/decoded_row.h"
#include "host/rows/hex_layout.h"

namespace host {

// The edit control that the module writes the hex dump into, 16 bytes a line.
// On top of the text it marks one range of bytes, digits and characters alike,
// which a selection of the control could not do. Bytes count from 0.
class HexPane {
 public:
  // Throws Failure.
  HexPane(HWND parent, int id);
  // The control must still be there, or be gone by now.
  ~HexPane();
  HexPane(const HexPane&) = delete;
  HexPane& operator=(const HexPane&) = delete;

  // The edit control; the parent's.
  HWND Handle() const { return window_; }
  // A fixed font is what makes the bytes' places known.
  void SetFonts(const UiFonts& fonts);

  // In place of what the module writes: these bytes, of which the first stands
  // at `address`, a multiple of 16. The pane counts them from 0.
  void ShowBytes(std::span<const std::uint8_t> bytes, std::uint64_t address);

  // Marks the bytes and scrolls the first of them into sight; empty marks
  // none.
  void Highlight(const std::optional<ByteRange>& bytes);
  // The bytes of the range, as far as the dump has them: "38 2E 31".
  std::wstring Digits(const ByteRange& bytes) const;

  // Told which byte was clicked.
  void OnByte(std::function<void(std::uint32_t)> handler) {
    on_byte_ = std::move(handler);
  }

 private:
  static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wide,
                                    LPARAM data, UINT_PTR id, DWORD_PTR object);
  LRESULT Answer(UINT message, WPARAM wide, LPARAM data);
  // Draws the marked bytes once more, over what the control has drawn.
  void Paint();
  void PaintRun(HDC device, std::uint32_t line, ColumnRun run);
  // At a point of the client area; beside the bytes nothing happens.
  void Click(POINT point);
  // Unless the line is in sight already.
  void ScrollTo(std::uint32_t line);

  // As HighlightInLine() and ByteAt(), in the columns of this dump.
  std::optional<DumpHighlight> RunsIn(std::uint32_t line,
                                      const ByteRange& bytes) const;
  std::optional<std::uint32_t> ByteIn(std::uint32_t line,
                                      std::uint32_t column) const;
  // Lines of the dump count from 0.
  std::wstring LineText(std::uint32_t line) const;
  // How many bytes the dump shows.
  std::uint32_t ByteCount() const;
  std::uint32_t FirstLine() const;     // in sight
  std::uint32_t LinesInSight() const;  // whole ones
  // Where the line's first column begins; reliable for lines near those in
  // sight.
  POINT Origin(std::uint32_t line) const;
  RECT RunRect(std::uint32_t line, ColumnRun run) const;

  HWND window_;
  HFONT font_ = nullptr;             // the window's
  SIZE cell_{8, 16};                 // of one character, in pixels
  std::uint32_t extra_columns_ = 0;  // that addresses take
  std::optional<ByteRange> bytes_;
  std::function<void(std::uint32_t)> on_byte_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_HEX_PANE_H_
