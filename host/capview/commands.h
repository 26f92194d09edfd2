#ifndef HOST_CAPVIEW_COMMANDS_H_
#define HOST_CAPVIEW_COMMANDS_H_

#include <windows.h>

#include "host/capview/capture_browser.h"
#include "host/capview/capture_document.h"
#include "host/capview/command_table.h"
#include "host/capview/pane_sizes.h"
#include "host/capview/panes.h"
#include "host/capview/recent_files.h"
#include "host/capview/row_model.h"
#include "host/capview/tree_find.h"

namespace host {

// What the commands work on: the window's parts, all of which must outlive the
// commands.
struct CommandTargets {
  HWND window;  // owns the dialogs
  CaptureDocument& document;
  RowModel& model;
  Panes& panes;
  PaneSizes& sizes;
  CaptureBrowser& browser;
  TreeFind& find;
  const RecentFiles& recent;
};

// Every command of the window. They throw Failure, to be said in the status
// line, and must not be run inside a slice of work: see WorkLoop::RunOutside.
// One more is a row of a table in commands.cpp, its number in resource.h, and
// in capview.rc its menu item and perhaps a key, which IDD_KEYS there and
// docs/capview.md list.
CommandTable MakeCommands(const CommandTargets& targets);

}  // namespace host

#endif  // HOST_CAPVIEW_COMMANDS_H_
