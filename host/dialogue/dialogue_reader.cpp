#include "host/dialogue/dialogue_reader.h"

#include <algorithm>
#include <utility>

#include "host/capture/wire_bytes.h"
#include "host/dialogue/associate_pdu.h"
#include "host/dialogue/association_check.h"
#include "host/dialogue/context_answers.h"

namespace host {
namespace {

// The smallest length that a PDU of a known type may have.
std::uint32_t SmallestLength(std::uint8_t type) {
  switch (type) {
    case kAssociateRq:
    case kAssociateAc:
      return 68;
    case kPDataTf:
      return kPdvHeaderBytes;
    default:
      return 4;
  }
}

}  // namespace

DialogueReader::DialogueReader(const StreamAssembler& zero,
                               const StreamAssembler& one)
    : linker_(dialogue_),
      readers_{MessageReader(0, dialogue_), MessageReader(1, dialogue_)} {
  dialogue_.streams = {&zero, &one};
}

void DialogueReader::SeePdu(std::uint32_t direction, const CutPdu& pdu) {
  DialoguePdu seen;
  seen.position = pdu.position;
  seen.time = pdu.frames.time;
  seen.length = pdu.header.length;
  seen.first_frame = pdu.frames.first;
  seen.last_frame = pdu.frames.last;
  seen.type = pdu.header.type;
  seen.direction = static_cast<std::uint8_t>(direction);
  seen.has_lost_bytes = pdu.lost != 0;
  seen.follows_lost_bytes = pdu.lost_before != 0 || pdu.skipped != 0;
  dialogue_.pdus.push_back(seen);
  if (seen.has_lost_bytes || seen.follows_lost_bytes) {
    readers_[direction].ForgetStep();
    has_losses_ = true;
  }
  TakePdu(pdu);
  if (!dialogue_.associations.empty()) {
    dialogue_.associations.back().end_pdu =
        static_cast<std::uint32_t>(dialogue_.pdus.size());
  }
}

void DialogueReader::TakePdu(const CutPdu& pdu) {
  switch (pdu.header.type) {
    case kAssociateRq:
      TakeRequest(pdu);
      break;
    case kAssociateAc:
      TakeAccept(pdu);
      break;
    case kAssociateRj:
      TakeReject(pdu);
      break;
    case kPDataTf:
      Current();
      break;
    case kReleaseRq:
      TakeRelease(&Association::release_request);
      break;
    case kReleaseRp:
      TakeRelease(&Association::release_answer);
      break;
    case kAbort:
      TakeAbort(pdu);
      break;
    default:
      Current();
      Note(IrregularityKind::kUnknownPduType, 0, pdu.header.type);
      break;
  }
  CheckLength(pdu);
  CheckTurn(pdu);
}

void DialogueReader::TakeRequest(const CutPdu& pdu) {
  std::vector<PresentationContext> answers;
  if (WaitsForRequest()) {
    answers = std::exchange(dialogue_.associations.back().contexts, {});
  } else {
    BeginAssociation();
  }
  AssociatePdu read =
      ReadAssociatePdu(CopyBody(pdu, kMostAssociateBytes), true);
  read.side.place = Place();
  read.side.is_damaged |= pdu.lost != 0;
  Association& association = dialogue_.associations.back();
  association.request = std::move(read.side);
  association.contexts = std::move(read.contexts);
  NoteAll(std::move(read.problems));
  NoteAll(CheckProposals(association));
  if (association.accept) {
    NoteAll(MergeAnswers(std::move(answers), association));
  }
}

bool DialogueReader::WaitsForRequest() const {
  if (!is_going_on_) return false;
  const Association& last = dialogue_.associations.back();
  return !last.request && last.accept && !last.release_request &&
         last.accept->place.direction != Place().direction &&
         last.first_message == dialogue_.messages.size();
}

void DialogueReader::TakeAccept(const CutPdu& pdu) {
  if (!is_going_on_ || dialogue_.associations.back().accept) BeginAssociation();
  AssociatePdu read =
      ReadAssociatePdu(CopyBody(pdu, kMostAssociateBytes), false);
  read.side.place = Place();
  read.side.is_damaged |= pdu.lost != 0;
  Association& association = dialogue_.associations.back();
  association.accept = std::move(read.side);
  NoteAll(std::move(read.problems));
  NoteAll(MergeAnswers(std::move(read.contexts), association));
}

void DialogueReader::TakeReject(const CutPdu& pdu) {
  Association& association = Current();
  if (association.reject) return;
  const std::vector<std::uint8_t> body = CopyBody(pdu, 4);
  WireReader in(body);
  in.Skip(1);
  Rejection reject;
  reject.place = Place();
  reject.result = in.Byte();
  reject.source = in.Byte();
  reject.reason = in.Byte();
  association.reject = reject;
}

void DialogueReader::TakeAbort(const CutPdu& pdu) {
  // An abort behind the end is still about the association that ended.
  Association& association = dialogue_.associations.empty()
                                 ? Current()
                                 : dialogue_.associations.back();
  const std::uint32_t direction = Place().direction;
  const auto is_of_direction = [direction](const Abort& abort) {
    return abort.place.direction == direction;
  };
  if (std::ranges::any_of(association.aborts, is_of_direction)) return;
  const std::vector<std::uint8_t> body = CopyBody(pdu, 4);
  WireReader in(body);
  in.Skip(2);
  Abort abort;
  abort.place = Place();
  abort.source = in.Byte();
  abort.reason = in.Byte();
  association.aborts.push_back(abort);
}

void DialogueReader::TakeRelease(
    std::optional<WirePlace> Association::*release) {
  Association& association = Current();
  if (!(association.*release)) association.*release = Place();
}

void DialogueReader::CheckLength(const CutPdu& pdu) {
  if (!pdu.header.HasKnownType() || pdu.header.HasPossibleLength()) return;
  const std::uint32_t smallest = SmallestLength(pdu.header.type);
  const bool is_fixed = smallest == 4;
  const bool is_short = pdu.header.length < smallest;
  Note(IrregularityKind::kWrongPduLength, is_fixed || is_short ? smallest : 0,
       pdu.header.length);
}

void DialogueReader::CheckTurn(const CutPdu& pdu) {
  const std::uint8_t type = pdu.header.type;
  Turn& turn = turns_[Place().direction];
  const bool associates = type == kAssociateRq || type == kAssociateAc;
  const bool is_wrong = turn.is_over || (turn.associates && associates) ||
                        (turn.associates && type == kAssociateRj) ||
                        (turn.releases && type == kPDataTf);
  if (is_wrong && pdu.header.HasKnownType()) {
    Note(IrregularityKind::kUnexpectedPdu, 0, type);
  }
  turn.associates |= associates;
  turn.releases |= type == kReleaseRq;
  turn.is_over |= type == kAbort || type == kAssociateRj || type == kReleaseRp;
}

void DialogueReader::SeeItem(const PdvItem& item,
                             std::optional<std::size_t> record) {
  const auto pdu = static_cast<std::uint32_t>(dialogue_.pdus.size() - 1);
  const DialoguePdu& seen = dialogue_.pdus[pdu];
  const std::uint32_t direction = seen.direction;
  const StreamPosition value = item.position + kPdvHeaderBytes;
  const StreamPosition item_end = std::min(
      item.position + StreamPosition{kPdvLengthBytes} + item.header.length,
      seen.position + StreamPosition{kPduHeaderBytes} + seen.length);
  const bool is_long =
      item.position + StreamPosition{kPdvLengthBytes} + item.header.length >
      item_end;
  if (!seen.has_lost_bytes) {
    if (item.header.length < 2 || is_long) {
      Note(IrregularityKind::kWrongPdvLength, 0, item.header.length);
    } else if (item.header.length % 2 != 0) {
      Note(IrregularityKind::kOddPdvLength, 0, item.header.length);
    }
    if (item.tail != 0) Note(IrregularityKind::kStrayBytes, 0, item.tail);
  }
  ReadItem read;
  read.header = item.header;
  read.value.position = value;
  read.value.length =
      static_cast<std::uint32_t>(std::max<StreamPosition>(item_end - value, 0));
  read.value.pdu = pdu;
  read.association =
      static_cast<std::uint32_t>(dialogue_.associations.size() - 1);
  const auto message = readers_[direction].Read(read);
  dialogue_.associations.back().end_message =
      static_cast<std::uint32_t>(dialogue_.messages.size());
  if (!message) return;
  linker_.Link(*message);
  if (record) {
    dialogue_.messages[*message].record = static_cast<std::uint32_t>(*record);
  }
}

void DialogueReader::SeeEnd(const PduCutter& zero, const PduCutter& one) {
  EndAssociation();
  dialogue_.ends = {EndOf(0, zero), EndOf(1, one)};
  dialogue_.is_over = true;
  std::ranges::stable_sort(
      dialogue_.irregularities, {},
      [](const Irregularity& one) { return one.place.pdu; });
}

StreamEnd DialogueReader::EndOf(std::uint32_t direction,
                                const PduCutter& cutter) const {
  const StreamAssembler& stream = *dialogue_.streams[direction];
  StreamEnd end;
  end.not_dicom_from = cutter.not_dicom_from();
  end.unfinished_pdu = cutter.unfinished();
  if (!end.unfinished_pdu) return end;
  const StreamPosition at = *end.unfinished_pdu;
  end.unfinished_captured = stream.PresentBytes(at, stream.end());
  if (stream.PresentUntil(at) - at < kPduHeaderBytes) return end;
  const PduHeader header = PduHeaderAt(stream, at);
  end.unfinished_type = header.type;
  end.unfinished_length = header.length;
  return end;
}

Association& DialogueReader::Current() {
  if (!is_going_on_) BeginAssociation();
  return dialogue_.associations.back();
}

void DialogueReader::BeginAssociation() {
  EndAssociation();
  Association& association = dialogue_.associations.emplace_back();
  association.first_pdu = Place().pdu;
  association.first_message = association.end_message =
      static_cast<std::uint32_t>(dialogue_.messages.size());
  is_going_on_ = true;
  has_losses_ = false;
  turns_ = {};
  if (dialogue_.pdus.back().type > kAssociateRj) return;
  for (MessageReader& reader : readers_) reader.BeginAssociation();
}

void DialogueReader::EndAssociation() {
  if (!is_going_on_) return;
  is_going_on_ = false;
  const Association& association = dialogue_.associations.back();
  const bool is_whole = association.request && association.accept &&
                        !association.request->is_damaged &&
                        !association.accept->is_damaged && !has_losses_;
  linker_.EndAssociation(is_whole);
  if (is_whole) CheckAssociation(association, dialogue_);
}

std::vector<std::uint8_t> DialogueReader::CopyBody(const CutPdu& pdu,
                                                   std::size_t most) const {
  std::vector<std::uint8_t> body(
      std::min<std::size_t>(pdu.header.length, most));
  const StreamAssembler& stream = *dialogue_.streams[Place().direction];
  stream.Copy(pdu.position + kPduHeaderBytes, body);
  return body;
}

WirePlace DialogueReader::Place() const {
  return dialogue_.PlaceOfPdu(
      static_cast<std::uint32_t>(dialogue_.pdus.size() - 1));
}

void DialogueReader::Note(IrregularityKind kind, std::uint64_t expected,
                          std::uint64_t found) {
  NoteAll({{kind, {}, expected, found, {}, {}, {}}});
}

void DialogueReader::NoteAll(std::vector<Irregularity> problems) {
  if (dialogue_.pdus.back().has_lost_bytes) return;  // zeros say nothing
  for (Irregularity& problem : problems) {
    problem.place = Place();
    if (!dialogue_.associations.empty()) {
      problem.association =
          static_cast<std::uint32_t>(dialogue_.associations.size() - 1);
    }
    NoteIrregularity(std::move(problem), dialogue_);
  }
}

MakePduObserver ReadDialogues() {
  return [](const StreamAssembler& zero, const StreamAssembler& one) {
    return std::make_unique<DialogueReader>(zero, one);
  };
}

}  // namespace host
