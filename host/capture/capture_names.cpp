#include "host/capture/capture_names.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include "host/capture/capture_source.h"
#include "host/text/file_name.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kWildcards = "*?";

bool IsSame(char one, char other) {
  if constexpr (fs::path::preferred_separator == '/') return one == other;
  const auto lower = [](char c) {  // names are not told apart by it there
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  };
  return lower(one) == lower(other);
}

// Whether `name` is one of those that the pattern stands for. Goes back to the
// last star only, so that it takes no longer than the product of the lengths.
bool Matches(std::string_view name, std::string_view pattern) {
  std::size_t at = 0, in = 0;  // in name and pattern
  std::size_t star = std::string_view::npos, star_at = 0;
  while (at < name.size()) {
    if (in < pattern.size() && pattern[in] == '*') {
      star = in++;
      star_at = at;
    } else if (in < pattern.size() &&
               (pattern[in] == '?' || IsSame(pattern[in], name[at]))) {
      ++at;
      ++in;
    } else if (star != std::string_view::npos) {
      in = star + 1;
      at = ++star_at;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', in) == std::string_view::npos;
}

// What is in a folder, by name; nothing where it cannot be looked into.
std::vector<fs::path> Entries(const fs::path& folder) {
  std::vector<fs::path> entries;
  std::error_code failed;
  for (fs::directory_iterator next(folder, failed), end; !failed && next != end;
       next.increment(failed)) {
    entries.push_back(next->path());
  }
  std::ranges::sort(entries);
  return entries;
}

// All that exists and matches the pattern, folder by folder from the first on.
std::vector<fs::path> Expand(const fs::path& pattern) {
  std::vector<fs::path> found{pattern.root_path()};
  for (const fs::path& part : pattern.relative_path()) {
    const std::string text = Utf8FromPath(part);
    std::vector<fs::path> next;
    for (const fs::path& folder : found) {
      if (text.find_first_of(kWildcards) == text.npos) {
        next.push_back(folder / part);
        continue;
      }
      for (const fs::path& entry : Entries(folder.empty() ? "." : folder)) {
        const std::string name = Utf8FromPath(entry.filename());
        const bool is_hidden = name.starts_with('.') && !text.starts_with('.');
        if (is_hidden || !Matches(name, text)) continue;
        next.push_back(folder / entry.filename());
      }
    }
    found = std::move(next);
  }
  std::erase_if(found, [](const fs::path& path) {
    std::error_code failed;
    return !fs::exists(path, failed);
  });
  return found;
}

class Finder {
 public:
  void Add(const fs::path& name, bool is_alone) {
    std::error_code failed;
    if (name == kStandardInput || fs::exists(name, failed)) {
      return AddFound(name);
    }
    const bool is_pattern =
        Utf8FromPath(name).find_first_of(kWildcards) != std::string::npos;
    if (!is_pattern) {
      inputs_.files.push_back({name});  // which says why when it is opened
      return;
    }
    const auto matches = Expand(name);
    for (const fs::path& match : matches) AddFound(match);
    if (!matches.empty()) return;
    if (is_alone)
      inputs_.files.push_back({name});
    else
      inputs_.failures.push_back("No file is called like " +
                                 Utf8FromPath(name) +
                                 ": see which there are in its folder.");
  }

  CaptureInputs Take() { return std::move(inputs_); }

 private:
  void AddFound(const fs::path& path) {
    std::error_code failed;
    if (!fs::is_directory(path, failed)) return AddFile({path});
    std::vector<fs::path> files;
    fs::recursive_directory_iterator next(
        path, fs::directory_options::skip_permission_denied, failed);
    for (const fs::recursive_directory_iterator end; !failed && next != end;
         next.increment(failed)) {
      std::error_code unknown;
      if (next->is_regular_file(unknown)) files.push_back(next->path());
    }
    std::ranges::sort(files);
    for (fs::path& file : files) AddFile({std::move(file), true});
    if (files.empty()) {
      inputs_.failures.push_back("There is no file in " + Utf8FromPath(path) +
                                 ": name another folder.");
    }
  }

  void AddFile(CaptureInput input) {
    std::error_code failed;
    fs::path known = fs::weakly_canonical(input.path, failed);
    if (failed) known = input.path;
    if (known_.insert(std::move(known)).second) {
      inputs_.files.push_back(std::move(input));
    }
  }

  CaptureInputs inputs_;
  std::set<fs::path> known_;
};

}  // namespace

CaptureInputs FindCaptures(const std::vector<std::filesystem::path>& names) {
  Finder finder;
  for (const auto& name : names) finder.Add(name, names.size() == 1);
  return finder.Take();
}

}  // namespace host
