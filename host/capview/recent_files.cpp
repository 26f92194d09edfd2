#include "host/capview/recent_files.h"

#include <utility>

#include "host/capview/resource.h"

namespace host {
namespace {

// With a digit to choose it by. An ampersand of the name would mark a key.
std::wstring ItemText(std::size_t index, const std::wstring& path) {
  std::wstring text = L"&" + std::to_wstring(index + 1) + L"  ";
  for (const wchar_t letter : path) {
    text += letter;
    if (letter == L'&') text += letter;
  }
  return text;
}

}  // namespace

RecentFiles::RecentFiles(std::vector<std::wstring> paths)
    : paths_(std::move(paths)) {}

void RecentFiles::Add(const std::wstring& path) {
  std::erase_if(paths_, [&path](const std::wstring& one) {
    return lstrcmpiW(one.c_str(), path.c_str()) == 0;
  });
  paths_.insert(paths_.begin(), path);
  if (paths_.size() > kMost) paths_.resize(kMost);
}

bool RecentFiles::IsOurs(HMENU menu) {
  const UINT first = GetMenuItemID(menu, 0);
  return first == IDM_NO_RECENT || first == IDM_FIRST_RECENT;
}

void RecentFiles::Fill(HMENU menu) const {
  if (paths_.empty()) return;
  while (DeleteMenu(menu, 0, MF_BYPOSITION)) {
  }
  for (std::size_t i = 0; i < paths_.size(); ++i) {
    AppendMenuW(menu, MF_STRING, IDM_FIRST_RECENT + i,
                ItemText(i, paths_[i]).c_str());
  }
}

}  // namespace host
