#include "tests/bytes.h"

#include <algorithm>

namespace dicom::testing {
namespace {

Bytes BigEndian(std::uint32_t value, int size) {
  Bytes bytes;
  for (int i = size - 1; i >= 0; --i) {
    bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
  }
  return bytes;
}

Bytes LittleEndian(std::uint32_t value, int size) {
  Bytes bytes = BigEndian(value, size);
  std::reverse(bytes.begin(), bytes.end());
  return bytes;
}

Bytes AssociateBody(const Bytes& items) {
  return Big16(1) + Big16(0) +                           // version, reserved
         Padded("CALLED", 16) + Padded("CALLING", 16) +  // titles
         Repeat(0, 32) + items;
}

}  // namespace

Bytes Bytes::Part(std::size_t offset, std::size_t count) const {
  const std::size_t begin = std::min(offset, size());
  const std::size_t length = std::min(count, size() - begin);
  return Bytes(data() + begin, data() + begin + length);
}

Bytes Bytes::Patched(std::size_t offset, const Bytes& replacement) const {
  Bytes patched = *this;
  std::copy(replacement.begin(), replacement.end(), &patched.at(offset));
  return patched;
}

Bytes Big16(std::uint32_t value) { return BigEndian(value, 2); }
Bytes Big32(std::uint32_t value) { return BigEndian(value, 4); }
Bytes Little16(std::uint32_t value) { return LittleEndian(value, 2); }
Bytes Little32(std::uint32_t value) { return LittleEndian(value, 4); }

Bytes Padded(std::string_view text, std::size_t size) {
  Bytes bytes = Text(text);
  bytes.resize(size, ' ');
  return bytes;
}

Bytes Uid(std::string_view text) {
  Bytes bytes = Text(text);
  if (bytes.size() % 2 != 0) bytes.push_back(0);
  return bytes;
}

Bytes AssociateRequest(const Bytes& items) {
  return Pdu(1, AssociateBody(items));
}

Bytes AssociateAccept(const Bytes& items) {
  return Pdu(2, AssociateBody(items));
}

Bytes ProposedContext(std::uint8_t id, std::string_view abstract_syntax,
                      const std::vector<std::string_view>& transfer_syntaxes) {
  Bytes body = Bytes{id, 0, 0, 0} + Item(0x30, Text(abstract_syntax));
  for (auto syntax : transfer_syntaxes) body += Item(0x40, Text(syntax));
  return Item(0x20, body);
}

Bytes AnsweredContext(std::uint8_t id, std::uint8_t result,
                      std::string_view transfer_syntax) {
  return Item(0x21,
              Bytes{id, 0, result, 0} + Item(0x40, Text(transfer_syntax)));
}

Bytes ImplicitElement(std::uint16_t group, std::uint16_t element,
                      const Bytes& value) {
  return Little16(group) + Little16(element) + Little32(value.Length()) + value;
}

Bytes ExplicitElement(std::uint16_t group, std::uint16_t element,
                      std::string_view vr, const Bytes& value,
                      bool big_endian) {
  const auto word = big_endian ? Big16 : Little16;
  const Bytes head = word(group) + word(element) + Text(vr);
  if (vr != "OB" && vr != "OW" && vr != "SQ") {
    return head + word(value.Length()) + value;
  }
  const auto length = big_endian ? Big32 : Little32;
  return head + Bytes{0, 0} + length(value.Length()) + value;
}

Bytes CommandSet(const Bytes& elements) {
  return ImplicitElement(0, 0, Little32(elements.Length())) + elements;
}

Bytes Command(std::uint16_t command_field, std::uint16_t message_id) {
  // A response names the message that it answers.
  const std::uint16_t id_element = command_field & 0x8000 ? 0x0120 : 0x0110;
  return CommandSet(ImplicitElement(0, 0x0100, Little16(command_field)) +
                    ImplicitElement(0, id_element, Little16(message_id)));
}

Bytes TcpSegmentBytes(const TcpFields& fields, const Bytes& payload) {
  const Bytes options =
      Repeat(0, std::max(fields.header_words, std::uint8_t{5}) * 4u - 20);
  return Big16(40000) + Big16(104) +  // ports
         Big32(fields.sequence) + Big32(fields.acknowledgement) +
         Bytes{static_cast<std::uint8_t>(fields.header_words << 4),
               fields.flags} +
         Big16(8192) + Big16(0) + Big16(0) +  // window, checksum, urgent
         options + payload;
}

Conversation& Conversation::Open(std::uint32_t opener) {
  Add(opener, kSyn);
  Add(opener == 0, kSyn | kAck);
  return Acknowledge(opener);
}

Conversation& Conversation::Close() {
  Add(0, kFin | kAck).Acknowledge(1);
  return Add(1, kFin | kAck).Acknowledge(0);
}

Conversation& Conversation::Add(std::uint32_t direction, std::uint8_t flags,
                                const Bytes& payload) {
  const int side = direction != 0;
  // A SYN alone is the one segment that acknowledges nothing.
  packets_.push_back(
      {direction, TcpSegmentBytes(
                      {next_[side], flags == kSyn ? 0 : next_[1 - side], flags},
                      payload)});
  next_[side] += payload.Length() + ((flags & (kSyn | kFin)) != 0);
  return *this;
}

}  // namespace dicom::testing
