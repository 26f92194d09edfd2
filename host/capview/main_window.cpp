#include "host/capview/main_window.h"

// After windows.h.
#include <shellapi.h>
#include <windowsx.h>

#include <exception>
#include <utility>

#include "host/capview/capture_summary.h"
#include "host/capview/commands.h"
#include "host/capview/resource.h"
#include "host/capview/top_window.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

constexpr POINT kLeastSize{520, 320};  // at 96 dpi
#ifndef WM_DPICHANGED
#define WM_DPICHANGED 0x02E0
#endif

}  // namespace

// The window's messages are ours when all the parts are there.
MainWindow::MainWindow(const std::wstring& module_path,
                       std::wstring settings_path)
    : settings_path_(std::move(settings_path)),
      first_settings_(ReadSettings(settings_path_)),
      window_(MakeTopWindow(OnMessage, first_settings_.place)),
      keys_(LoadAcceleratorsW(GetModuleHandleW(nullptr),
                              MAKEINTRESOURCEW(IDR_ACCELERATORS))),
      document_(module_path),
      model_(document_),
      panes_(window_.get(), document_, model_),
      sizes_(window_.get(), panes_, first_settings_.sizes),
      browser_(window_.get(), document_, model_, panes_,
               first_settings_.clean_streams),
      find_(window_.get(), panes_.tabs, panes_.status),
      recent_(first_settings_.recent_files),
      commands_(MakeCommands({window_.get(), document_, model_, panes_, sizes_,
                              browser_, find_, recent_})) {
  panes_.rows.Columns().Choose(first_settings_.columns);
  panes_.times.SetWanted(first_settings_.time_bar);
  panes_.decode.Choose(first_settings_.switches);
  model_.SetList(first_settings_.list);
  Connect();
  browser_.ShowNothing();
  panes_.status.Refresh();
  SetWindowLongPtrW(window_.get(), GWLP_USERDATA,
                    reinterpret_cast<LONG_PTR>(this));
  sizes_.Place();
}

void MainWindow::Connect() {
  panes_.bar.Connections().OnChosen([this](std::size_t connection) {
    Run([=, this] { browser_.ChooseConnection(connection); });
  });
  panes_.status.OnSilence([this] {
    if (!document_.IsOpen()) return EmptyListText(document_, model_, false);
    if (browser_.Loop().IsBusy()) return std::string("Reading; Esc stops.");
    return CaptureSummary(document_, model_.list());
  });
  panes_.findings.OnChosen([this](std::size_t finding) {
    Run([=, this] { browser_.GoToFinding(finding); });
  });
  panes_.times.OnChosen([this](Nanoseconds time) {
    Run([=, this] { browser_.GoToMoment(time); });
  });
  panes_.tabs.OnClicked(
      [this](DetailTab tab) { Run([=, this] { panes_.tabs.Choose(tab); }); });
  browser_.OnHeights([this] { sizes_.Place(); });
  browser_.OnOpened([this] { OnOpened(); });
  browser_.Rows().OnShown([this] { find_.Shown(); });
}

// While the parts that its messages reach are still there.
MainWindow::~MainWindow() { window_.reset(); }

void MainWindow::Show(int how) {
  const bool normal = how == SW_SHOWNORMAL || how == SW_SHOWDEFAULT;
  ShowWindow(Handle(),
             first_settings_.maximized && normal ? SW_SHOWMAXIMIZED : how);
  UpdateWindow(Handle());
  SetFocus(panes_.rows.Handle());
  // Now, so that the first capture opens at once.
  Run([this] { document_.LoadModule(); });
}

void MainWindow::Begin(const StartRequest& request) {
  if (request.list) browser_.Rows().ShowList(*request.list);
  find_.WhenShown(request.find);
  if (request.captures.empty()) return;
  Run([this, request] { browser_.Open(request.captures, request.row); });
}

void MainWindow::Open(const CaptureNames& names) {
  Run([this, names] { browser_.Open(names); });
}

bool MainWindow::Work() { return window_ && browser_.Work(); }

bool MainWindow::TakesKey(MSG& message) const {
  if (GetActiveWindow() != Handle()) return false;
  return TranslateAcceleratorW(Handle(), keys_, &message) != 0 ||
         IsDialogMessageW(Handle(), &message) != 0;
}

void MainWindow::Run(std::function<void()> action) {
  browser_.Loop().RunOutside([this, action = std::move(action)] {
    if (!window_) return;
    try {
      action();
    } catch (const std::exception& failure) {
      panes_.status.Say(failure.what());
    }
  });
}

LRESULT CALLBACK MainWindow::OnMessage(HWND window, UINT message, WPARAM wide,
                                       LPARAM data) {
  auto* self =
      reinterpret_cast<MainWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (self != nullptr && message == WM_NCDESTROY) self->window_.release();
  if (self == nullptr || !self->window_) {
    return DefWindowProcW(window, message, wide, data);
  }
  const auto answer = self->sizes_.AnswerMouse(message, data);
  return answer ? *answer : self->Answer(message, wide, data);
}

LRESULT MainWindow::Answer(UINT message, WPARAM wide, LPARAM data) {
  switch (message) {
    case WM_SIZE:
      sizes_.Place();
      return 0;
    case WM_GETMINMAXINFO:
      reinterpret_cast<MINMAXINFO*>(data)->ptMinTrackSize = {
          Scaled(kLeastSize.x, DpiOf(Handle())),
          Scaled(kLeastSize.y, DpiOf(Handle()))};
      return 0;
    case WM_DPICHANGED:
      ChangeDpi(*reinterpret_cast<const RECT*>(data));
      return 0;
    case WM_SETFOCUS:
      SetFocus(panes_.rows.Handle());
      return 0;
    case WM_NOTIFY:
      return panes_.Notify(reinterpret_cast<NMHDR*>(data));
    case WM_COMMAND:
      OnCommand(LOWORD(wide), HIWORD(wide));
      return 0;
    case WM_INITMENUPOPUP:
      OpenMenu(reinterpret_cast<HMENU>(wide));
      return 0;
    case WM_DRAWITEM:
      panes_.bar.Connections().Draw(
          *reinterpret_cast<const DRAWITEMSTRUCT*>(data));
      return TRUE;
    case WM_CTLCOLORSTATIC:
      // A control that only shows text is grey unless it is told otherwise.
      if (!panes_.IsReadOnlyText(reinterpret_cast<HWND>(data))) break;
      return reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_WINDOW));
    case WM_DROPFILES:
      DropFiles(reinterpret_cast<HDROP>(wide));
      return 0;
    case WM_TIMER:
      if (wide == CaptureBrowser::kFollowTimer) browser_.LookAgain();
      Work();
      return 0;
    case WM_CLOSE:
      Close();
      return 0;
    default:
      break;
  }
  return DefWindowProcW(Handle(), message, wide, data);
}

void MainWindow::OnCommand(int id, int code) {
  if (id == IDC_CONNECTIONS) {
    panes_.bar.Connections().Notify(code);
  } else if (id == IDC_FILTER) {
    if (code != EN_CHANGE) return;
    Run([this] { browser_.Rows().Filter(panes_.bar.FilterText()); });
  } else if (id == IDC_FINDINGS) {
    panes_.findings.Notify(code);
  } else if (id == IDOK && GetFocus() == panes_.findings.Handle()) {
    panes_.findings.Choose();
  } else if (id == IDOK && GetFocus() == panes_.times.Handle()) {
    panes_.times.Choose();
  } else {
    Run([this, id] { commands_.Run(id); });
  }
}

void MainWindow::OnOpened() {
  recent_.Add(document_.names());
  SetWindowTextW(Handle(),
                 WideFromUtf8(document_.Title() + " - capview").c_str());
}

void MainWindow::OpenMenu(HMENU menu) {
  if (RecentFiles::IsOurs(menu)) recent_.Fill(menu);
  commands_.ShowStates(GetMenu(Handle()));
}

void MainWindow::ChangeDpi(const RECT& place) {
  sizes_.ChangeDpi();
  SetWindowPos(Handle(), nullptr, place.left, place.top,
               place.right - place.left, place.bottom - place.top,
               SWP_NOZORDER | SWP_NOACTIVATE);
}

void MainWindow::DropFiles(HDROP drop) {
  CaptureNames names;
  const UINT count = DragQueryFileW(drop, 0xFFFFFFFF, nullptr, 0);
  for (UINT i = 0; i < count; ++i) {
    std::wstring name(DragQueryFileW(drop, i, nullptr, 0) + 1, L'\0');
    name.resize(
        DragQueryFileW(drop, i, name.data(), static_cast<UINT>(name.size())));
    names.emplace_back(name);
  }
  DragFinish(drop);
  Open(names);
}

Settings MainWindow::Choices() const {
  Settings settings = first_settings_;
  WINDOWPLACEMENT placement{};
  placement.length = sizeof placement;
  if (GetWindowPlacement(Handle(), &placement)) {
    settings.place = placement.rcNormalPosition;
    settings.maximized = placement.showCmd == SW_SHOWMAXIMIZED;
  }
  settings.sizes = sizes_.Chosen();
  settings.columns = panes_.rows.Columns().Chosen();
  settings.switches = panes_.decode.Chosen();
  settings.clean_streams = browser_.UsesCleanStreams();
  settings.time_bar = panes_.times.IsWanted();
  settings.list = model_.list();
  settings.recent_files = recent_.Paths();
  return settings;
}

// A job goes with us, since a slice may be at work with it.
void MainWindow::Close() {
  WriteSettings(Choices(), settings_path_);
  window_.reset();
  PostQuitMessage(0);
}

}  // namespace host
