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
  CaptureNames captures;
  std::optional<ListKind> list;
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
  // After Show().
  void Begin(const StartRequest& request);
  // Shows the capture as far as it is there; Work() reads it.
  void Open(const CaptureNames& names);

  // A short slice of the work that is left; false when there is none.
  bool Work();
  // Whether the message was a key of ours and is done with.
  bool TakesKey(MSG& message) const;

 private:
  static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wide,
                                    LPARAM data);
  // Every message of the window, ours from the end of the constructor on until
  // it is destroyed.
  LRESULT Answer(UINT message, WPARAM wide, LPARAM data);
  // What one part has to tell another.
  void Connect();
  // Does it, after the slice of work that may be at it; a failure is said.
  void Run(std::function<void()> action);
  // `code` is 0 for menus, 1 for keys, the control's own otherwise.
  void OnCommand(int id, int code);
  // The document has become another capture.
  void OnOpened();
  // A menu is about to be seen.
  void OpenMenu(HMENU menu);
  // The window has come to another screen, where the system wants it at
  // `place`.
  void ChangeDpi(const RECT& place);
  // Opens the files and folders, as one capture.
  void DropFiles(HDROP drop);
  // What every part has from the person by now.
  Settings Choices() const;
  // Keeps the choices and ends the program, whatever is being done.
  void Close();

  const std::wstring settings_path_;
  const Settings first_settings_;
  WindowHandle window_;
  HACCEL keys_;  // of the program's resources, which the system frees
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
