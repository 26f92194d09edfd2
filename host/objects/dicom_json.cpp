#include "host/objects/dicom_json.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>
#include <vector>

#include "host/dataset/byte_window.h"
#include "host/dataset/value_list.h"
#include "host/objects/message_data.h"
#include "host/text/json_object.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

using Kind = DataSetEvent::Kind;

std::string TagDigits(Tag tag) {
  std::string digits = TagText(tag);
  std::erase(digits, ',');
  return digits;
}

// In whole groups of three bytes, and of the widest numbers.
constexpr std::size_t kInlineBytes = 12288;
static_assert(kInlineBytes % 24 == 0);

std::string Base64(std::span<const std::uint8_t> bytes) {
  constexpr char kDigits[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const auto byte = [&](std::size_t ahead) -> unsigned {
      return at + ahead < bytes.size() ? bytes[at + ahead] : 0;
    };
    const unsigned three = byte(0) << 16 | byte(1) << 8 | byte(2);
    for (int shift = 18; shift >= 0; shift -= 6) {
      text += kDigits[three >> shift & 63];
    }
  }
  const std::size_t padding = (3 - bytes.size() % 3) % 3;
  std::fill_n(text.rbegin(), padding, '=');
  return text;
}

void ReverseEach(std::span<std::uint8_t> bytes, std::size_t width) {
  for (std::size_t at = 0; at + width <= bytes.size(); at += width) {
    std::reverse(bytes.data() + at, bytes.data() + at + width);
  }
}

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

// Whether JSON takes the text as a number as it is.
bool IsJsonNumber(std::string_view text) {
  const auto digits = [&text] {
    std::size_t count = 0;
    while (count < text.size() && IsDigit(text[count])) ++count;
    text.remove_prefix(count);
    return count;
  };
  if (text.starts_with('-')) text.remove_prefix(1);
  const bool leads_with_zero = text.starts_with('0');
  const std::size_t whole = digits();
  if (whole == 0 || (leads_with_zero && whole > 1)) return false;
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    if (digits() == 0) return false;
  }
  if (text.starts_with('e') || text.starts_with('E')) {
    text.remove_prefix(1);
    if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
    if (digits() == 0) return false;
  }
  return text.empty();
}

std::string NumberJson(const std::string& text) {
  if (text == "nan" || text == "-nan") return "\"NaN\"";
  if (text == "inf") return "\"Infinity\"";
  if (text == "-inf") return "\"-Infinity\"";
  return IsJsonNumber(text) ? text : JsonString(text);
}

std::string PersonNameJson(std::string_view name) {
  constexpr std::array kGroups{"Alphabetic", "Ideographic", "Phonetic"};
  JsonObject object;
  for (const char* group : kGroups) {
    const std::size_t end = std::min(name.find('='), name.size());
    if (end > 0) object.Text(group, name.substr(0, end));
    name.remove_prefix(std::min(end + 1, name.size()));
  }
  return std::move(object).Close();
}

std::string ValueJson(const std::string& text, Vr vr) {
  if (text.empty()) return "null";
  switch (TraitsOf(vr).kind) {
    case VrKind::kUnsigned:
    case VrKind::kSigned:
    case VrKind::kFloat:
      return NumberJson(text);
    case VrKind::kPersonName:
      return PersonNameJson(text);
    case VrKind::kTags: {
      std::string digits = text;
      std::erase(digits, ',');
      return JsonString(digits);
    }
    default:
      return vr == Vr::kDS || vr == Vr::kIS ? NumberJson(text)
                                            : JsonString(text);
  }
}

std::string ValuesJson(const ValueList& list, Vr vr) {
  std::string json = ",\"Value\":[";
  for (std::size_t i = 0; i < list.values.size(); ++i) {
    if (i > 0) json += ',';
    json += ValueJson(list.values[i], vr);
  }
  return json + "]";
}

}  // namespace

void DicomJson::Write(const Dialogue& dialogue,
                      const DialogueMessage& message) {
  problems_.clear();
  const std::vector<std::uint8_t> command = CommandBytes(dialogue, message);
  MemorySource source(command);
  source_ = &source;
  may_go_back_ = true;
  DataSetReader commands(source, kImplicitLittle);
  sink_("\"command\":{");
  using Part = ElementFrames::Part;
  WriteElements(commands, {dialogue, message, Part::kCommandSet});
  sink_("}");
  if (message.data_bytes > 0) {
    MessageData data(dialogue, message);
    sink_(",\"transfer_syntax\":" + JsonString(data.TransferSyntax()) +
          ",\"transfer_syntax_origin\":" + JsonString(data.OriginText()) +
          ",\"data_set\":{");
    source_ = &data.Readable();
    may_go_back_ = !data.Chosen().encoding.deflated;
    DataSetReader elements(*source_, data.Chosen().encoding);
    WriteElements(elements, may_go_back_ ? ElementFrames(dialogue, message,
                                                         Part::kDataSet)
                                         : ElementFrames());
    sink_("}");
  }
  if (!problems_.empty()) sink_(",\"problems\":[" + problems_ + "]");
}

void DicomJson::WriteElements(DataSetReader& reader, ElementFrames places) {
  needs_comma_ = false;
  for (;;) {
    const DataSetEvent& event = reader.Next();
    NoteProblem(reader);
    frame_text_ = places.TextOf(event, frames_);
    switch (event.kind) {
      case Kind::kEnd:
        return;
      case Kind::kElement:
        if (!event.tag.IsGroupLength()) WriteElement(reader);
        break;
      case Kind::kSequenceBegin:
        BeginMember(event);
        if (event.vr == Vr::kUN && event.length) {
          PassSequence(reader);
          break;
        }
        sink_(",\"Value\":[");
        needs_comma_ = false;
        break;
      case Kind::kItemBegin:
        sink_(needs_comma_ ? ",{" : "{");
        needs_comma_ = false;
        break;
      case Kind::kItemEnd:
        sink_("}");
        needs_comma_ = true;
        break;
      case Kind::kSequenceEnd:
        sink_("]}");
        needs_comma_ = true;
        break;
      case Kind::kFragmentsBegin:
        BeginMember(event);
        fragments_ = event.value_at;
        break;
      case Kind::kFragmentsEnd:
        WriteReadBytes(fragments_, event.header_at - fragments_);
        break;
      default:
        break;
    }
  }
}

void DicomJson::BeginMember(const DataSetEvent& event) {
  // The model has the standard's VRs only, and items in no other than SQ.
  const bool is_open = event.kind == Kind::kSequenceBegin && !event.length;
  const Vr known = FindVr(event.vr) == nullptr ? Vr::kUN : event.vr;
  sink_(std::string(needs_comma_ ? "," : "") + "\"" + TagDigits(event.tag) +
        "\":{\"vr\":" + JsonString(VrText(is_open ? Vr::kSQ : known)) +
        (frame_text_.empty() ? "" : ",") + frame_text_);
}

// Its items' problems are told all the same.
void DicomJson::PassSequence(DataSetReader& reader) {
  const std::uint64_t offset = reader.event().value_at;
  const std::uint64_t length = reader.event().available;
  const std::size_t depth = reader.depth();
  do {
    reader.Next();
    NoteProblem(reader);
  } while (reader.event().kind != Kind::kSequenceEnd ||
           reader.depth() != depth);
  WriteReadBytes(offset, length);
}

void DicomJson::WriteReadBytes(std::uint64_t offset, std::uint64_t length) {
  if (may_go_back_) return WriteBytes(offset, length);
  WritePlace(offset, length);
}

void DicomJson::WriteBytes(std::uint64_t offset, std::uint64_t length,
                           std::size_t width) {
  if (length > most_inline_) {
    WritePlace(offset, length);
  } else {
    if (length > 0) WriteInline(offset, length, width);
    sink_("}");
    needs_comma_ = true;
  }
}

// Little endian, as the model wants bytes; numbers of one byte have no order.
void DicomJson::WriteInline(std::uint64_t offset, std::uint64_t length,
                            std::size_t width) {
  std::vector<std::uint8_t> buffer(kInlineBytes);
  sink_(",\"InlineBinary\":\"");
  for (std::uint64_t done = 0; done < length;) {
    const auto wanted = std::span(buffer).first(static_cast<std::size_t>(
        std::min<std::uint64_t>(length - done, kInlineBytes)));
    const auto bytes = wanted.first(source_->Read(offset + done, wanted));
    if (bytes.empty()) break;
    ReverseEach(bytes, width);
    sink_(Base64(bytes));
    done += bytes.size();
  }
  sink_("\"");
}

void DicomJson::WritePlace(std::uint64_t offset, std::uint64_t length) {
  sink_(",\"BulkDataURI\":\"data_set?offset=" + std::to_string(offset) +
        "&length=" + std::to_string(length) + "\"}");
  needs_comma_ = true;
}

void DicomJson::WriteElement(DataSetReader& reader) {
  const DataSetEvent& event = reader.event();
  BeginMember(event);
  const VrTraits& traits = TraitsOf(event.vr);
  if (traits.kind == VrKind::kBytes) {
    const bool is_big = event.order == ByteOrder::kBig;
    return WriteBytes(event.value_at, event.available,
                      is_big ? traits.width : 1);
  }
  if (event.available > ByteWindow::kBytes) {
    return WritePlace(event.value_at, event.available);
  }
  if (event.available > 0) {
    const auto bytes = reader.Value(ByteWindow::kBytes);
    sink_(ValuesJson(ReadValues(event, bytes, *reader.characters()), event.vr));
  }
  sink_("}");
  needs_comma_ = true;
}

void DicomJson::NoteProblem(const DataSetReader& reader) {
  const std::string problem = reader.ProblemSentence();
  if (problem.empty()) return;
  if (!problems_.empty()) problems_ += ',';
  problems_ += JsonString(problem);
}

}  // namespace host
