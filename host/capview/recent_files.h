#ifndef HOST_CAPVIEW_RECENT_FILES_H_
#define HOST_CAPVIEW_RECENT_FILES_H_

#include <windows.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace host {

// The captures that were opened last, for the menu "Open Recent".
class RecentFiles {
 public:
  static constexpr std::size_t kMost = 8;

  // The newest first; several names of one capture stand between kBetween.
  static constexpr wchar_t kBetween = L'|';  // in no name of a file
  explicit RecentFiles(std::vector<std::wstring> paths);

  const std::vector<std::wstring>& Paths() const { return paths_; }
  // Become the newest, as one capture; capitals do not make another one. What
  // is too long to be remembered is not.
  void Add(const std::vector<std::filesystem::path>& names);
  // What makes up one of Paths().
  static std::vector<std::filesystem::path> NamesOf(const std::wstring& path);

  // Whether the menu is the one that lists them.
  static bool IsOurs(HMENU menu);
  // Lists them anew, as the commands from IDM_FIRST_RECENT on. While there are
  // none, what the menu has from the beginning stays.
  void Fill(HMENU menu) const;

 private:
  std::vector<std::wstring> paths_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_RECENT_FILES_H_
