#include "host/dataset/data_set_reader.h"

#include <algorithm>

#include "host/dataset/element_bytes.h"

namespace host {
namespace {

using Kind = DataSetEvent::Kind;
using Problem = DataSetProblem;

}  // namespace

DataSetReader::DataSetReader(ByteSource& source, Encoding encoding)
    : window_(source), frames_(1) {
  Frame& data_set = frames_.front();
  data_set.encoding = encoding;
  data_set.end = source.size();
  data_set.characters = std::make_shared<const CharacterSet>();
}

std::span<const std::uint8_t> DataSetReader::Value(std::size_t most) {
  const auto count = static_cast<std::size_t>(
      std::min<std::uint64_t>({event_.available, most, ByteWindow::kBytes}));
  return window_.At(event_.value_at, count);
}

std::shared_ptr<const CharacterSet> DataSetReader::characters() const {
  return frames_.back().characters;
}

const DataSetEvent& DataSetReader::Next() {
  const Frame& frame = frames_.back();
  event_ = {};
  event_.header_at = event_.value_at = position_;
  event_.order = frame.encoding.order;
  around_ = frames_.size() - 1;
  if (position_ >= frame.end) {
    Close(frame.defined || cut_ ? Problem::kNone : Problem::kNoDelimiter);
    return event_;
  }
  cut_ = false;
  frame.kind == Frame::Kind::kItem ? ReadElement() : ReadItem();
  return event_;
}

void DataSetReader::ReadElement() {
  Frame& item = frames_.back();
  const std::uint64_t left = item.end - position_;
  const Bytes header =
      window_.At(position_, static_cast<std::size_t>(std::min<std::uint64_t>(
                                left, kLongHeaderBytes)));
  if (header.size() < kShortHeaderBytes) return PassOver(Problem::kRest);
  event_.tag = TagAt(header, item.encoding.order);
  if (event_.tag.group == kItemTag.group) return ReadDelimiter(event_.tag);

  event_.kind = Kind::kElement;
  LookUp();
  if (!item.encoding.explicit_vr) {
    ReadImplicitHeader(header);
  } else if (!ReadExplicitHeader(header)) {
    return;
  }
  if (event_.tag.Number() <= item.last_tag) Note(Problem::kOrder);
  item.last_tag = event_.tag.Number();
  if (!event_.length) return BeginUndefined();
  if (IsEntered()) return BeginSequence();
  if (*event_.length % 2 != 0) Note(Problem::kOddLength);
  position_ = event_.value_at + event_.available;
  TakeContext();
}

void DataSetReader::ReadDelimiter(Tag tag) {
  const bool is_open = !frames_.back().defined;
  if (is_open && tag == kItemEndTag) return CloseAtDelimiter();
  const bool ends_item = tag == kSequenceEndTag || tag == kItemTag;
  if (is_open && ends_item) return Close(Problem::kNoDelimiter);
  PassDelimiter(tag);
}

bool DataSetReader::ReadExplicitHeader(Bytes header) {
  const Frame& item = frames_.back();
  const Vr vr = VrAt(header);
  const VrTraits* const traits = FindVr(vr);
  if (traits == nullptr && !AreVrLetters(vr)) {
    return ReadHeaderWithoutVr(header);
  }
  const bool is_reserved = NumberAt(header.subspan(6), 2, ByteOrder::kBig) == 0;
  const bool is_long = traits == nullptr ? is_reserved : traits->long_header;
  if (is_long && header.size() < kLongHeaderBytes) {
    PassOver(Problem::kRest);
    return false;
  }
  event_.vr = event_.value_vr = vr;
  event_.value_at =
      position_ + (is_long ? kLongHeaderBytes : kShortHeaderBytes);
  if (vr == Vr::kUN) {  // its value is as in implicit VR little endian
    event_.order = ByteOrder::kLittle;
    if (event_.entry) {
      event_.value_vr = VrOfRegistry(event_.entry->vr, item.pixels_are_signed);
    }
  }
  TakeLength(is_long ? LengthAt(header.subspan(8), item.encoding.order)
                     : static_cast<std::uint32_t>(NumberAt(
                           header.subspan(6), 2, item.encoding.order)));
  return true;
}

void DataSetReader::ReadImplicitHeader(Bytes header) {
  TakeVrOfRegistry();
  TakeLength(LengthAt(header.subspan(4), frames_.back().encoding.order));
}

// Some senders write "??" or zeros for a VR that they do not know, with the
// short header that it had once. Others mix elements in implicit VR in.
bool DataSetReader::ReadHeaderWithoutVr(Bytes header) {
  const Frame& item = frames_.back();
  const std::uint64_t left = item.end - position_ - kShortHeaderBytes;
  const auto length16 = static_cast<std::uint32_t>(
      NumberAt(header.subspan(6), 2, item.encoding.order));
  const std::uint32_t length32 =
      LengthAt(header.subspan(4), item.encoding.order);
  const bool is_open =
      length32 == kUndefinedLength && event_.entry && event_.entry->vr == "SQ";
  const bool fits_long = is_open || length32 <= left;
  const bool is_short = length16 <= left && length16 != length32 && !is_open &&
                        IsFollowed(length16);
  if (!fits_long && !is_short) {
    PassOver(Problem::kNotAnElement);
    return false;
  }
  Note(is_short ? Problem::kNoVrShort : Problem::kNoVr);
  TakeVrOfRegistry();
  TakeLength(is_short ? length16 : length32);
  return true;
}

bool DataSetReader::IsFollowed(std::uint32_t length) {
  const Frame& item = frames_.back();
  const Vr own = VrAt(window_.At(position_, kShortHeaderBytes));
  const std::uint64_t next = position_ + kShortHeaderBytes + length;
  if (next >= item.end) return next == item.end;
  const Bytes header = window_.At(next, kShortHeaderBytes);
  if (header.size() < kShortHeaderBytes) return false;
  const Tag tag = TagAt(header, item.encoding.order);
  const Vr vr = VrAt(header);
  return tag == kItemEndTag || (tag.Number() > event_.tag.Number() &&
                                (vr == own || FindVr(vr) != nullptr));
}

void DataSetReader::TakeVrOfRegistry() {
  const Frame& item = frames_.back();
  event_.vr_origin = !event_.entry            ? VrOrigin::kGuessed
                     : event_.creator.empty() ? VrOrigin::kDictionary
                                              : VrOrigin::kPrivateDictionary;
  event_.vr = event_.entry
                  ? VrOfRegistry(event_.entry->vr, item.pixels_are_signed)
                  : Vr::kUN;
  event_.value_vr = event_.vr;
  event_.value_at = position_ + kShortHeaderBytes;
}

void DataSetReader::TakeLength(std::uint32_t length) {
  const std::uint64_t left = frames_.back().end - event_.value_at;
  event_.available = left;
  if (length == kUndefinedLength) return;
  event_.length = length;
  event_.available = std::min<std::uint64_t>(length, left);
  if (length <= left) return;
  cut_ = true;
  Note(Problem::kPastEnd);
}

void DataSetReader::BeginSequence() {
  const bool is_unknown = event_.vr == Vr::kUN;
  event_.value_vr = Vr::kSQ;
  if (event_.vr_origin == VrOrigin::kGuessed) event_.vr = Vr::kSQ;
  Begin(Kind::kSequenceBegin, Frame::Kind::kSequence);
  if (!is_unknown || event_.kind != Kind::kSequenceBegin) return;
  frames_.back().of_unknown = true;
  frames_.back().encoding = kImplicitLittle;
}

void DataSetReader::BeginUndefined() {
  const VrKind kind = TraitsOf(event_.value_vr).kind;
  const bool is_known = event_.value_vr != Vr::kUN;
  if (kind == VrKind::kBytes && is_known) {
    return Begin(Kind::kFragmentsBegin, Frame::Kind::kFragments);
  }
  const bool may_be_open = kind == VrKind::kSequence || event_.vr == Vr::kUN;
  if (!may_be_open) Note(Problem::kUndefinedLength);
  BeginSequence();
}

// Whether a value of defined length is a sequence. Only SQ that was sent is
// believed; else it must begin with an item, which of an unknown value also has
// to have room in it.
bool DataSetReader::IsEntered() {
  const bool is_sequence = event_.value_vr == Vr::kSQ;
  if (!is_sequence && event_.vr != Vr::kUN) return false;
  const bool was_sent = event_.vr_origin == VrOrigin::kExplicit;
  if (event_.vr == Vr::kSQ && (was_sent || event_.available == 0)) return true;
  const Bytes bytes = Value(kShortHeaderBytes);
  if (is_sequence ? StartsWithTag(bytes, kItemTag, event_.order)
                  : StartsWithItem(bytes, *event_.length, event_.order)) {
    return true;
  }
  if (is_sequence) event_.value_vr = Vr::kUN;
  if (event_.vr == Vr::kSQ) {
    event_.vr = Vr::kUN;
    event_.vr_origin = VrOrigin::kGuessed;
  }
  return false;
}

// In a sequence or between fragments.
void DataSetReader::ReadItem() {
  Frame& frame = frames_.back();
  const Bytes header =
      window_.At(position_, static_cast<std::size_t>(std::min<std::uint64_t>(
                                frame.end - position_, kShortHeaderBytes)));
  if (header.size() < kShortHeaderBytes) return PassOver(Problem::kRest);
  const Tag tag = TagAt(header, frame.encoding.order);
  const std::uint32_t length =
      LengthAt(header.subspan(4), frame.encoding.order);
  const bool are_fragments = frame.kind == Frame::Kind::kFragments;
  event_.tag = frame.tag;
  event_.value_at = position_ + kShortHeaderBytes;
  if (tag == kItemTag && !are_fragments) return BeginItem(frame, length);
  if (tag == kItemTag && length != kUndefinedLength) {
    return TakeFragment(frame, length);
  }
  if (tag == kSequenceEndTag && !frame.defined) return CloseAtDelimiter();
  if (tag == kSequenceEndTag || tag == kItemEndTag) return PassDelimiter(tag);
  frame.defined ? PassOver(Problem::kNotAnItem) : Close(Problem::kNotAnItem);
}

void DataSetReader::BeginItem(Frame& sequence, std::uint32_t length) {
  event_.item = sequence.item++;
  TakeLength(length);
  if (sequence.of_unknown) SeeEncodingOfUnknown(sequence);
  Begin(Kind::kItemBegin, Frame::Kind::kItem);
}

// Some senders leave the items of an unknown sequence in explicit VR.
void DataSetReader::SeeEncodingOfUnknown(Frame& sequence) {
  const Bytes header = Value(kShortHeaderBytes);
  if (header.size() < kShortHeaderBytes) return;
  sequence.of_unknown = false;
  const std::uint32_t length = LengthAt(header.subspan(4), ByteOrder::kLittle);
  const bool is_implicit = length <= event_.available - kShortHeaderBytes;
  if (is_implicit || FindVr(VrAt(header)) == nullptr) return;
  sequence.encoding = kExplicitLittle;
  Note(Problem::kExplicitInUnknown);
}

void DataSetReader::TakeFragment(Frame& fragments, std::uint32_t length) {
  event_.kind = Kind::kFragment;
  event_.item = fragments.item++;
  event_.vr = Vr::kOB;
  event_.value_vr = event_.item == 0 ? Vr::kUL : Vr::kOB;  // offsets
  TakeLength(length);
  position_ = event_.value_at + event_.available;
}

void DataSetReader::Begin(Kind event, Frame::Kind kind) {
  if (frames_.size() > kMostLevels) {
    event_.kind = Kind::kRemark;
    Note(Problem::kTooDeep);
    cut_ = true;
    position_ = frames_.front().end;
    return;
  }
  const Frame& around = frames_.back();
  Frame frame;
  frame.kind = kind;
  frame.defined = event_.length.has_value();
  frame.pixels_are_signed = around.pixels_are_signed;
  frame.encoding = around.encoding;
  frame.tag = event_.tag;
  frame.item = event_.item;
  frame.end = event_.value_at + event_.available;
  frame.characters = around.characters;
  event_.kind = event;
  position_ = event_.value_at;
  frames_.push_back(std::move(frame));
}

void DataSetReader::Close(Problem problem) {
  const Frame frame = frames_.back();
  if (frames_.size() == 1) return;  // the event is the end already
  if (!creators_.empty()) {
    creators_.erase(creators_.lower_bound({frames_.size(), 0}),
                    creators_.end());
  }
  frames_.pop_back();
  around_ = frames_.size() - 1;
  event_.value_at = position_;
  event_.tag = frame.tag;
  event_.item = frame.kind == Frame::Kind::kItem ? frame.item : 0;
  event_.kind = frame.kind == Frame::Kind::kItem       ? Kind::kItemEnd
                : frame.kind == Frame::Kind::kSequence ? Kind::kSequenceEnd
                                                       : Kind::kFragmentsEnd;
  Note(problem);
}

void DataSetReader::CloseAtDelimiter() {
  position_ += kShortHeaderBytes;
  Close(Problem::kNone);
}

// What is left of the innermost item or sequence.
void DataSetReader::PassOver(Problem problem) {
  event_.kind = Kind::kRemark;
  event_.available = frames_.back().end - position_;
  event_.value_at = position_;
  position_ = frames_.back().end;
  cut_ = true;
  Note(problem);
}

void DataSetReader::PassDelimiter(Tag tag) {
  event_.kind = Kind::kRemark;
  event_.tag = tag;
  event_.value_at = position_;
  event_.available = kShortHeaderBytes;
  position_ += kShortHeaderBytes;
  Note(Problem::kStrayDelimiter);
}

// The gravest problem of an event is the one that is told; they are declared in
// that order.
void DataSetReader::Note(Problem problem) {
  if (problem == Problem::kNone) return;
  if (event_.problem == Problem::kNone || problem < event_.problem) {
    event_.problem = problem;
  }
}

}  // namespace host
