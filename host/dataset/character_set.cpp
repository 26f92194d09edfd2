#include "host/dataset/character_set.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

#include "host/dataset/code_sets.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

constexpr int kAscii = 6, kRomaji = 14, kKatakana = 13;
constexpr int kUtf8Number = 192;
constexpr char kEscape = '\x1B';
constexpr char32_t kReplacement = 0xFFFD;
constexpr std::size_t kMostBytesOfCharacter = 4;

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kPadding(" \0", 2);
  const std::size_t first = text.find_first_not_of(kPadding);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(kPadding) + 1 - first);
}

// The number that ends a term, "100" of "ISO_IR 100"; nothing when none does.
std::optional<int> NumberOf(std::string_view term) {
  const std::size_t at = term.find_last_not_of("0123456789") + 1;
  int number = 0;
  const auto [end, error] =
      std::from_chars(term.data() + at, term.data() + term.size(), number);
  if (at == term.size() || error != std::errc()) return {};
  return number;
}

unsigned ByteAt(std::string_view bytes, std::size_t at) {
  return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

bool IsHigh(char byte) { return (byte & 0x80) != 0; }

bool LooksLikeUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t length = Utf8CharacterLength(bytes);
    if (length == 0) return false;
    bytes.remove_prefix(length);
  }
  return true;
}

// Chinese or Korean in pairs of high bytes; both use the same ones.
bool LooksLikePairs(std::string_view bytes) {
  int pairs = 0;
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    if (!IsHigh(bytes[at])) continue;
    const unsigned lead = ByteAt(bytes, at), trail = ByteAt(bytes, ++at);
    if (lead < 0xB0 || lead > 0xF7 || trail < 0xA1 || trail > 0xFE) {
      return false;
    }
    ++pairs;
  }
  return pairs > 1;
}

// Its lead bytes from 80h to 9Fh are no letters of any other set, those above
// often are.
bool LooksLikeShiftJis(std::string_view bytes) {
  bool is_sure = false;
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    const unsigned lead = ByteAt(bytes, at);
    if (lead < 0x80 || (lead >= 0xA1 && lead <= 0xDF)) continue;
    if (lead == 0x80 || lead == 0xA0 || lead > 0xEF) return false;
    if (ShiftJisCharacter(lead, ByteAt(bytes, ++at)) == kNoCharacter) {
      return false;
    }
    is_sure = is_sure || lead < 0xA0;
  }
  return is_sure;
}

// What bytes that do not fit their declaration may be; null when nothing does.
const char* LooksLike(std::string_view bytes) {
  if (LooksLikeUtf8(bytes)) return "UTF-8";
  if (LooksLikePairs(bytes)) return "GBK or KS X 1001";
  return LooksLikeShiftJis(bytes) ? "Shift JIS" : nullptr;
}

}  // namespace

// One text on its way from bytes to characters.
class TextDecoder {
 public:
  TextDecoder(const CharacterSet& set, std::string_view bytes, TextForm form,
              bool is_cut)
      : set_(set), bytes_(bytes), form_(form), is_cut_(is_cut) {
    text_.values.emplace_back();
    FallBack();
  }

  DecodedText Run() {
    while (at_ < bytes_.size()) Step();
    text_.finding = Finding();
    text_.fault = Fault();
    return std::move(text_);
  }

 private:
  unsigned Byte(std::size_t ahead) const { return ByteAt(bytes_, at_ + ahead); }

  void FallBack() {
    left_ = set_.left_;
    right_ = set_.right_;
  }

  void Append(char32_t character, std::size_t count) {
    AppendUtf8(character, text_.values.back());
    at_ += count;
  }

  void AppendUndecodable() {
    if (is_cut_ && bytes_.size() - at_ < kMostBytesOfCharacter) {
      at_ = bytes_.size();
      return;
    }
    undecodable_ = true;
    Append(kReplacement, 1);
  }

  // `count` bytes that have this character, if any; else the first has none.
  void AppendIfAny(char32_t character, std::size_t count) {
    if (character == kNoCharacter) return AppendUndecodable();
    Append(character, count);
  }

  void Step() {
    const unsigned byte = Byte(0);
    if (byte >= 0x80) return StepHigh(byte);
    const bool in_pairs = left_->pairs != nullptr;
    if (in_pairs && byte >= 0x21 && byte <= 0x7E) {
      const unsigned trail = Byte(1);
      const bool is_pair = trail >= 0x21 && trail <= 0x7E;
      return AppendIfAny(
          is_pair ? PairCharacter(*left_, byte, trail) : kNoCharacter, 2);
    }
    if (byte == static_cast<unsigned>(kEscape)) return StepEscape();
    StepAscii(byte);
  }

  void StepAscii(unsigned byte) {
    const bool is_end = byte >= '\t' && byte <= '\r';
    const bool in_name =
        form_ == TextForm::kName && (byte == '^' || byte == '=');
    if (is_end || in_name) FallBack();
    if (byte == '\\' && form_ != TextForm::kLong) {
      FallBack();
      text_.values.emplace_back();
      ++at_;
      return;
    }
    const bool is_graphic = byte > 0x20 && byte < 0x7F;
    Append(is_graphic ? SingleCharacter(*left_, byte) : byte, 1);
  }

  void StepHigh(unsigned byte) {
    high_ = true;
    switch (set_.scheme_) {
      case CharacterSet::Scheme::kUtf8:
        return StepUtf8();
      case CharacterSet::Scheme::kGb18030:
        if (Byte(1) >= '0' && Byte(1) <= '9' && at_ + 4 <= bytes_.size()) {
          return AppendIfAny(GbFourByteCharacter(bytes_.substr(at_, 4)), 4);
        }
        [[fallthrough]];
      case CharacterSet::Scheme::kGbk:
        return AppendIfAny(GbPairCharacter(byte, Byte(1)), 2);
      default:
        return StepRight(byte);
    }
  }

  void StepUtf8() {
    const std::size_t length = Utf8CharacterLength(bytes_.substr(at_));
    if (length == 0) return AppendUndecodable();
    text_.values.back() += bytes_.substr(at_, length);
    at_ += length;
  }

  void StepRight(unsigned byte) {
    if (right_ == nullptr) {  // as most of those who declare nothing mean it
      undeclared_ = true;
      return Append(byte, 1);
    }
    if (right_->number == kKatakana && (byte < 0xA1 || byte > 0xDF)) {
      shift_jis_ = true;
      return AppendIfAny(ShiftJisCharacter(byte, Byte(1)), 2);
    }
    if (right_->pairs != nullptr) {
      const bool is_pair = byte >= 0xA1 && Byte(1) >= 0xA1;
      return AppendIfAny(
          is_pair ? PairCharacter(*right_, byte, Byte(1)) : kNoCharacter, 2);
    }
    AppendIfAny(byte < 0xA0 ? kNoCharacter : SingleCharacter(*right_, byte), 1);
  }

  void StepEscape() {
    const CodeSet* const set = FindEscape(bytes_.substr(at_ + 1));
    if (set == nullptr || set_.scheme_ != CharacterSet::Scheme::kIso2022) {
      unknown_escape_ = unknown_escape_ || set == nullptr;
      if (set != nullptr) undeclared_set_ = set;
      return Append(static_cast<char32_t>(kEscape), 1);
    }
    if (std::ranges::find(set_.sets_, set) == set_.sets_.end()) {
      undeclared_set_ = set;
    }
    (set->is_right ? right_ : left_) = set;
    at_ += 1 + set->escape.size();
  }

  // Findings.

  std::string Finding() const {
    std::string finding;
    const auto add = [&finding](const std::string& text) {
      finding += (finding.empty() ? "" : "; ") + text;
    };
    if (undeclared_) {
      add("holds bytes above 7Fh, but no character set for them is declared");
    } else if (undecodable_) {
      add("holds bytes that are not of " + set_.declared());
    }
    const char* const like = shift_jis_       ? "Shift JIS"
                             : MayBeAnother() ? LooksLike(bytes_)
                                              : nullptr;
    if (like != nullptr) {
      add((finding.empty() ? "declared " + set_.declared() + ", looks like "
                           : "they look like ") +
          like);
    }
    if (undeclared_set_ != nullptr) {
      add("switches to ISO 2022 IR " + std::to_string(undeclared_set_->number) +
          ", which is not declared");
    }
    if (unknown_escape_) add("holds an escape sequence that is not of DICOM");
    return finding;
  }

  TextFault Fault() const {
    if (undeclared_ || undecodable_) return TextFault::kNotOfSet;
    if (undeclared_set_ != nullptr || unknown_escape_) {
      return TextFault::kUndeclaredEscape;
    }
    return text_.finding.empty() ? TextFault::kNone
                                 : TextFault::kLooksLikeAnother;
  }

  // Latin letters are not many high bytes in a row, so what looks like another
  // set is one; of the other scripts only what has no character is suspect.
  bool MayBeAnother() const {
    if (!high_) return false;
    if (undeclared_ || undecodable_) return true;
    constexpr std::array kLatin{100, 101, 109, 110, 148, 203};
    return set_.scheme_ == CharacterSet::Scheme::kIso2022 &&
           set_.sets_.size() == 2 && right_ != nullptr &&
           std::ranges::find(kLatin, right_->number) != kLatin.end();
  }

  const CharacterSet& set_;
  std::string_view bytes_;
  TextForm form_;
  bool is_cut_;
  std::size_t at_ = 0;
  const CodeSet* left_ = nullptr;
  const CodeSet* right_ = nullptr;
  DecodedText text_;
  bool high_ = false;
  bool undeclared_ = false;
  bool undecodable_ = false;
  bool shift_jis_ = false;
  bool unknown_escape_ = false;
  const CodeSet* undeclared_set_ = nullptr;
};

CharacterSet::CharacterSet(std::string_view declared)
    : declared_(PrintableFromUtf8(Trimmed(declared))),
      left_(FindCodeSet(kAscii)) {
  sets_.push_back(left_);
  std::string_view rest = declared_;
  for (bool first = true;; first = false) {
    const std::size_t end = rest.find('\\');
    Declare(Trimmed(rest.substr(0, end)), first);
    if (end == rest.npos) return;
    rest.remove_prefix(end + 1);
  }
}

void CharacterSet::Declare(std::string_view term, bool first) {
  if (term.empty()) {
    if (!first) NoteProblem("an empty value", "stands behind the first");
    return;
  }
  const std::optional<int> number = NumberOf(term);
  const bool is_utf8 = number == kUtf8Number;
  const bool is_gb18030 = term == "GB18030";
  const CodeSet* const set = number ? FindCodeSet(*number) : nullptr;
  if (is_utf8 || is_gb18030 || term == "GBK") {
    if (!first) return NoteProblem(term, "must be declared alone");
    scheme_ = is_utf8      ? Scheme::kUtf8
              : is_gb18030 ? Scheme::kGb18030
                           : Scheme::kGbk;
    if (!is_utf8) return;
  } else if (set != nullptr && set->number != kRomaji) {
    DeclareSet(*set, first);
  } else {
    return NoteProblem(term, "is no character set of DICOM");
  }
  const std::string digits = std::to_string(*number);
  if (term != "ISO_IR " + digits && term != "ISO 2022 IR " + digits) {
    NoteProblem(term, "is misspelt");
  }
}

void CharacterSet::DeclareSet(const CodeSet& set, bool first) {
  sets_.push_back(&set);
  const CodeSet* const romaji = FindCodeSet(kRomaji);
  if (set.number == kKatakana) sets_.push_back(romaji);
  if (!first) return;
  if (set.is_right) right_ = &set;
  if (set.number == kKatakana) left_ = romaji;
}

void CharacterSet::NoteProblem(std::string_view term, const char* what) {
  if (!problem_.empty()) problem_ += "; ";
  problem_.append(term).append(" ").append(what);
}

DecodedText CharacterSet::Decode(std::string_view bytes, TextForm form,
                                 bool is_cut) const {
  return TextDecoder(*this, bytes, form, is_cut).Run();
}

}  // namespace host
