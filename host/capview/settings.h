#ifndef HOST_CAPVIEW_SETTINGS_H_
#define HOST_CAPVIEW_SETTINGS_H_

#include <windows.h>

#include <string>
#include <vector>

#include "host/capview/capture_document.h"
#include "host/capview/list_columns.h"
#include "host/capview/pane_sizes.h"

namespace host {

// What the window remembers from one time to the next, in an .ini file.
struct Settings {
  RECT place{};  // of the window, restored; empty: where the system likes
  bool maximized = false;
  PaneSizes::Choice sizes;
  ListColumns::Choice columns;
  // Sections 1 to 7 are expanded; 8 is the message's data.
  CaptureDocument::Switches switches{true, 0xFE};
  bool clean_streams = true;
  bool time_bar = true;
  ListKind list = ListKind::kPdus;
  std::vector<std::wstring> recent_files;  // the newest first
};

// The file of this user, which need not be there yet.
std::wstring SettingsPath();
// What is missing or makes no sense has its default.
Settings ReadSettings(const std::wstring& path);
// Makes the file and its folder where they are missing. What cannot be written
// is forgotten: nobody can be told any more when the window closes.
void WriteSettings(const Settings& settings, const std::wstring& path);

}  // namespace host

#endif  // HOST_CAPVIEW_SETTINGS_H_
