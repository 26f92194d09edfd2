#include "host/capview/ui_fonts.h"

#include <cwchar>

namespace host {
namespace {

constexpr int kPointsPerInch = 72;

LOGFONTW SystemFont() {
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, metrics.cbSize, &metrics, 0);
  return metrics.lfMessageFont;
}

Font Make(LOGFONTW form, int points, unsigned dpi, LONG weight) {
  form.lfHeight = -MulDiv(points, static_cast<int>(dpi), kPointsPerInch);
  form.lfWeight = weight;
  return Font(CreateFontIndirectW(&form));
}

LOGFONTW FixedFont() {
  LOGFONTW form{};
  form.lfCharSet = DEFAULT_CHARSET;
  form.lfPitchAndFamily = FIXED_PITCH | FF_MODERN;
  std::wcscpy(form.lfFaceName, L"Consolas");  // else the nearest fixed one
  return form;
}

}  // namespace

unsigned DpiOf(HWND window) {
  // Not in all versions of Windows that this runs on.
  using GetDpi = UINT(WINAPI*)(HWND);
  const auto get_dpi = reinterpret_cast<GetDpi>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetDpiForWindow")));
  const UINT dpi = get_dpi != nullptr ? get_dpi(window) : 0;
  if (dpi != 0) return dpi;
  const WindowDevice screen = DeviceOf(nullptr);
  return static_cast<unsigned>(GetDeviceCaps(screen.get(), LOGPIXELSX));
}

int Scaled(int pixels, unsigned dpi) {
  return MulDiv(pixels, static_cast<int>(dpi), 96);
}

SIZE SizeOfText(HDC device, const std::wstring& text) {
  SIZE size{};
  GetTextExtentPoint32W(device, text.c_str(), static_cast<int>(text.size()),
                        &size);
  return size;
}

Font MakeFixedFont(int points, unsigned dpi) {
  return Make(FixedFont(), points, dpi, FW_NORMAL);
}

UiFonts::UiFonts(int points, unsigned dpi)
    : chrome(Make(SystemFont(), kUsualPoints, dpi, FW_NORMAL)),
      pane(Make(SystemFont(), points, dpi, FW_NORMAL)),
      pane_bold(Make(SystemFont(), points, dpi, FW_BOLD)),
      fixed(MakeFixedFont(points, dpi)),
      dpi(dpi),
      text_scale(dpi * static_cast<unsigned>(points) / kUsualPoints) {}

}  // namespace host
