#include "dimse/dicom_dictionary.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iterator>
#include <memory>

#include "errors/errors.h"

namespace dicom {
namespace {

// Deliberate: "XX" stands for no VR.
constexpr struct {
  std::string_view text;
  VrCode code;
} kVrTexts[] = {
    {"XX", kVrUnknown}, {"AE", kVrAe}, {"AS", kVrAs}, {"AT", kVrAt},
    {"CS", kVrCs},      {"DA", kVrDa}, {"DS", kVrDs}, {"DT", kVrDt},
    {"FL", kVrFl},      {"FD", kVrFd}, {"IS", kVrIs}, {"LO", kVrLo},
    {"LT", kVrLt},      {"OB", kVrOb}, {"OW", kVrOw}, {"PN", kVrPn},
    {"SH", kVrSh},      {"SL", kVrSl}, {"SQ", kVrSq}, {"SS", kVrSs},
    {"ST", kVrSt},      {"TM", kVrTm}, {"UI", kVrUi}, {"UL", kVrUl},
    {"US", kVrUs},      {"UT", kVrUt}, {"VS", kVrVs},
};

constexpr std::size_t kVrWidth = 2;

struct FileClose {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// Hosts know these very paths. On other systems a backslash would be a letter
// of the file's name.
#ifdef _WIN32
constexpr char kDataPath[] = ".\\Data.dic";
constexpr char kUidPath[] = ".\\Uid.dic";
#else
constexpr char kDataPath[] = "./Data.dic";
constexpr char kUidPath[] = "./Uid.dic";
#endif

// The bytes of the whole file, up to the Ctrl-Z that ends a text in Windows'
// text mode. Not through iostreams, whose locales would take a thread-local
// slot that unloading does not give back.
std::vector<char> ReadTextFile(const char* path) {
  const std::unique_ptr<std::FILE, FileClose> file(std::fopen(path, "rb"));
  if (!file) throw ErrorWhileOpenFile();
  std::vector<char> text;
  std::size_t size = 0;
  do {
    text.resize(size + (std::size_t{1} << 18));  // more than one round is rare
    size += std::fread(text.data() + size, 1, text.size() - size, file.get());
  } while (size == text.size());
  text.resize(size);
  text.erase(std::ranges::find(text, '\x1A'), text.end());
  return text;
}

// Deliberate: a line of more than 119 characters is a failed read and silently
// ends the file. Every line before it is handed to `parse`, a last one without
// a line feed too; CR LF is a line feed, as in Windows' text mode.
template <typename Parser>
void ForEachLine(const std::vector<char>& file_text, Parser parse) {
  constexpr std::size_t kMaxLine = 119;
  const std::string_view text(file_text.data(), file_text.size());
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = text.find('\n', begin);
    std::string_view line = text.substr(begin, end - begin);
    if (end != text.npos && line.ends_with('\r')) line.remove_suffix(1);
    if (line.size() > kMaxLine) return;
    // A line is taken as a C text: up to a zero byte.
    parse(line.substr(0, line.find('\0')));
    if (end == text.npos) return;
    begin = end + 1;
  }
}

// Brings the lines into order; of those with one key the first stays. The
// shipped files are in order, so a look is mostly enough.
template <typename Line>
void SortByKey(std::vector<Line>& lines) {
  if (std::ranges::is_sorted(lines, std::less_equal(), &Line::key)) return;
  std::ranges::stable_sort(lines, {}, &Line::key);
  const auto same_key = [](const Line& line, const Line& next) {
    return line.key == next.key;
  };
  lines.erase(std::unique(lines.begin(), lines.end(), same_key), lines.end());
}

// Null when there is none.
template <typename Line>
const Line* Find(const std::vector<Line>& lines, std::string_view key) {
  const auto found = std::ranges::lower_bound(lines, key, {}, &Line::key);
  return found != lines.end() && found->key == key ? &*found : nullptr;
}

// Deliberate: "#" is a comment only as the very first character.
bool IsEmptyOrComment(std::string_view line) {
  return line.empty() || line.front() == '#';
}

bool ConsistsOf(std::string_view text, std::string_view characters) {
  return text.find_first_not_of(characters) == text.npos;
}

// Deliberate: the comma may stand anywhere, and "x" is for repeating groups.
bool IsTagColumn(std::string_view text) {
  return text.size() == 9 && ConsistsOf(text, "0123456789ABCDEFx,");
}

// Deliberate: behind the VR a ";" with nothing after it drops the line, the
// lack of one does not.
bool IsVrAndExtraText(std::string_view columns) {
  const std::size_t separator = columns.find(';');
  return std::min(separator, columns.size()) == kVrWidth &&
         columns.size() != kVrWidth + 1;
}

// Deliberate: odd groups 50gg and 60gg fold too, and as every look-up does, a
// line that writes such a group out, "5000,...", cannot be reached.
void FoldRepeatingGroup(std::string& tag_text) {
  if (tag_text.starts_with("(50") || tag_text.starts_with("(60")) {
    tag_text.replace(3, 2, "xx");
  }
}

}  // namespace

std::int32_t VrCodeOf(std::string_view vr_text) {
  const auto* found = std::ranges::find(
      kVrTexts, vr_text, [](const auto& row) { return row.text; });
  return found == std::ranges::end(kVrTexts) ? kVrUnknown : found->code;
}

DicomDictionary::DicomDictionary()
    : data_text_(ReadTextFile(kDataPath)), uid_text_(ReadTextFile(kUidPath)) {
  ForEachLine(data_text_,
              [this](std::string_view line) { AddDataElement(line); });
  ForEachLine(uid_text_, [this](std::string_view line) { AddUid(line); });
  SortByKey(data_elements_);
  SortByKey(uids_);
}

// Deliberate: the first of two lines for a tag wins.
void DicomDictionary::AddDataElement(std::string_view line) {
  if (IsEmptyOrComment(line)) return;
  const std::size_t tag_end = line.find(';');
  if (tag_end == line.npos) return;
  const std::string_view tag = line.substr(0, tag_end);
  if (!IsTagColumn(tag)) return;

  const std::size_t name_end = line.find(';', tag_end + 1);
  if (name_end == line.npos) return;
  const std::string_view name =
      line.substr(tag_end + 1, name_end - tag_end - 1);
  const std::string_view columns = line.substr(name_end + 1);
  if (name.empty() || !IsVrAndExtraText(columns)) return;
  data_elements_.push_back({tag, name, VrCodeOf(columns.substr(0, kVrWidth))});
}

// Deliberate: an empty UID is kept, the first of two lines for a UID wins, and
// the description may be empty and is not trimmed.
void DicomDictionary::AddUid(std::string_view line) {
  constexpr std::size_t kMaxUidLength = 64;
  if (IsEmptyOrComment(line)) return;
  const std::size_t uid_end = line.find(';');
  if (uid_end == line.npos || uid_end > kMaxUidLength) return;
  const std::string_view uid = line.substr(0, uid_end);
  if (!ConsistsOf(uid, "0123456789.")) return;
  uids_.push_back({uid, line.substr(uid_end + 1)});
}

DataElementEntry DicomDictionary::LookupDataElement(
    const std::string& tag_text) const {
  std::string key = tag_text;
  FoldRepeatingGroup(key);
  const bool is_tag = key.starts_with('(') && key.ends_with(')');
  const ElementLine* const line =
      is_tag ? Find(data_elements_,
                    std::string_view(key).substr(1, key.size() - 2))
             : nullptr;
  if (line == nullptr) return {kVrUnknown, "Unknown Tag"};
  return {line->vr_code, std::string(line->name)};
}

// Deliberate: the text is not trimmed, so a UID with its padding is undefined.
std::string DicomDictionary::LookupUidDescription(
    std::string_view uid_text) const {
  const UidLine* const line = Find(uids_, uid_text);
  return std::string(line == nullptr ? "- Undefined UID" : line->description);
}

}  // namespace dicom
