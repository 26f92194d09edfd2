#include "host/capview/main_window.h"

#include <windowsx.h>
// After windows.h.
#include <commctrl.h>
#include <shellapi.h>

#include <algorithm>
#include <exception>
#include <utility>

#include "host/capview/resource.h"
#include "host/text/failure.h"

namespace host {
namespace {

constexpr wchar_t kClassName[] = L"DicomCaptureView";
constexpr UINT_PTR kFollowTimer = 2;
constexpr SIZE kLeastSize{520, 320};
constexpr SIZE kUsualSize{1180, 760};  // at 96 dpi
#ifndef WM_DPICHANGED
#define WM_DPICHANGED 0x02E0
#endif

void RegisterClassOnce(WNDPROC procedure) {
  WNDCLASSEXW window_class{};
  window_class.cbSize = sizeof window_class;
  window_class.lpfnWndProc = procedure;
  window_class.hInstance = GetModuleHandleW(nullptr);
  window_class.hIcon =
      LoadIconW(window_class.hInstance, MAKEINTRESOURCEW(IDI_CAPVIEW));
  window_class.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  window_class.hbrBackground =
      reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_BTNFACE + 1));
  window_class.lpszMenuName = MAKEINTRESOURCEW(IDR_MENU);
  window_class.lpszClassName = kClassName;
  RegisterClassExW(&window_class);
}

HWND MakeButton(HWND parent, const wchar_t* text, int id, DWORD style) {
  return CreateWindowW(WC_BUTTONW, text, WS_CHILD | WS_VISIBLE | style, 0, 0, 0,
                       0, parent,
                       reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                       GetModuleHandleW(nullptr), nullptr);
}

// The usual size where the screen has room for it.
SIZE FirstSize() {
  RECT area{};
  SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
  const auto scaled = [](LONG pixels) {
    return MulDiv(pixels, static_cast<int>(DpiOf(nullptr)), 96);
  };
  return {std::min<LONG>(scaled(kUsualSize.cx), area.right - area.left),
          std::min<LONG>(scaled(kUsualSize.cy), area.bottom - area.top)};
}

void Move(HWND window, const RECT& place) {
  MoveWindow(window, place.left, place.top, place.right - place.left,
             place.bottom - place.top, TRUE);
}

}  // namespace

MainWindow::MainWindow(const std::wstring& module_path,
                       std::wstring settings_path)
    : settings_(ReadSettings(settings_path)),
      settings_path_(std::move(settings_path)),
      document_(module_path),
      model_(document_) {
  RegisterClassOnce(OnMessage);
  keys_ = LoadAcceleratorsW(GetModuleHandleW(nullptr),
                            MAKEINTRESOURCEW(IDR_ACCELERATORS));
  const RECT& place = settings_.place;
  const bool placed = !IsRectEmpty(&place);
  const SIZE kept{place.right - place.left, place.bottom - place.top};
  const SIZE size = placed ? kept : FirstSize();
  CreateWindowExW(WS_EX_ACCEPTFILES | WS_EX_CONTROLPARENT, kClassName,
                  L"capview", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
                  placed ? place.left : CW_USEDEFAULT,
                  placed ? place.top : CW_USEDEFAULT, size.cx, size.cy, nullptr,
                  nullptr, GetModuleHandleW(nullptr), this);
  if (window_ == nullptr) throw Failure("no window can be made");
  model_.SetView(settings_.message_view ? View::kMessages : View::kPdus);
  ShowNothing();
}

MainWindow::~MainWindow() {
  if (window_ != nullptr) DestroyWindow(window_);
}

void MainWindow::Show(int how) {
  const bool normal = how == SW_SHOWNORMAL || how == SW_SHOWDEFAULT;
  ShowWindow(window_, settings_.maximized && normal ? SW_SHOWMAXIMIZED : how);
  UpdateWindow(window_);
  SetFocus(rows_->Handle());
  try {
    document_.LoadModule();  // now, so that the first capture opens at once
  } catch (const std::exception& failure) {
    Say(failure.what());
  }
}

bool MainWindow::TakesKey(MSG& message) const {
  if (GetActiveWindow() != window_) return false;
  return TranslateAcceleratorW(window_, keys_, &message) != 0 ||
         IsDialogMessageW(window_, &message) != 0;
}

LRESULT CALLBACK MainWindow::OnMessage(HWND window, UINT message, WPARAM wide,
                                       LPARAM data) {
  if (message == WM_NCCREATE) {
    auto* self = static_cast<MainWindow*>(
        reinterpret_cast<CREATESTRUCTW*>(data)->lpCreateParams);
    self->window_ = window;
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
  }
  auto* self =
      reinterpret_cast<MainWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (self == nullptr) return DefWindowProcW(window, message, wide, data);
  return self->Handle(message, wide, data);
}

LRESULT MainWindow::Handle(UINT message, WPARAM wide, LPARAM data) {
  bool done = true;
  const LRESULT answer = HandleMouse(message, data, &done);
  if (done) return answer;
  switch (message) {
    case WM_CREATE:
      CreateParts();
      return 0;
    case WM_SIZE:
      Place();
      return 0;
    case WM_GETMINMAXINFO:
      reinterpret_cast<MINMAXINFO*>(data)->ptMinTrackSize = {kLeastSize.cx,
                                                             kLeastSize.cy};
      return 0;
    case WM_DPICHANGED:
      ChangeDpi(*reinterpret_cast<const RECT*>(data));
      return 0;
    case WM_SETFOCUS:
      SetFocus(rows_->Handle());
      return 0;
    case WM_NOTIFY:
      return Notify(reinterpret_cast<NMHDR*>(data));
    case WM_COMMAND:
      Do(LOWORD(wide), HIWORD(wide));
      return 0;
    case WM_INITMENUPOPUP:
      OpenMenu(reinterpret_cast<HMENU>(wide));
      return 0;
    case WM_DRAWITEM:
      connections_->Draw(*reinterpret_cast<const DRAWITEMSTRUCT*>(data));
      return TRUE;
    case WM_CTLCOLORSTATIC:
      // A control that only shows text is grey unless it is told otherwise.
      if (reinterpret_cast<HWND>(data) != hex_->Handle()) break;
      return reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_WINDOW));
    case WM_DROPFILES:
      DropFile(reinterpret_cast<HDROP>(wide));
      return 0;
    case WM_TIMER:
      if (wide == kFollowTimer) LookAgain();
      Work();
      return 0;
    case WM_CLOSE:
      Close();
      return 0;
    case WM_NCDESTROY:
      SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
      return DefWindowProcW(std::exchange(window_, nullptr), message, wide,
                            data);
    default:
      break;
  }
  return DefWindowProcW(window_, message, wide, data);
}

// The bars between the panes.
LRESULT MainWindow::HandleMouse(UINT message, LPARAM data, bool* done) {
  POINT point{GET_X_LPARAM(data), GET_Y_LPARAM(data)};
  switch (message) {
    case WM_SETCURSOR: {
      GetCursorPos(&point);
      ScreenToClient(window_, &point);
      const auto splitter = Layout().SplitterAt(point);
      if (!splitter || LOWORD(data) != HTCLIENT) break;
      SetCursor(LoadCursorW(nullptr, *splitter == Splitter::kBelowList
                                         ? IDC_SIZENS
                                         : IDC_SIZEWE));
      return TRUE;
    }
    case WM_LBUTTONDOWN:
      dragged_ = Layout().SplitterAt(point);
      if (dragged_) SetCapture(window_);
      return 0;
    case WM_MOUSEMOVE:
      if (dragged_) Drag(point);
      return 0;
    case WM_LBUTTONUP:
    case WM_CAPTURECHANGED:
      dragged_.reset();
      if (message == WM_LBUTTONUP) ReleaseCapture();
      return 0;
    default:
      break;
  }
  *done = false;
  return 0;
}

void MainWindow::Drag(POINT point) {
  ShareOf(*dragged_) = Layout().ShareAt(*dragged_, point);
  Place();
}

int& MainWindow::ShareOf(Splitter splitter) {
  return splitter == Splitter::kBelowList ? settings_.list_share
                                          : settings_.tree_share;
}

void MainWindow::MoveSplitter(Splitter splitter, int by) {
  ShareOf(splitter) = PaneLayout::NearestShare(ShareOf(splitter) + by);
  Place();
}

void MainWindow::CreateParts() {
  connections_ =
      std::make_unique<ConnectionChooser>(window_, IDC_CONNECTIONS, document_);
  MakeButton(window_, L"PDUs", IDC_PDUS,
             WS_TABSTOP | WS_GROUP | BS_RADIOBUTTON | BS_PUSHLIKE);
  MakeButton(window_, L"Messages", IDC_MESSAGES,
             WS_TABSTOP | BS_RADIOBUTTON | BS_PUSHLIKE);
  CreateWindowW(WC_STATICW, L"Fi&lter:",
                WS_CHILD | WS_VISIBLE | SS_CENTERIMAGE | SS_RIGHT, 0, 0, 0, 0,
                window_, reinterpret_cast<HMENU>(IDC_FILTER_LABEL), nullptr,
                nullptr);
  filter_ = CreateWindowExW(
      WS_EX_CLIENTEDGE, WC_EDITW, L"",
      WS_CHILD | WS_VISIBLE | WS_TABSTOP | ES_AUTOHSCROLL, 0, 0, 0, 0, window_,
      reinterpret_cast<HMENU>(IDC_FILTER), nullptr, nullptr);
  SendMessageW(filter_, EM_SETCUEBANNER, TRUE,
               reinterpret_cast<LPARAM>(L"text, dir:> or dir:<"));
  rows_ = std::make_unique<RowList>(window_, IDC_ROWS, model_);
  tree_ = std::make_unique<DecodeTreePane>(window_, IDC_TREE);
  hex_ = std::make_unique<HexPane>(window_, IDC_HEX);
  status_ = std::make_unique<StatusLine>(window_);
  connections_->OnChosen(
      [this](std::size_t index) { ChooseConnection(index); });
  rows_->OnSelected([this](std::uint32_t position) { ShowRow(position); });
  hex_->OnByte([this](std::uint32_t byte) { tree_->SelectByte(byte); });
  MakeFonts();
  rows_->SetColumns(settings_.columns, TextScale());
}

void MainWindow::MakeFonts() {
  const unsigned dpi = DpiOf(window_);
  auto fonts = std::make_unique<UiFonts>(settings_.font_points, dpi);
  for (const int id : {IDC_PDUS, IDC_MESSAGES, IDC_FILTER_LABEL, IDC_FILTER}) {
    SendDlgItemMessageW(window_, id, WM_SETFONT,
                        reinterpret_cast<WPARAM>(fonts->chrome.get()), TRUE);
  }
  connections_->SetFont(fonts->chrome.get(),
                        MulDiv(20, static_cast<int>(dpi), 96));
  status_->SetFont(fonts->chrome.get());
  rows_->SetFonts(fonts->pane.get(), fonts->pane_bold.get());
  tree_->SetFont(fonts->pane.get());
  hex_->SetFont(fonts->fixed.get());
  fonts_ = std::move(fonts);
}

// 96 where a pixel is 1/96 inch and the panes have their usual font.
unsigned MainWindow::TextScale() const {
  return DpiOf(window_) * static_cast<unsigned>(settings_.font_points) /
         static_cast<unsigned>(Settings().font_points);
}

PaneLayout MainWindow::Layout() const {
  RECT area;
  GetClientRect(window_, &area);
  return PaneLayout({area.right, area.bottom}, status_->Height(),
                    DpiOf(window_), settings_.list_share, settings_.tree_share);
}

void MainWindow::Place() {
  if (!status_ || IsIconic(window_)) return;
  status_->Place(DpiOf(window_));
  const PaneLayout layout = Layout();
  Move(connections_->Handle(), layout.connections);
  Move(GetDlgItem(window_, IDC_PDUS), layout.pdus);
  Move(GetDlgItem(window_, IDC_MESSAGES), layout.messages);
  Move(GetDlgItem(window_, IDC_FILTER_LABEL), layout.filter_label);
  Move(filter_, layout.filter);
  Move(rows_->Handle(), layout.list);
  rows_->FillWidth();
  Move(tree_->Handle(), layout.tree);
  Move(hex_->Handle(), layout.hex);
}

void MainWindow::ChangeDpi(const RECT& place) {
  MakeFonts();
  rows_->SetColumns(rows_->GetColumns(), TextScale());
  SetWindowPos(window_, nullptr, place.left, place.top,
               place.right - place.left, place.bottom - place.top,
               SWP_NOZORDER | SWP_NOACTIVATE);
}

void MainWindow::DropFile(HDROP drop) {
  std::wstring name(DragQueryFileW(drop, 0, nullptr, 0) + 1, L'\0');
  name.resize(
      DragQueryFileW(drop, 0, name.data(), static_cast<UINT>(name.size())));
  DragFinish(drop);
  Open(name);
}

LRESULT MainWindow::Notify(NMHDR* header) {
  if (!rows_ || !tree_) return 0;
  if (header->hwndFrom == rows_->Handle()) return rows_->Notify(header);
  if (header->hwndFrom != tree_->Handle()) return 0;
  if (header->code == TVN_SELCHANGEDW) ShowBytes();
  return tree_->Notify(header);
}

void MainWindow::KeepPlace() {
  WINDOWPLACEMENT placement{};
  placement.length = sizeof placement;
  if (!GetWindowPlacement(window_, &placement)) return;
  settings_.place = placement.rcNormalPosition;
  settings_.maximized = placement.showCmd == SW_SHOWMAXIMIZED;
  settings_.columns = rows_->GetColumns();
  settings_.message_view = model_.view() == View::kMessages;
}

// Whatever is being read is dropped.
void MainWindow::Close() {
  KeepPlace();
  WriteSettings(settings_, settings_path_);
  job_.reset();
  DestroyWindow(window_);
  PostQuitMessage(0);
}

void MainWindow::Begin(const ViewRequest& request) {
  if (request.view) ShowView(*request.view);
  find_text_ = request.find;
  find_when_shown_ = !request.find.empty();
  wanted_row_ = request.row;
  if (!request.capture.empty()) OpenCapture(request.capture, false);
}

}  // namespace host
