#include "host/capview/connection_chooser.h"

// After windows.h.
#include <commctrl.h>

#include <algorithm>
#include <numeric>

#include "host/text/wide_text.h"

namespace host {
namespace {

constexpr std::size_t kMostMeasured = 50;  // items
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
      window_(CreateWindowW(WC_COMBOBOXW, L"",
                            WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL |
                                CBS_DROPDOWNLIST | CBS_OWNERDRAWFIXED,
                            0, 0, 100, 300, parent,
                            reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                            GetModuleHandleW(nullptr), nullptr)) {}

void ConnectionChooser::SetFont(HFONT font, int item_height) {
  SendMessageW(window_, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
  SendMessageW(window_, CB_SETITEMHEIGHT, static_cast<WPARAM>(-1), item_height);
  SendMessageW(window_, CB_SETITEMHEIGHT, 0, item_height);
}

std::vector<std::size_t> ConnectionChooser::Order() const {
  std::vector<std::size_t> order(document_.ConnectionCount());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::stable_partition(order.begin(), order.end(), [this](std::size_t i) {
    return document_.ConnectionAt(i).carries_dicom;
  });
  return order;
}

void ConnectionChooser::Update() {
  std::vector<std::size_t> order = Order();
  if (order.size() != items_.size()) {
    SendMessageW(window_, CB_RESETCONTENT, 0, 0);
    for (std::size_t i = 0; i < order.size(); ++i) {
      SendMessageW(window_, CB_ADDSTRING, 0, static_cast<LPARAM>(i) + 1);
    }
  }
  items_ = std::move(order);
  Measure();
  const auto chosen =
      std::find(items_.begin(), items_.end(),
                document_.chosen().value_or(static_cast<std::size_t>(-1)));
  const bool found = chosen != items_.end();
  SendMessageW(window_, CB_SETCURSEL,
               found ? static_cast<WPARAM>(chosen - items_.begin())
                     : static_cast<WPARAM>(-1),
               0);
  InvalidateRect(window_, nullptr, FALSE);
}

ConnectionColumns ConnectionChooser::Texts(std::size_t connection) const {
  return ConnectionTexts(connection, document_.ConnectionAt(connection),
                         document_.TitlesOf(connection));
}

// How wide each column's longest text is.
void ConnectionChooser::Measure() {
  const HDC device = GetDC(window_);
  const HGDIOBJ before = SelectObject(
      device,
      reinterpret_cast<HGDIOBJ>(SendMessageW(window_, WM_GETFONT, 0, 0)));
  needed_ = {};
  for (std::size_t i = 0; i < std::min(items_.size(), kMostMeasured); ++i) {
    const ConnectionColumns texts = Texts(items_[i]);
    for (std::size_t column = 0; column < texts.size(); ++column) {
      const std::wstring text = WideFromUtf8(texts[column]);
      SIZE size{};
      GetTextExtentPoint32W(device, text.c_str(), static_cast<int>(text.size()),
                            &size);
      needed_[column] = std::max<int>(needed_[column], size.cx + kGap);
    }
  }
  SelectObject(device, before);
  ReleaseDC(window_, device);
  const int all = std::accumulate(needed_.begin(), needed_.end(), 0);
  SendMessageW(
      window_, CB_SETDROPPEDWIDTH,
      static_cast<WPARAM>(all + 2 * kMargin + GetSystemMetrics(SM_CXVSCROLL)),
      0);
}

// Where there is too little room, what the connection holds is cut first.
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

std::string ConnectionChooser::Text(std::size_t connection) const {
  std::string text;
  for (const std::string& column : Texts(connection)) {
    if (!text.empty() && !column.empty()) text += "  ";
    text += column;
  }
  return text;
}

void ConnectionChooser::Notify(int code) {
  if (code != CBN_SELCHANGE || !on_chosen_) return;
  const auto item =
      static_cast<std::size_t>(SendMessageW(window_, CB_GETCURSEL, 0, 0));
  if (item < items_.size()) on_chosen_(items_[item]);
}

void ConnectionChooser::Draw(const DRAWITEMSTRUCT& item) const {
  const bool selected = (item.itemState & ODS_SELECTED) != 0;
  FillRect(item.hDC, &item.rcItem,
           GetSysColorBrush(selected ? COLOR_HIGHLIGHT : COLOR_WINDOW));
  SetBkMode(item.hDC, TRANSPARENT);
  if (item.itemID >= items_.size()) return;
  const bool failed = document_.FailedMessages(items_[item.itemID]).count > 0;
  SetTextColor(item.hDC, selected ? GetSysColor(COLOR_HIGHLIGHTTEXT)
                         : failed ? kFailedText
                                  : GetSysColor(COLOR_WINDOWTEXT));
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
  if ((item.itemState & ODS_FOCUS) != 0) DrawFocusRect(item.hDC, &item.rcItem);
}

}  // namespace host
