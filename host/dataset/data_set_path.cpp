// Where an event is and what is wrong with it, in words.
#include "host/dataset/data_set_reader.h"
#include "host/text/number_text.h"

namespace host {
namespace {

using Kind = DataSetEvent::Kind;
using Problem = DataSetProblem;

constexpr std::size_t kMostSteps = 64;  // a sequence and its item are two

void AppendTag(Tag tag, std::string& path) {
  if (!path.empty()) path += '.';
  path += TagText(tag);
}

void AppendItem(std::size_t item, std::string& path) {
  path += '[' + std::to_string(item + 1) + ']';
}

std::string LengthText(const DataSetEvent& event) {
  const std::uint64_t missing = *event.length - event.available;
  return "its length of " + BytesText(*event.length) + " goes " +
         BytesText(missing) + " past the end of what it is in";
}

std::string ProblemText(const DataSetEvent& event) {
  switch (event.problem) {
    case Problem::kPastEnd:
      return LengthText(event);
    case Problem::kRest:
      return BytesText(event.available) +
             " at the end of what they are in are too few to be anything";
    case Problem::kNoVr:
      return "no value representation is given; read as implicit VR";
    case Problem::kNoVrShort:
      return "no value representation is given; read with a length of 16 bits";
    case Problem::kNotAnElement:
      return "what follows is no data element; " + BytesText(event.available) +
             " are passed over";
    case Problem::kNotAnItem:
      return event.kind == Kind::kRemark
                 ? "no item follows where one must; " +
                       BytesText(event.available) + " are passed over"
                 : "no item follows where one must; read on behind it";
    case Problem::kStrayDelimiter:
      return "(" + TagText(event.tag) + ") is out of place and passed over";
    case Problem::kNoDelimiter:
      return "it ends without its delimiter";
    case Problem::kUndefinedLength:
      return VrText(event.vr) +
             " must not have an undefined length; read as a sequence";
    case Problem::kExplicitInUnknown:
      return "the items of a UN must be implicit VR; read as explicit VR";
    case Problem::kTooDeep:
      return "it is nested too deep; nothing more is read";
    case Problem::kOddLength:
      return "its length of " + BytesText(*event.length) + " is odd";
    case Problem::kOrder:
      return "its tag is not above the one before it";
    case Problem::kNone:
      break;
  }
  return {};
}

}  // namespace

std::string DataSetReader::PathText() const {
  std::string path;
  const bool is_long = around_ > kMostSteps;
  for (std::size_t step = 1; step <= around_; ++step) {
    if (is_long && step == kMostSteps / 2 + 1) {
      const std::size_t left_out = around_ - kMostSteps;
      path += "...(" + NumberText(left_out) + " levels)...";
      step += left_out;
    }
    const Frame& frame = frames_[step];
    if (frame.kind == Frame::Kind::kItem) {
      AppendItem(frame.item, path);
    } else {
      AppendTag(frame.tag, path);
    }
  }
  switch (event_.kind) {
    case Kind::kItemBegin:
    case Kind::kItemEnd:
    case Kind::kFragment:
      AppendItem(event_.item, path);
      break;
    case Kind::kRemark:
    case Kind::kEnd:
      break;
    default:
      AppendTag(event_.tag, path);
  }
  return path;
}

std::string DataSetReader::ProblemSentence() const {
  if (event_.problem == Problem::kNone) return {};
  const std::string path = PathText();
  return "At byte " + NumberText(event_.header_at) +
         (path.empty() ? "" : ", ") + path + ": " + ProblemText(event_) + ".";
}

}  // namespace host
