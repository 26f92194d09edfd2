#ifndef HOST_CAPVIEW_RECENT_FILES_H_
#define HOST_CAPVIEW_RECENT_FILES_H_

#include <windows.h>

#include <cstddef>
#include <string>
#include <vector>

namespace host {

// The captures that were opened last, for the menu "Open Recent".
class RecentFiles {
 public:
  static constexpr std::size_t kMost = 8;

  // The newest first.
  explicit RecentFiles(std::vector<std::wstring> paths);

  const std::vector<std::wstring>& Paths() const { return paths_; }
  // Becomes the newest; capitals do not make another file.
  void Add(const std::wstring& path);

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
