#ifndef TESTS_DATA_SET_WALK_H_
#define TESTS_DATA_SET_WALK_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/dataset/data_set_reader.h"
#include "host/dataset/value_text.h"
#include "host/text/text_encoding.h"
#include "tests/bytes.h"

namespace dicom::testing {

// Reads a data set to its end and checks what every reading must keep, whatever
// the bytes are. `problem` is the first thing that was broken, "" when none
// was.
class DataSetWalk {
 public:
  DataSetWalk(const Bytes& bytes, host::Encoding encoding)
      : size_(bytes.size()), source_(bytes), reader_(source_, encoding) {
    while (reader_.Next().kind != Kind::kEnd) {
      Check();
      if (!problem.empty()) return;
    }
    Require(reader_.depth() == 0 && open_.empty(), "all that began has ended");
    Require(reader_.Next().kind == Kind::kEnd, "the end stays the end");
  }

  std::string problem;
  std::size_t events = 0;
  std::size_t problems = 0;
  std::size_t deepest = 0;

 private:
  using Kind = host::DataSetEvent::Kind;

  void Require(bool condition, const char* what) {
    if (!condition && problem.empty()) problem = what;
  }

  void Check() {
    const host::DataSetEvent& event = reader_.event();
    Require(++events <= size_ / 2 + 8, "steps are bounded by the bytes");
    Require(event.header_at >= last_, "it reads forwards");
    last_ = event.header_at;
    Require(event.value_at >= event.header_at && event.value_at <= size_ &&
                event.available <= size_ - event.value_at,
            "positions are in the data set");
    CheckNesting(event.kind);
    deepest = std::max(deepest, reader_.depth());
    const bool has_problem = event.problem != host::DataSetProblem::kNone;
    problems += has_problem;
    if (events > kTextsOf) return;  // they are long in deep nesting
    Require(reader_.PathText().size() < 1200, "a path is bounded");
    const std::string sentence = reader_.ProblemSentence();
    Require(sentence.empty() != has_problem, "a problem has its sentence");
    Require(!has_problem || sentence.ends_with('.'), "which ends");
    if (event.kind == Kind::kElement || event.kind == Kind::kFragment) {
      CheckValue(event);
    }
  }

  void CheckNesting(Kind kind) {
    switch (kind) {
      case Kind::kSequenceBegin:
      case Kind::kItemBegin:
      case Kind::kFragmentsBegin:
        Require(reader_.depth() == open_.size(), "depth counts what is open");
        open_.push_back(kind);
        break;
      case Kind::kSequenceEnd:
        return Close(Kind::kSequenceBegin);
      case Kind::kItemEnd:
        return Close(Kind::kItemBegin);
      case Kind::kFragmentsEnd:
        return Close(Kind::kFragmentsBegin);
      default:
        Require(reader_.depth() == open_.size(), "depth counts what is open");
    }
  }

  void Close(Kind begin) {
    Require(!open_.empty() && open_.back() == begin, "ends pair with begins");
    if (!open_.empty()) open_.pop_back();
  }

  void CheckValue(const host::DataSetEvent& event) {
    const host::ShownValue shown = host::ShowValue(
        event, reader_.Value(host::kShownBytes), *reader_.characters());
    for (const std::string* text :
         {&shown.text, &shown.meaning, &shown.finding}) {
      Require(text->size() < 8 * host::kShownBytes, "what is shown is short");
      Require(host::PrintableFromUtf8(*text) == *text, "and can be printed");
    }
  }

  static constexpr std::size_t kTextsOf = 4096;

  std::uint64_t size_;
  host::MemorySource source_;
  host::DataSetReader reader_;
  std::uint64_t last_ = 0;
  std::vector<Kind> open_;
};

}  // namespace dicom::testing

#endif  // TESTS_DATA_SET_WALK_H_
