#include "host/capview/settings.h"

#include <shlobj.h>

#include <algorithm>
#include <array>
#include <set>
#include <sstream>

namespace host {
namespace {

constexpr wchar_t kFolder[] = L"\\DicomDecode";
constexpr wchar_t kSection[] = L"capview";
constexpr wchar_t kByteOrderMark = 0xFEFF;
constexpr DWORD kLongestValue = 4096;

class IniReader {
 public:
  explicit IniReader(const std::wstring& path) : path_(path) {}

  std::wstring Text(const std::wstring& key) const {
    std::wstring text(kLongestValue, L'\0');
    text.resize(GetPrivateProfileStringW(
        kSection, key.c_str(), L"", text.data(), kLongestValue, path_.c_str()));
    return text;
  }
  void Number(const wchar_t* key, int least, int most, int* number) const {
    const std::wstring text = Text(key);
    wchar_t* end = nullptr;
    const long value = std::wcstol(text.c_str(), &end, 10);
    const bool sensible =
        !text.empty() && *end == L'\0' && value >= least && value <= most;
    if (sensible) *number = static_cast<int>(value);
  }
  void Switch(const wchar_t* key, bool* on) const {
    int number = *on;
    Number(key, 0, 1, &number);
    *on = number != 0;
  }
  template <std::size_t kCount>
  bool Numbers(const wchar_t* key, std::array<int, kCount>* numbers) const {
    std::wistringstream text(Text(key));
    std::array<int, kCount> read{};
    for (int& number : read) {
      if (!(text >> number)) return false;
    }
    *numbers = read;
    return true;
  }

 private:
  const std::wstring& path_;
};

class IniWriter {
 public:
  explicit IniWriter(const std::wstring& path) : path_(path) {}

  void Text(const std::wstring& key, const std::wstring& text) {
    good_ &= WritePrivateProfileStringW(kSection, key.c_str(), text.c_str(),
                                        path_.c_str()) != FALSE;
  }
  void Number(const wchar_t* key, long number) {
    Text(key, std::to_wstring(number));
  }
  template <class Numbers>
  void List(const wchar_t* key, const Numbers& numbers) {
    std::wstring text;
    for (const int number : numbers) text += std::to_wstring(number) + L" ";
    Text(key, text);
  }
  bool good() const { return good_; }

 private:
  const std::wstring& path_;
  bool good_ = true;
};

std::wstring RecentKey(std::size_t index) {
  return L"RecentFile" + std::to_wstring(index + 1);
}

// The system writes Unicode only to a file that has begun as Unicode.
void BeginFile(const std::wstring& path) {
  CreateDirectoryW(path.substr(0, path.find_last_of(L'\\')).c_str(), nullptr);
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr,
                                  CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return;  // there already, or nowhere
  DWORD written = 0;
  WriteFile(file, &kByteOrderMark, sizeof kByteOrderMark, &written, nullptr);
  CloseHandle(file);
}

void ReadColumns(const IniReader& ini, RowList::Columns* columns) {
  RowList::Columns read;
  if (ini.Numbers(L"ColumnWidths", &read.widths) &&
      std::all_of(read.widths.begin(), read.widths.end(),
                  [](int width) { return width >= 0 && width < 10000; })) {
    columns->widths = read.widths;
  }
  if (!ini.Numbers(L"ColumnOrder", &read.order)) return;
  const std::set<int> all(read.order.begin(), read.order.end());
  if (all.size() == kRowColumns && *all.begin() == 0 &&
      *all.rbegin() == kRowColumns - 1) {
    columns->order = read.order;
  }
}

void ReadPlace(const IniReader& ini, RECT* place) {
  std::array<int, 4> read{};
  if (!ini.Numbers(L"Place", &read)) return;
  const RECT wanted{read[0], read[1], read[2], read[3]};
  // The screen that it was on may be gone.
  if (MonitorFromRect(&wanted, MONITOR_DEFAULTTONULL) != nullptr) {
    *place = wanted;
  }
}

}  // namespace

void Settings::AddRecentFile(const std::wstring& path) {
  std::erase_if(recent_files, [&path](const std::wstring& one) {
    return lstrcmpiW(one.c_str(), path.c_str()) == 0;
  });
  recent_files.insert(recent_files.begin(), path);
  if (recent_files.size() > kMostRecentFiles) {
    recent_files.resize(kMostRecentFiles);
  }
}

std::wstring SettingsPath() {
  std::wstring path(MAX_PATH, L'\0');
  SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, path.data());
  path.resize(path.find(L'\0'));
  return path + kFolder + L"\\capview.ini";
}

Settings ReadSettings(const std::wstring& path) {
  const IniReader ini(path);
  Settings settings;
  ReadPlace(ini, &settings.place);
  ini.Switch(L"Maximized", &settings.maximized);
  ini.Number(L"ListShare", 5, 95, &settings.list_share);
  ini.Number(L"TreeShare", 5, 95, &settings.tree_share);
  ini.Number(L"FontPoints", 6, 36, &settings.font_points);
  ini.Switch(L"ShowMessageData", &settings.show_message_data);
  ini.Switch(L"CleanStreams", &settings.clean_streams);
  ini.Switch(L"MessageView", &settings.message_view);
  int mask = static_cast<int>(settings.expand_mask);
  ini.Number(L"ExpandMask", 0, 0x1FE, &mask);
  settings.expand_mask = static_cast<std::uint32_t>(mask);
  ReadColumns(ini, &settings.columns);
  for (std::size_t i = 0; i < Settings::kMostRecentFiles; ++i) {
    const std::wstring file = ini.Text(RecentKey(i));
    if (!file.empty()) settings.recent_files.push_back(file);
  }
  return settings;
}

bool WriteSettings(const Settings& settings, const std::wstring& path) {
  BeginFile(path);
  IniWriter ini(path);
  const RECT& place = settings.place;
  if (!IsRectEmpty(&place)) {
    ini.List(L"Place", std::array<int, 4>{place.left, place.top, place.right,
                                          place.bottom});
  }
  ini.Number(L"Maximized", settings.maximized);
  ini.Number(L"ListShare", settings.list_share);
  ini.Number(L"TreeShare", settings.tree_share);
  ini.Number(L"FontPoints", settings.font_points);
  ini.Number(L"ShowMessageData", settings.show_message_data);
  ini.Number(L"CleanStreams", settings.clean_streams);
  ini.Number(L"MessageView", settings.message_view);
  ini.Number(L"ExpandMask", static_cast<long>(settings.expand_mask));
  ini.List(L"ColumnWidths", settings.columns.widths);
  ini.List(L"ColumnOrder", settings.columns.order);
  for (std::size_t i = 0; i < settings.recent_files.size(); ++i) {
    ini.Text(RecentKey(i), settings.recent_files[i]);
  }
  return ini.good();
}

}  // namespace host
