#include "host/capview/connection_chooser.h"

// After windows.h.
#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>
#include <numeric>

#include "host/capview/control.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

constexpr std::size_t kMostMeasured = 50;  // items
constexpr int kItemHeight = 20;            // at 96 dpi
constexpr int kGap = 14;                   // behind a column
constexpr int kMargin = 4;
constexpr COLORREF kFailedText = RGB(170, 0, 0);
constexpr int kLeastWidth = 60;  // of a column that has to give way
constexpr std::size_t kEndpoints = 1;
constexpr std::size_t kContents = 3;

void DrawColumn(HDC device, RECT place, const std::string& utf8) {
  const std::wstring text = WideFromUtf8(utf8);
  place.right -= kGap;
  DrawTextW(device, text.c_str(), static_cast<int>(text.size()), &place,
            DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
}

}  // namespace

ConnectionChooser::ConnectionChooser(HWND parent, int id,
                                     const CaptureDocument& document)
    : document_(document),
      window_(
          MakeControl(parent, {WC_COMBOBOXW, id,
                               WS_VISIBLE | WS_TABSTOP | WS_VSCROLL |
                                   CBS_DROPDOWNLIST | CBS_OWNERDRAWFIXED})) {}

void ConnectionChooser::SetFonts(const UiFonts& fonts) {
  const int height = Scaled(kItemHeight, fonts.dpi);
  SetWindowFont(window_, fonts.chrome.get(), TRUE);
  ComboBox_SetItemHeight(window_, -1, height);  // of the closed list
  ComboBox_SetItemHeight(window_, 0, height);
}

std::vector<std::size_t> ConnectionChooser::Order() const {
  std::vector<std::size_t> order(document_.ConnectionCount());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_partition(order.begin(), order.end(), [this](std::size_t i) {
    return document_.ConnectionAt(i).carries_dicom;
  });
  return order;
}

std::optional<std::size_t> ConnectionChooser::ChosenItem() const {
  if (!document_.chosen()) return {};
  const auto found =
      std::find(items_.begin(), items_.end(), *document_.chosen());
  if (found == items_.end()) return {};
  return static_cast<std::size_t>(found - items_.begin());
}

void ConnectionChooser::Update() {
  std::vector<std::size_t> order = Order();
  if (order.size() != items_.size()) {
    ComboBox_ResetContent(window_);
    // Some combo boxes take an item with no data at all for none.
    for (std::size_t i = 0; i < order.size(); ++i) {
      ComboBox_AddItemData(window_, i + 1);
    }
  }
  items_ = std::move(order);
  needed_ = Measure();
  const int all = std::accumulate(needed_.begin(), needed_.end(), 0);
  const int wanted = all + 2 * kMargin + GetSystemMetrics(SM_CXVSCROLL);
  SendMessageW(window_, CB_SETDROPPEDWIDTH, static_cast<WPARAM>(wanted), 0);
  const auto chosen = ChosenItem();
  ComboBox_SetCurSel(window_, chosen ? static_cast<int>(*chosen) : -1);
  InvalidateRect(window_, nullptr, FALSE);
}

void ConnectionChooser::Focus() {
  SetFocus(window_);
  ComboBox_ShowDropdown(window_, TRUE);
}

ConnectionColumns ConnectionChooser::Texts(std::size_t connection) const {
  return ConnectionTexts(connection, document_.ConnectionAt(connection),
                         document_.TitlesOf(connection));
}

ConnectionChooser::Widths ConnectionChooser::Measure() const {
  const WindowDevice device = DeviceOf(window_);
  const SelectedObject font = Select(device.get(), GetWindowFont(window_));
  Widths needed{};
  for (std::size_t i = 0; i < std::min(items_.size(), kMostMeasured); ++i) {
    const ConnectionColumns texts = Texts(items_[i]);
    for (std::size_t column = 0; column < texts.size(); ++column) {
      const std::wstring text = WideFromUtf8(texts[column]);
      needed[column] = std::max<int>(needed[column],
                                     SizeOfText(device.get(), text).cx + kGap);
    }
  }
  return needed;
}

// What the connection holds is cut first, then its endpoints.
ConnectionChooser::Widths ConnectionChooser::WidthsIn(int width) const {
  Widths widths = needed_;
  int missing = std::accumulate(widths.begin(), widths.end(), -width);
  for (const std::size_t column : {kContents, kEndpoints}) {
    const int given =
        std::clamp(missing, 0, std::max(widths[column] - kLeastWidth, 0));
    widths[column] -= given;
    missing -= given;
  }
  return widths;
}

void ConnectionChooser::Notify(int code) {
  if (code != CBN_SELCHANGE || !on_chosen_) return;
  const auto item = static_cast<std::size_t>(ComboBox_GetCurSel(window_));
  if (item < items_.size()) on_chosen_(items_[item]);
}

void ConnectionChooser::Draw(const DRAWITEMSTRUCT& item) const {
  const bool selected = (item.itemState & ODS_SELECTED) != 0;
  FillRect(item.hDC, &item.rcItem,
           GetSysColorBrush(selected ? COLOR_HIGHLIGHT : COLOR_WINDOW));
  if (item.itemID >= items_.size()) return;
  const bool failed = document_.FailedMessages(items_[item.itemID]).count > 0;
  SetBkMode(item.hDC, TRANSPARENT);
  SetTextColor(item.hDC, selected ? GetSysColor(COLOR_HIGHLIGHTTEXT)
                         : failed ? kFailedText
                                  : GetSysColor(COLOR_WINDOWTEXT));
  DrawColumns(item);
  if ((item.itemState & ODS_FOCUS) != 0) DrawFocusRect(item.hDC, &item.rcItem);
}

void ConnectionChooser::DrawColumns(const DRAWITEMSTRUCT& item) const {
  const ConnectionColumns texts = Texts(items_[item.itemID]);
  const Widths widths =
      WidthsIn(item.rcItem.right - item.rcItem.left - 2 * kMargin);
  RECT place = item.rcItem;
  place.left += kMargin;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    place.right = place.left + widths[i];
    DrawColumn(item.hDC, place, texts[i]);
    place.left = place.right;
  }
}

}  // namespace host
