#ifndef HOST_DATASET_CHARACTER_SET_H_
#define HOST_DATASET_CHARACTER_SET_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace host {

struct CodeSet;  // one coded character set, of character_set.cpp

// How a text is cut into values, and where it falls back to the first declared
// character set: at the end of a line, a page and a value always.
enum class TextForm : std::uint8_t {
  kValues,  // at each backslash
  kName,    // at each backslash; "^" and "=" fall back as well
  kLong,    // not at all
};

// How bytes and declaration disagree, the gravest first.
enum class TextFault : std::uint8_t {
  kNone,
  kNotOfSet,          // bytes that the declared set does not have
  kUndeclaredEscape,  // an escape to a set that is not declared
  kLooksLikeAnother,  // all have a character, but another set is more likely
};

struct DecodedText {
  std::vector<std::string> values;  // UTF-8, with their padding; at least one
  TextFault fault = TextFault::kNone;
  // What is wrong, "holds bytes that are not of ISO_IR 100; they look like
  // UTF-8"; empty when all is well. What has no character is U+FFFD.
  std::string finding;
};

// What a Specific Character Set declares, DICOM PS3.3 C.12.1.1.2.
class CharacterSet {
 public:
  // `declared` is the value of (0008,0005); without one there is the default
  // repertoire.
  explicit CharacterSet(std::string_view declared = {});

  // `is_cut`: more bytes follow, so that a character may end behind these.
  DecodedText Decode(std::string_view bytes, TextForm form,
                     bool is_cut = false) const;

  // As it can be printed.
  const std::string& declared() const { return declared_; }
  // What is wrong with the declaration itself: "ISO_IR 999 is no character set
  // of DICOM". Empty when all is well.
  const std::string& problem() const { return problem_; }

 private:
  friend class TextDecoder;

  enum class Scheme : std::uint8_t { kIso2022, kUtf8, kGbk, kGb18030 };

  void Declare(std::string_view term, bool first);
  void DeclareSet(const CodeSet& set, bool first);
  void NoteProblem(std::string_view term, const char* what);

  std::string declared_;
  std::string problem_;
  Scheme scheme_ = Scheme::kIso2022;
  const CodeSet* left_;               // of bytes 21h to 7Eh, to begin with
  const CodeSet* right_ = nullptr;    // of bytes A0h to FFh; none
  std::vector<const CodeSet*> sets_;  // that escapes may switch to
};

}  // namespace host

#endif  // HOST_DATASET_CHARACTER_SET_H_
