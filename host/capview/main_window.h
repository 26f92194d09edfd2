#ifndef HOST_CAPVIEW_MAIN_WINDOW_H_
#define HOST_CAPVIEW_MAIN_WINDOW_H_

#include <windows.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "host/capview/capture_browser.h"
#include "host/capview/capture_document.h"
#include "host/capview/command_table.h"
#include "host/capview/pane_sizes.h"
#include "host/capview/panes.h"
#include "host/capview/recent_files.h"
#include "host/capview/row_model.h"
#include "host/capview/settings.h"
#include "host/capview/tree_find.h"
#include "host/module/window_handle.h"

namespace host {

// What the window is to begin with; what is empty is as it was the last time.
struct StartRequest {
  std::wstring capture;
  std::optional<ListKind> kind;
  std::optional<std::uint32_t> row;  // counts from 0
  std::wstring find;                 // a text in the row's tree
};

// The window: has its parts made, hands them the messages that are theirs, and
// keeps what the person has chosen for the next time. What goes wrong becomes
// one sentence in the status line; nothing is thrown but by the constructor.
class MainWindow {
 public:
  // `settings_path` names the file that is read now and written at the end.
  // Throws Failure where there is no display.
  MainWindow(const std::wstring& module_path, std::wstring settings_path);
  ~MainWindow();
  MainWindow(const MainWindow&) = delete;
  MainWindow& operator=(const MainWindow&) = delete;

  // Null after the person has closed it.
  HWND Handle() const { return window_.get(); }
  // `how` is SW_...; as large as it was the last time when the system leaves
  // the choice.
  void Show(int how);
  void Begin(const StartRequest& request);
  void Open(const std::wstring& path);

  // A short slice of the work that is left; false when there is none.
  bool Work();
  // Whether the message was a key of ours and is done with.
  bool TakesKey(MSG& message) const;

 private:
  static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wide,
                                    LPARAM data);
  void Connect();
  LRESULT Answer(UINT message, WPARAM wide, LPARAM data);
  // Does it, after the slice of work that may be at it; a failure is said.
  void Run(std::function<void()> action);
  void OnCommand(int id, int code);
  void OnOpened();
  void OpenMenu(HMENU menu);
  void ChangeDpi(const RECT& place);
  void DropFile(HDROP drop);
  Settings Choices() const;
  void Close();

  const std::wstring settings_path_;
  const Settings first_settings_;
  WindowHandle window_;
  HACCEL keys_;  // the system's
  CaptureDocument document_;
  RowModel model_;
  Panes panes_;
  PaneSizes sizes_;
  CaptureBrowser browser_;
  TreeFind find_;
  RecentFiles recent_;
  CommandTable commands_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_MAIN_WINDOW_H_
