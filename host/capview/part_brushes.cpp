#include "host/capview/part_brushes.h"

#include <windowsx.h>

#include "host/capview/ui_fonts.h"
#include "host/text/failure.h"
#include "host/timing/part_look.h"

namespace host {
namespace {

constexpr int kRoomAtLetter = 3;  // on either side, in pixels

COLORREF ColorOf(std::uint32_t color) {
  return RGB(color >> 16, color >> 8 & 0xFF, color & 0xFF);
}

// One tile, on a bitmap that the device has selected.
void DrawTile(HDC device, const PartLook& look, unsigned dpi) {
  const int size = Scaled(look.tile, dpi);
  const RECT all{0, 0, size, size};
  const Brush ground(CreateSolidBrush(ColorOf(look.ground)));
  FillRect(device, &all, ground.get());
  const Pen pen(
      CreatePen(PS_SOLID, Scaled(look.width, dpi), ColorOf(look.ink)));
  const SelectedObject selected = Select(device, pen.get());
  for (const PartLook::Stroke& stroke : look.strokes) {
    MoveToEx(device, Scaled(stroke.x1, dpi), Scaled(stroke.y1, dpi), nullptr);
    LineTo(device, Scaled(stroke.x2, dpi), Scaled(stroke.y2, dpi));
  }
}

Brush MakeBrush(const PartLook& look, unsigned dpi) {
  const WindowDevice screen = DeviceOf(nullptr);
  const MemoryDevice device(CreateCompatibleDC(screen.get()));
  const int size = Scaled(look.tile, dpi);
  const Bitmap tile(CreateCompatibleBitmap(screen.get(), size, size));
  {
    const SelectedObject selected = Select(device.get(), tile.get());
    DrawTile(device.get(), look, dpi);
  }
  Brush brush(CreatePatternBrush(tile.get()));
  if (!brush) {
    throw Failure(
        "A part of the window cannot be made: close other programs and try "
        "again.");
  }
  return brush;
}

}  // namespace

PartBrushes::PartBrushes(unsigned dpi) {
  for (std::size_t i = 0; i < kTimeParts; ++i) {
    brushes_[i] = MakeBrush(LookOf(static_cast<TimePart>(i)), dpi);
  }
}

// On white, so that it can be read above any strokes.
void PartBrushes::Draw(HDC device, const RECT& box, TimePart part) const {
  FillRect(device, &box, brushes_[static_cast<std::size_t>(part)].get());
  const std::wstring letter(1, static_cast<wchar_t>(PartLetter(part)));
  const SIZE size = SizeOfText(device, letter);
  const LONG left = (box.left + box.right - size.cx) / 2;
  const LONG top = (box.top + box.bottom - size.cy) / 2;
  if (left < box.left + kRoomAtLetter) return;
  const RECT white{left - kRoomAtLetter + 1, top,
                   left + size.cx + kRoomAtLetter - 1, top + size.cy};
  FillRect(device, &white, GetStockBrush(WHITE_BRUSH));
  SetBkMode(device, TRANSPARENT);
  SetTextColor(device, RGB(0, 0, 0));
  ExtTextOutW(device, left, top, ETO_CLIPPED, &box, letter.c_str(), 1, nullptr);
}

}  // namespace host
