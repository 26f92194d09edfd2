#include "host/capview/recent_files.h"

#include <sstream>
#include <system_error>
#include <utility>

#include "host/capview/resource.h"

namespace host {
namespace {

constexpr std::size_t kLongest = 4000;  // of what the settings hold

// With a digit to choose it by. An ampersand of the name would mark a key.
std::wstring ItemText(std::size_t index, const std::wstring& path) {
  std::wstring text = L"&" + std::to_wstring(index + 1) + L"  ";
  const auto names = RecentFiles::NamesOf(path);
  for (const wchar_t letter : names.front().wstring()) {
    text += letter;
    if (letter == L'&') text += letter;
  }
  if (names.size() == 1) return text;
  return text + L" and " + std::to_wstring(names.size() - 1) + L" more";
}

}  // namespace

RecentFiles::RecentFiles(std::vector<std::wstring> paths)
    : paths_(std::move(paths)) {}

void RecentFiles::Add(const std::vector<std::filesystem::path>& names) {
  std::wstring path;
  for (const std::filesystem::path& name : names) {
    std::error_code unknown;
    const auto whole = std::filesystem::absolute(name, unknown);
    if (!path.empty()) path += kBetween;
    path += (unknown ? name : whole).wstring();
  }
  if (path.size() > kLongest) return;
  std::erase_if(paths_, [&path](const std::wstring& one) {
    return lstrcmpiW(one.c_str(), path.c_str()) == 0;
  });
  paths_.insert(paths_.begin(), path);
  if (paths_.size() > kMost) paths_.resize(kMost);
}

std::vector<std::filesystem::path> RecentFiles::NamesOf(
    const std::wstring& path) {
  std::vector<std::filesystem::path> names;
  std::wistringstream parts(path);
  for (std::wstring name; std::getline(parts, name, kBetween);) {
    names.emplace_back(name);
  }
  return names;
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
