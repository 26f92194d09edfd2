#ifndef HOST_CAPVIEW_SETTINGS_H_
#define HOST_CAPVIEW_SETTINGS_H_

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "host/capview/row_list.h"

namespace host {

// What the window remembers from one time to the next, in an .ini file.
struct Settings {
  static constexpr std::size_t kMostRecentFiles = 8;

  RECT place{};  // of the window, restored; empty: where the system likes
  bool maximized = false;
  int list_share = 42;  // of the panes' height, in per cent
  int tree_share = 52;  // of the lower panes' width
  RowList::Columns columns;
  int font_points = 9;
  bool show_message_data = true;
  bool clean_streams = true;
  bool message_view = false;
  std::uint32_t expand_mask = 0xFE;        // sections 1 to 7; 8 is message data
  std::vector<std::wstring> recent_files;  // the newest first

  void AddRecentFile(const std::wstring& path);
};

// The file of this user.
std::wstring SettingsPath();
// What is missing or makes no sense stays at its default.
Settings ReadSettings(const std::wstring& path);
// False when the file cannot be written.
bool WriteSettings(const Settings& settings, const std::wstring& path);

}  // namespace host

#endif  // HOST_CAPVIEW_SETTINGS_H_
