#include "host/streams/message_follower.h"

#include <algorithm>
#include <span>

#include "host/streams/dimse_status.h"
#include "host/streams/loss_notes.h"
#include "host/text/number_text.h"

namespace host {
namespace {

constexpr std::size_t kMostCommandBytes = 1024;  // in which its status stands

}  // namespace

void MessageFollower::Follow(const PacketRun& run, const PdvItem& item,
                             const PduFacts& pdu) {
  item_ = item;
  pdu_ = pdu;
  StreamPosition packet_end = run.position;
  for (StreamPosition at = item.position; at < item.end; at = packet_end) {
    packet_end =
        std::min<StreamPosition>(packet_end + run.packet_bytes, item.end);
    TakePacket(at, packet_end);
  }
}

void MessageFollower::TakePacket(StreamPosition at, StreamPosition end) {
  const StreamPosition packet = at;
  if (missing_ == 0) {
    if (end - at < kPdvHeaderBytes) return;
    TakeHeader(at, packet, end);
    at += kPdvHeaderBytes;
  }
  while (missing_ < end - at) {  // bytes follow the value in this packet
    is_command_ = true;
    const std::uint32_t value = missing_;
    TakeValue(at, value);
    List();
    at += value;
    if (end - at < kPdvHeaderBytes) return;
    TakeHeader(at, packet, end);
    at += kPdvHeaderBytes;
  }
  if (at == end) return;  // so an empty value never ends a message
  TakeValue(at, static_cast<std::uint32_t>(end - at));
  if (missing_ != 0 || !is_last_) return;
  if (is_command_) {
    List();
  } else {
    Complete();
  }
}

PdvHeader MessageFollower::HeaderAt(StreamPosition at) const {
  return at == item_.position ? item_.header : PdvHeaderAt(stream_, at);
}

void MessageFollower::TakeHeader(StreamPosition item, StreamPosition packet,
                                 StreamPosition end) {
  const PdvHeader header = HeaderAt(item);
  is_command_ = header.IsCommand();
  if (is_command_ && is_last_) {
    Retire();
    message_ = Message();
    message_.begun = true;
  } else if (is_command_) {
    NoteSwallowedCommand();
  }
  message_.has_strays |= !is_command_ && message_.complete;
  const std::uint32_t length =
      is_command_ ? HeaderAt(packet).length : header.length;
  missing_ = length - 2;  // below 2 it wraps, as in the module
  is_last_ = header.IsLast();
  message_.complete_time = pdu_.complete_time;
  message_.frames.Include(
      stream_.Frames(item, std::min(end, item + kPdvHeaderBytes)));
}

void MessageFollower::TakeValue(StreamPosition at, std::uint32_t length) {
  (is_command_ ? message_.command_length : message_.data_length) += length;
  if (is_command_) KeepCommand(at, length);
  missing_ -= length;
  message_.complete_time = pdu_.complete_time;
  message_.frames.Include(stream_.Frames(at, at + length));
  if (pdu_.has_lost_bytes) {
    message_.lost += length - stream_.PresentBytes(at, at + length);
  }
}

void MessageFollower::KeepCommand(StreamPosition at, std::uint32_t length) {
  auto& command = message_.command;
  const std::size_t kept = command.size();
  const std::size_t more =
      std::min<std::size_t>(length, kMostCommandBytes - kept);
  command.resize(kept + more);
  stream_.Copy(at, std::span(command).subspan(kept));
}

void MessageFollower::NoteSwallowedCommand() {
  if (!message_.row || message_.data_length == 0 || message_.complete) return;
  if (!message_.goes_on) NoteUncounted();
  message_.goes_on = true;
}

WireRecord MessageFollower::Record() const {
  WireRecord record;
  record.direction = direction_;
  record.length = message_.command_length + message_.data_length;
  record.first_frame = message_.frames.first;
  record.last_frame = message_.frames.last;
  record.time = message_.frames.time;
  record.complete_time = message_.complete_time;
  record.status = FindStatus(message_.command);
  if (record.status) record.note = StatusNote(*record.status);
  if (message_.lost != 0) AppendNote(FilledText(message_.lost), record.note);
  if (message_.goes_on) {
    AppendNote("a later message is counted here and has no row of its own",
               record.note);
  }
  if (message_.has_strays) {
    AppendNote("counts data PDVs that follow without a command set",
               record.note);
  }
  return record;
}

void MessageFollower::List() {
  message_.row = messages_.size();
  messages_.push_back(Record());
}

void MessageFollower::Complete() {
  message_.complete = true;
  if (message_.row) messages_[*message_.row] = Record();
}

void MessageFollower::Retire() {
  if (message_.begun && !message_.row) {
    WireRecord record = Record();
    record.listed = false;
    record.note =
        "a message is not listed: its command set is empty, cut off or ends "
        "with an empty PDV";
    messages_.push_back(record);
  } else if (message_.row && message_.data_length != 0 && !message_.complete &&
             !message_.goes_on) {
    NoteUncounted();
  }
  message_.begun = false;
  message_.row.reset();
}

void MessageFollower::NoteUncounted() {
  AppendNote("the last data PDV is empty or missing: " +
                 BytesText(message_.data_length) +
                 " of the data set are not counted",
             messages_[*message_.row].note);
}

}  // namespace host
