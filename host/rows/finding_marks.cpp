#include "host/rows/finding_marks.h"

#include <algorithm>
#include <string_view>

#include "host/dataset/data_set_reader.h"
#include "host/dialogue/dialogue.h"
#include "host/objects/message_data.h"

namespace host {
namespace {

// Where in a PDU or in a command set a kind of finding shows.
struct KindPlace {
  std::string_view slug;  // or how it begins
  std::uint32_t pdu_byte = 0;
  Tag element = {};  // of the command set
};

constexpr std::uint32_t kReasonByte = 9;  // of a reject, of an abort
constexpr std::uint32_t kLengthByte = 2;
constexpr KindPlace kPlaces[] = {
    {"reject-", kReasonByte},
    {"abort-", kReasonByte},
    {"ae-title-bad", 10},
    {"pdu-bad-length", kLengthByte},
    {"pdu-above-maximum", kLengthByte},
    {"ended-inside-pdu", kLengthByte},
    {"pdv-", 6},
    {"status-", 0, {0x0000, 0x0900}},
    {"get-without-scp-role", 0, {0x0000, 0x1021}},
    {"suboperations-failed", 0, {0x0000, 0x1021}},
    {"commitment-failed", 0, {0x0000, 0x1002}},
    {"command-unknown", 0, {0x0000, 0x0100}},
    {"command-of-wrong-service", 0, {0x0000, 0x0002}},
    {"response-without-request", 0, {0x0000, 0x0120}},
    {"response-of-wrong-kind", 0, {0x0000, 0x0100}},
    {"uid-bad", 0, {0x0000, 0x0002}},
};

constexpr std::uint8_t kAssociateRq = 0x01;
constexpr std::uint8_t kAssociateAc = 0x02;
constexpr std::size_t kFirstItem = 74;  // behind the fixed part of both
constexpr std::size_t kItemHeader = 4;
constexpr std::size_t kResultInItem = 6;

// The result of the context in an accept, its ID in a request.
std::uint32_t ByteOfContext(const Dialogue& dialogue, std::uint32_t pdu,
                            std::uint8_t id) {
  const DialoguePdu& at = dialogue.pdus[pdu];
  const StreamAssembler* const stream = dialogue.streams[at.direction];
  if (stream == nullptr ||
      (at.type != kAssociateRq && at.type != kAssociateAc)) {
    return 0;
  }
  constexpr std::uint32_t kMostBytes = 1U << 20;
  std::vector<std::uint8_t> bytes(std::min(at.length, kMostBytes) + 6);
  stream->Copy(at.position, bytes);
  const std::uint8_t context_item = at.type == kAssociateRq ? 0x20 : 0x21;
  for (std::size_t item = kFirstItem; item + 8 <= bytes.size();) {
    if (bytes[item] == context_item && bytes[item + kItemHeader] == id) {
      return static_cast<std::uint32_t>(
          item + (at.type == kAssociateAc ? kResultInItem : kItemHeader));
    }
    item += kItemHeader + bytes[item + 2] * 256U + bytes[item + 3];
  }
  return 0;
}

// Of its value.
std::uint32_t ByteOfElement(const Dialogue& dialogue,
                            const DialogueMessage& message, Tag element) {
  const std::vector<std::uint8_t> command = CommandBytes(dialogue, message);
  MemorySource source(command);
  DataSetReader reader(source, kImplicitLittle);
  while (reader.Next().kind != DataSetEvent::Kind::kEnd) {
    if (reader.depth() == 0 && reader.event().tag == element) {
      return static_cast<std::uint32_t>(reader.event().value_at);
    }
  }
  return 0;
}

const DialogueMessage* MessageOfRecord(const Dialogue& dialogue,
                                       std::uint32_t record) {
  const auto found =
      std::ranges::find(dialogue.messages, record, &DialogueMessage::record);
  return found == dialogue.messages.end() ? nullptr : &*found;
}

// The PDU in which the message of each record begins.
std::vector<std::optional<std::uint32_t>> FirstPdus(
    const Connection& connection) {
  std::vector<std::optional<std::uint32_t>> pdus(connection.messages.size());
  const Dialogue* const dialogue = DialogueOf(connection);
  if (dialogue == nullptr) return pdus;
  for (const DialogueMessage& message : dialogue->messages) {
    if (message.record && *message.record < pdus.size() &&
        !message.pieces.empty()) {
      pdus[*message.record] = message.pieces.front().pdu;
    }
  }
  return pdus;
}

}  // namespace

FindingMarks::FindingMarks(const std::vector<Finding>& findings,
                           std::size_t index, const Connection& connection) {
  std::vector<std::optional<std::uint32_t>> first_pdus;
  for (const Finding& finding : findings) {
    if (std::ranges::find(finding.connections, index) ==
        finding.connections.end()) {
      continue;
    }
    if (first_pdus.empty()) first_pdus = FirstPdus(connection);
    if (finding.connection == index) {
      Mark({index, finding.pdu, finding.message}, finding.severity, first_pdus);
    }
    for (const FindingPlace& place : finding.others) {
      if (place.connection == index) Mark(place, finding.severity, first_pdus);
    }
  }
}

// What is there already is worse.
void FindingMarks::Mark(
    const FindingPlace& place, Severity severity,
    const std::vector<std::optional<std::uint32_t>>& first_pdus) {
  const auto mark = [&](ListKind list, std::uint32_t record) {
    marks_[static_cast<std::size_t>(list)].try_emplace(record, severity);
  };
  auto pdu = place.pdu;
  if (place.message) {
    mark(ListKind::kMessages, *place.message);
    if (*place.message < first_pdus.size()) pdu = first_pdus[*place.message];
  }
  if (pdu) mark(ListKind::kPdus, *pdu);
}

std::optional<Severity> FindingMarks::Of(ListKind list,
                                         std::size_t record) const {
  const Marks& marks = marks_[static_cast<std::size_t>(list)];
  const auto found = marks.find(record);
  if (found == marks.end()) return {};
  return found->second;
}

std::uint32_t ByteOfFinding(const Finding& finding,
                            const Connection& connection) {
  const Dialogue* const dialogue = DialogueOf(connection);
  if (dialogue == nullptr) return 0;
  if (!finding.message && finding.pdu && finding.context &&
      *finding.pdu < dialogue->pdus.size()) {
    return ByteOfContext(*dialogue, *finding.pdu, *finding.context);
  }
  const auto place = std::ranges::find_if(kPlaces, [&](const KindPlace& one) {
    return finding.kind->slug.starts_with(one.slug);
  });
  if (place == std::end(kPlaces)) return 0;
  if (!finding.message) return finding.pdu ? place->pdu_byte : 0;
  const DialogueMessage* const message =
      MessageOfRecord(*dialogue, *finding.message);
  if (message == nullptr || place->element == Tag{}) return 0;
  return ByteOfElement(*dialogue, *message, place->element);
}

}  // namespace host
