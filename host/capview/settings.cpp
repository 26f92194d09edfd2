#include "host/capview/settings.h"

#include <shlobj.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <optional>
#include <sstream>
#include <system_error>

#include "host/capview/recent_files.h"

namespace host {
namespace {

constexpr wchar_t kFolder[] = L"\\DicomDecode";
constexpr wchar_t kSection[] = L"capview";
constexpr char kByteOrderMark[] = "\xFF\xFE";
constexpr DWORD kLongestValue = 4096;

// Answers the value of each key, or what stands there instead when it is
// missing or makes no sense.
class IniReader {
 public:
  explicit IniReader(const std::wstring& path) : path_(path) {}

  std::wstring Text(const std::wstring& key) const {
    std::wstring text(kLongestValue, L'\0');
    text.resize(GetPrivateProfileStringW(
        kSection, key.c_str(), L"", text.data(), kLongestValue, path_.c_str()));
    return text;
  }
  int Number(const wchar_t* key, int least, int most, int instead) const {
    const std::wstring text = Text(key);
    wchar_t* end = nullptr;
    const long value = std::wcstol(text.c_str(), &end, 10);
    const bool sensible =
        !text.empty() && *end == L'\0' && value >= least && value <= most;
    return sensible ? static_cast<int>(value) : instead;
  }
  bool Switch(const wchar_t* key, bool instead) const {
    return Number(key, 0, 1, instead) != 0;
  }
  template <std::size_t kCount>
  std::optional<std::array<int, kCount>> Numbers(const wchar_t* key) const {
    std::wistringstream text(Text(key));
    std::array<int, kCount> numbers{};
    for (int& number : numbers) {
      if (!(text >> number)) return {};
    }
    return numbers;
  }

 private:
  const std::wstring& path_;
};

class IniWriter {
 public:
  explicit IniWriter(const std::wstring& path) : path_(path) {}

  void Text(const std::wstring& key, const std::wstring& text) const {
    WritePrivateProfileStringW(kSection, key.c_str(), text.c_str(),
                               path_.c_str());
  }
  void Number(const wchar_t* key, long number) const {
    Text(key, std::to_wstring(number));
  }
  template <std::size_t kCount>
  void Numbers(const wchar_t* key,
               const std::array<int, kCount>& numbers) const {
    std::wstring text;
    for (const int number : numbers) text += std::to_wstring(number) + L" ";
    Text(key, text);
  }

 private:
  const std::wstring& path_;
};

std::wstring RecentKey(std::size_t index) {
  return L"RecentFile" + std::to_wstring(index + 1);
}

// The system writes Unicode only to a file that has begun as Unicode.
void BeginFile(const std::filesystem::path& path) {
  std::error_code ignored;
  if (std::filesystem::exists(path, ignored)) return;
  std::filesystem::create_directory(path.parent_path(), ignored);
  std::ofstream(path, std::ios::binary) << kByteOrderMark;
}

// Whether every column stands somewhere, once.
bool IsOrder(std::array<int, kRowColumns> order) {
  std::array<int, kRowColumns> all{};
  std::iota(all.begin(), all.end(), 0);
  std::ranges::sort(order);
  return order == all;
}

ListColumns::Choice ReadColumns(const IniReader& ini) {
  ListColumns::Choice columns;
  const auto widths = ini.Numbers<kRowColumns>(L"ColumnWidths");
  const auto is_width = [](int width) { return width >= 0 && width < 10000; };
  if (widths && std::ranges::all_of(*widths, is_width)) {
    columns.widths = *widths;
  }
  const int times = ini.Number(L"TimeColumns", 0, 1, -1);
  if (times >= 0) columns.times = times != 0;
  const auto order = ini.Numbers<kRowColumns>(L"ColumnOrder");
  if (order && IsOrder(*order)) columns.order = *order;
  return columns;
}

// Empty when the screen that it was on is gone.
RECT ReadPlace(const IniReader& ini) {
  const auto edges = ini.Numbers<4>(L"Place");
  if (!edges) return {};
  const RECT place{(*edges)[0], (*edges)[1], (*edges)[2], (*edges)[3]};
  const bool seen = MonitorFromRect(&place, MONITOR_DEFAULTTONULL) != nullptr;
  return seen ? place : RECT{};
}

PaneSizes::Choice ReadSizes(const IniReader& ini) {
  PaneSizes::Choice sizes;
  const auto share = [&](const wchar_t* key, int instead) {
    return ini.Number(key, PaneShares::kLeast, PaneShares::kMost, instead);
  };
  sizes.shares = {share(L"ListShare", sizes.shares.list),
                  share(L"TreeShare", sizes.shares.tree)};
  sizes.font_points =
      ini.Number(L"FontPoints", PaneSizes::Choice::kLeastPoints,
                 PaneSizes::Choice::kMostPoints, sizes.font_points);
  return sizes;
}

}  // namespace

std::wstring SettingsPath() {
  std::wstring path(MAX_PATH, L'\0');
  SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, path.data());
  path.resize(path.find(L'\0'));
  return path + kFolder + L"\\capview.ini";
}

Settings ReadSettings(const std::wstring& path) {
  const IniReader ini(path);
  Settings settings;
  settings.place = ReadPlace(ini);
  settings.maximized = ini.Switch(L"Maximized", settings.maximized);
  settings.sizes = ReadSizes(ini);
  settings.columns = ReadColumns(ini);
  settings.switches = {
      ini.Switch(L"ShowMessageData", settings.switches.show_message_data),
      static_cast<std::uint32_t>(
          ini.Number(L"ExpandMask", 0, 0x1FE,
                     static_cast<int>(settings.switches.expand_mask)))};
  settings.clean_streams = ini.Switch(L"CleanStreams", settings.clean_streams);
  settings.time_bar = ini.Switch(L"TimeBar", settings.time_bar);
  settings.list =
      ini.Switch(L"MessageView", false) ? ListKind::kMessages : ListKind::kPdus;
  for (std::size_t i = 0; i < RecentFiles::kMost; ++i) {
    const std::wstring file = ini.Text(RecentKey(i));
    if (!file.empty()) settings.recent_files.push_back(file);
  }
  return settings;
}

void WriteSettings(const Settings& settings, const std::wstring& path) {
  BeginFile(path);
  const IniWriter ini(path);
  const RECT& place = settings.place;
  if (!IsRectEmpty(&place)) {
    ini.Numbers(L"Place", std::array<int, 4>{place.left, place.top, place.right,
                                             place.bottom});
  }
  ini.Number(L"Maximized", settings.maximized);
  ini.Number(L"ListShare", settings.sizes.shares.list);
  ini.Number(L"TreeShare", settings.sizes.shares.tree);
  ini.Number(L"FontPoints", settings.sizes.font_points);
  ini.Number(L"ShowMessageData", settings.switches.show_message_data);
  ini.Number(L"CleanStreams", settings.clean_streams);
  ini.Number(L"TimeBar", settings.time_bar);
  ini.Number(L"MessageView", settings.list == ListKind::kMessages);
  ini.Number(L"ExpandMask", static_cast<long>(settings.switches.expand_mask));
  ini.Numbers(L"ColumnWidths", settings.columns.widths);
  ini.Numbers(L"ColumnOrder", settings.columns.order);
  if (settings.columns.times) {
    ini.Number(L"TimeColumns", *settings.columns.times);
  }
  for (std::size_t i = 0; i < settings.recent_files.size(); ++i) {
    ini.Text(RecentKey(i), settings.recent_files[i]);
  }
}

}  // namespace host
