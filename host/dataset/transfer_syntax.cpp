#include "host/dataset/transfer_syntax.h"

#include <algorithm>
#include <array>
#include <string>

#include "host/dataset/byte_window.h"
#include "host/dataset/element_bytes.h"
#include "host/dataset/inflated_source.h"
#include "host/dataset/registry.h"

namespace host {
namespace {

// What the elements look like when they are read in one way.
struct Score {
  int points = 0;
  bool sound = true;  // nothing spoke against it
};

constexpr int kMostElements = 16;
constexpr std::size_t kBytesOfValue = 64;

bool IsPrintable(std::uint8_t byte) { return byte >= 0x20 && byte < 0x7F; }

bool IsOfText(std::uint8_t byte) {
  return byte >= 0x20 || byte == 0x1B || (byte >= 0x09 && byte <= 0x0D);
}

// `bytes` are the first of the value; zeros at its end are padding.
bool FitsVr(std::span<const std::uint8_t> bytes, std::uint64_t length, Vr vr,
            ByteOrder order) {
  const VrTraits& traits = TraitsOf(vr);
  if (length == 0) return true;
  if (length == bytes.size() && bytes.back() == 0) {
    bytes = bytes.first(bytes.size() - 1);
  }
  switch (traits.kind) {
    case VrKind::kString:
    case VrKind::kUrl:
      return std::ranges::all_of(bytes, IsPrintable);
    case VrKind::kText:
    case VrKind::kLongText:
    case VrKind::kPersonName:
      return std::ranges::all_of(bytes, IsOfText);
    case VrKind::kSequence:
      return StartsWithItem(bytes, length, order);
    default:
      return length % traits.width == 0;
  }
}

// Walks the first elements as if they were so encoded.
class Walk {
 public:
  Walk(ByteSource& source, Encoding encoding)
      : window_(source), left_(source.size()), encoding_(encoding) {}

  Score Run() {
    for (int i = 0; i < kMostElements && left_ > 0 && goes_on_; ++i) Step();
    return score_;
  }

 private:
  void Step() {
    const auto header = window_.At(position_, kLongHeaderBytes);
    if (header.size() < kShortHeaderBytes) return Contradict();
    const Tag tag = TagAt(header, encoding_.order);
    if (position_ > 0 && tag <= last_tag_) return Contradict();
    last_tag_ = tag;
    const auto entry = FindElement(tag);
    if (!entry && !tag.IsPrivate()) score_.points -= 2;
    const Vr known = entry ? VrOfRegistry(entry->vr, false) : Vr::kNone;
    if (encoding_.explicit_vr) {
      StepExplicit(header, known);
    } else {
      if (entry) ++score_.points;
      const Vr vr = entry ? known : Vr::kUN;
      Skip(kShortHeaderBytes, LengthAt(header.subspan(4), encoding_.order), vr);
    }
  }

  void StepExplicit(std::span<const std::uint8_t> header, Vr known) {
    const Vr vr = VrAt(header);
    const VrTraits* const traits = FindVr(vr);
    if (traits == nullptr) return Contradict();
    score_.points += vr == known ? 3 : 1;
    if (!traits->long_header) {
      const auto length = NumberAt(header.subspan(6), 2, encoding_.order);
      return Skip(kShortHeaderBytes, static_cast<std::uint32_t>(length), vr);
    }
    if (header.size() < kLongHeaderBytes) return Contradict();
    Skip(kLongHeaderBytes, LengthAt(header.subspan(8), encoding_.order), vr);
  }

  void Skip(std::size_t header, std::uint32_t length, Vr vr) {
    position_ += header;
    left_ -= header;
    if (length == kUndefinedLength) {
      goes_on_ = false;  // its end cannot be seen from here
      const auto item = window_.At(position_, 4);
      const bool fits = item.size() == 4 &&
                        TagAt(item, encoding_.order).group == kItemTag.group;
      return fits ? void(++score_.points) : Contradict();
    }
    const auto value =
        window_.At(position_, std::min<std::size_t>(length, kBytesOfValue));
    if (length > left_ || !FitsVr(value, length, vr, encoding_.order)) {
      return Contradict();
    }
    ++score_.points;
    position_ += length;
    left_ -= length;
  }

  void Contradict() {
    score_.points -= 3;
    score_.sound = false;
    goes_on_ = false;
  }

  ByteWindow window_;
  std::uint64_t position_ = 0;
  std::uint64_t left_;
  Encoding encoding_;
  Tag last_tag_;
  bool goes_on_ = true;
  Score score_;
};

Judgement JudgePlain(ByteSource& source) {
  constexpr std::array kEncodings{kImplicitLittle, kExplicitLittle,
                                  kExplicitBig};
  std::array<Score, kEncodings.size()> scores;
  std::ranges::transform(kEncodings, scores.begin(), [&](Encoding encoding) {
    return Walk(source, encoding).Run();
  });
  // One that nothing speaks against beats all others.
  const auto rank = [](const Score& score) {
    return score.points + (score.sound ? 100 : 0);
  };
  const auto best = std::ranges::max_element(scores, {}, rank);
  int second = -100;
  for (const Score& score : scores) {
    if (&score != &*best) second = std::max(second, rank(score));
  }
  const auto index = static_cast<std::size_t>(best - scores.begin());
  return {kEncodings[index], best->points >= 2 && rank(*best) >= second + 3};
}

// "1.2.840.10008.1.2" and a tail that says something of the elements; all other
// tails stand for explicit VR little endian.
constexpr std::pair<std::string_view, Encoding> kSpecialTails[] = {
    {"", kImplicitLittle}, {".2", kExplicitBig},  {".1.99", kDeflated},
    {".4.95", kDeflated},  {".4.205", kDeflated},
};

}  // namespace

std::string_view EncodingText(Encoding encoding) {
  if (encoding.deflated) return "deflated explicit VR little endian";
  if (!encoding.explicit_vr) return "implicit VR little endian";
  return encoding.order == ByteOrder::kBig ? "explicit VR big endian"
                                           : "explicit VR little endian";
}

std::optional<Encoding> EncodingOf(std::string_view transfer_syntax) {
  constexpr std::string_view kFirst = "1.2.840.10008.1.2";
  const std::size_t end =
      transfer_syntax.find_last_not_of(std::string("\0 ", 2));
  const std::string_view uid = transfer_syntax.substr(0, end + 1);
  if (!uid.starts_with(kFirst) || !FindUid(uid)) return {};
  const std::string_view tail = uid.substr(kFirst.size());
  if (!tail.empty() && tail.front() != '.') return {};
  for (const auto& [special, encoding] : kSpecialTails) {
    if (tail == special) return encoding;
  }
  return kExplicitLittle;
}

Judgement JudgeEncoding(ByteSource& source) {
  const Judgement plain = JudgePlain(source);
  if (plain.confident || source.size() == 0) return plain;
  InflatedSource inflated(source);
  const bool deflated =
      JudgePlain(inflated) == Judgement{kExplicitLittle, true};
  return deflated ? Judgement{kDeflated, true} : plain;
}

ChosenEncoding ChooseEncoding(ByteSource& source,
                              std::string_view transfer_syntax) {
  const std::optional<Encoding> negotiated = EncodingOf(transfer_syntax);
  const Judgement judged = JudgeEncoding(source);
  if (!negotiated) return {judged.encoding, EncodingOrigin::kGuessed};
  if (!judged.confident || judged.encoding == *negotiated) {
    return {*negotiated, EncodingOrigin::kNegotiated};
  }
  return {judged.encoding, EncodingOrigin::kContradicts};
}

}  // namespace host
