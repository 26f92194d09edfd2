#include "dimse/dicom_dictionary.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>

#include "errors/errors.h"

namespace dicom {
namespace {

// VR texts in the order of their codes, from -1 on. Deliberate: "XX" stands for
// no VR, FL comes before FD, the last one is VS and there is no UN.
constexpr std::string_view kVrTexts[] = {
    "XX", "AE", "AS", "AT", "CS", "DA", "DS", "DT", "FL",
    "FD", "IS", "LO", "LT", "OB", "OW", "PN", "SH", "SL",
    "SQ", "SS", "ST", "TM", "UI", "UL", "US", "UT", "VS",
};

constexpr std::int32_t CodeInTable(std::string_view vr_text) {
  const auto* found = std::ranges::find(kVrTexts, vr_text);
  if (found == std::ranges::end(kVrTexts)) return kVrUnknown;
  return static_cast<std::int32_t>(found - std::ranges::begin(kVrTexts)) - 1;
}
static_assert(CodeInTable("XX") == kVrUnknown && CodeInTable("AE") == 0 &&
              CodeInTable("OB") == kVrOb && CodeInTable("OW") == kVrOw &&
              CodeInTable("SQ") == kVrSq && CodeInTable("UI") == kVrUi &&
              CodeInTable("VS") == 25 && CodeInTable("UN") == kVrUnknown);

struct FileClose {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// The whole file as Windows' text mode reads it, in whichever world this runs:
// CR LF is a line feed, Ctrl-Z ends the text. Not through iostreams, whose
// locales would take a thread-local slot that unloading does not give back.
std::string ReadTextFile(const char* path) {
  const std::unique_ptr<std::FILE, FileClose> file(std::fopen(path, "rb"));
  if (!file) throw ErrorWhileOpenFile();
  std::string text;
  char block[4096];
  while (const std::size_t count =
             std::fread(block, 1, sizeof(block), file.get())) {
    for (const char c : std::string_view(block, count)) {
      if (c == '\x1A') return text;
      if (c == '\n' && text.ends_with('\r')) text.pop_back();
      text += c;
    }
  }
  return text;
}

// Hands every line of the file to `parse`, the last one with or without its
// line feed. Deliberate: a line of more than 119 characters is a failed read
// and silently ends the file.
template <typename Parser>
void ForEachLine(const char* path, Parser parse) {
  constexpr std::size_t kMaxLine = 119;
  const std::string text = ReadTextFile(path);
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    if (end - begin > kMaxLine) return;
    // A line is handed on as a C text: up to a zero byte.
    parse(text.substr(begin, end - begin).c_str());
    begin = end + 1;
  }
}

// "#" is a comment only as the very first character.
bool IsEmptyOrComment(const std::string& line) {
  return line.empty() || line.front() == '#';
}

bool ConsistsOf(std::string_view text, std::string_view characters) {
  return text.find_first_not_of(characters) == text.npos;
}

// Deliberate: the comma may stand anywhere, and "x" is for repeating groups.
bool IsTagColumn(std::string_view text) {
  return text.size() == 9 && ConsistsOf(text, "0123456789ABCDEFx,");
}

// The columns behind the name: the VR, or the VR, ";" and a text. Deliberate: a
// ";" with nothing behind it drops the line, the lack of one does not.
bool ParseVrAndExtraText(const std::string& columns, DataElementEntry& entry) {
  constexpr std::size_t kVrWidth = 2;
  const std::size_t separator = columns.find(';');
  const bool has_extra_text = separator != columns.npos;
  if ((has_extra_text ? separator : columns.size()) != kVrWidth) return false;
  if (has_extra_text) {
    entry.extraText = columns.substr(separator + 1);
    if (entry.extraText.empty()) return false;
  }
  entry.vrCode = VrCodeOf(columns.substr(0, kVrWidth));
  return true;
}

// Elements of groups 50gg and 60gg are listed once for all of them.
void FoldRepeatingGroup(std::string& tag_text) {
  if (tag_text.starts_with("(50") || tag_text.starts_with("(60")) {
    tag_text.replace(3, 2, "xx");
  }
}

}  // namespace

std::int32_t VrCodeOf(std::string_view vr_text) { return CodeInTable(vr_text); }

DicomDictionary::DicomDictionary() {
  ForEachLine(".\\Data.dic",
              [this](const char* line) { AddDataElement(line); });
  ForEachLine(".\\Uid.dic", [this](const char* line) { AddUid(line); });
}

// TAG;NAME;VR or TAG;NAME;VR;EXTRA TEXT. The first line of a tag wins.
void DicomDictionary::AddDataElement(const std::string& line) {
  if (IsEmptyOrComment(line)) return;
  const std::size_t tag_end = line.find(';');
  if (tag_end == line.npos) return;
  const std::string tag = line.substr(0, tag_end);
  if (!IsTagColumn(tag)) return;

  const std::size_t name_end = line.find(';', tag_end + 1);
  if (name_end == line.npos) return;
  DataElementEntry entry;
  entry.name = line.substr(tag_end + 1, name_end - tag_end - 1);
  if (entry.name.empty()) return;
  if (!ParseVrAndExtraText(line.substr(name_end + 1), entry)) return;
  data_elements_.try_emplace("(" + tag + ")", entry);
}

// UID;DESCRIPTION. An empty UID is a UID; the first line of a UID wins.
void DicomDictionary::AddUid(const std::string& line) {
  constexpr std::size_t kMaxUidLength = 64;
  if (IsEmptyOrComment(line)) return;
  const std::size_t uid_end = line.find(';');
  if (uid_end == line.npos || uid_end > kMaxUidLength) return;
  const std::string uid = line.substr(0, uid_end);
  if (!ConsistsOf(uid, "0123456789.")) return;
  uids_.try_emplace(uid, line.substr(uid_end + 1));
}

bool DicomDictionary::LookupDataElement(const std::string& tagText,
                                        DataElementEntry& entry) const {
  std::string key = tagText;
  FoldRepeatingGroup(key);
  const auto found = data_elements_.find(key);
  if (found == data_elements_.end()) {
    entry.vrCode = kVrUnknown;
    entry.extraText.clear();
    entry.name = "Unknown Tag";
    return false;
  }
  entry = found->second;
  return true;
}

std::string DicomDictionary::LookupUidDescription(
    const std::string& uidText) const {
  const auto found = uids_.find(uidText);
  return found == uids_.end() ? "- Undefined UID" : found->second;
}

}  // namespace dicom
