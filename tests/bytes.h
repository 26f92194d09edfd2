#ifndef TESTS_BYTES_H_
#define TESTS_BYTES_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Builders of what goes over the wire, shared by all tests. Each computes its
// length field once; a test that needs a wrong one overwrites it with
// Patched().
namespace dicom::testing {

struct Bytes : std::vector<std::uint8_t> {
  using std::vector<std::uint8_t>::vector;

  Bytes& operator+=(const Bytes& more) {
    insert(end(), more.begin(), more.end());
    return *this;
  }
  friend Bytes operator+(Bytes first, const Bytes& second) {
    return first += second;
  }

  std::uint32_t Length() const { return static_cast<std::uint32_t>(size()); }
  Bytes First(std::size_t count) const { return Part(0, count); }
  Bytes From(std::size_t offset) const { return Part(offset, size()); }
  // At most `count` bytes at `offset`, fewer at the end.
  Bytes Part(std::size_t offset, std::size_t count) const;
  // A copy in which the bytes at `offset` are `replacement`.
  Bytes Patched(std::size_t offset, const Bytes& replacement) const;
};

Bytes Big16(std::uint32_t value);
Bytes Big32(std::uint32_t value);
Bytes Little16(std::uint32_t value);
Bytes Little32(std::uint32_t value);
inline Bytes Text(std::string_view text) {
  return Bytes(text.begin(), text.end());
}
// `text`, filled up with blanks to `size` bytes.
Bytes Padded(std::string_view text, std::size_t size);
// `text`, with a zero byte behind it when its length is odd.
Bytes Uid(std::string_view text);
inline Bytes Repeat(std::uint8_t byte, std::size_t count) {
  return Bytes(count, byte);
}

// Upper Layer.
inline Bytes Pdu(std::uint8_t type, const Bytes& body) {
  return Bytes{type, 0} + Big32(body.Length()) + body;
}
// Also a sub-item: type, zero byte, 16-bit length, body.
inline Bytes Item(std::uint8_t type, const Bytes& body) {
  return Bytes{type, 0} + Big16(body.Length()) + body;
}
// The whole A-ASSOCIATE PDU around its items: version 1, "CALLED" and "CALLING"
// as titles.
Bytes AssociateRequest(const Bytes& items);
Bytes AssociateAccept(const Bytes& items);
// The items 20h and 21h.
Bytes ProposedContext(std::uint8_t id, std::string_view abstract_syntax,
                      const std::vector<std::string_view>& transfer_syntaxes);
Bytes AnsweredContext(std::uint8_t id, std::uint8_t result,
                      std::string_view transfer_syntax);
inline Bytes ReleaseRequest() { return Pdu(5, Big32(0)); }
inline Bytes ReleaseReply() { return Pdu(6, Big32(0)); }
inline Bytes Abort(std::uint8_t source, std::uint8_t reason) {
  return Pdu(7, {0, 0, source, reason});
}

// DIMSE.
enum PdvControl : std::uint8_t {
  kData = 0,
  kCommand = 1,
  kLastData = 2,
  kLastCommand = 3,
};
inline Bytes Pdv(std::uint8_t context_id, std::uint8_t control,
                 const Bytes& value) {
  return Big32(value.Length() + 2) + Bytes{context_id, control} + value;
}
// The P-DATA-TF PDU around PDVs.
inline Bytes PData(const Bytes& pdvs) { return Pdu(4, pdvs); }
Bytes ImplicitElement(std::uint16_t group, std::uint16_t element,
                      const Bytes& value);
// Long form for OB, OW and SQ, as the decoders of this module read it.
Bytes ExplicitElement(std::uint16_t group, std::uint16_t element,
                      std::string_view vr, const Bytes& value,
                      bool big_endian = false);
// `elements` with the element (0000,0000), their length, before them.
Bytes CommandSet(const Bytes& elements);
// The elements (0000,0100) and (0000,0110) or (0000,0120) alone, as a set.
Bytes Command(std::uint16_t command_field, std::uint16_t message_id);

// TCP.
enum TcpFlags : std::uint8_t {
  kFin = 1,
  kSyn = 2,
  kRst = 4,
  kPsh = 8,
  kAck = 16
};
struct TcpFields {
  std::uint32_t sequence = 0;
  std::uint32_t acknowledgement = 0;
  std::uint8_t flags = kAck;
  std::uint8_t header_words = 5;  // the data offset; options are zero bytes
};
Bytes TcpSegmentBytes(const TcpFields& fields, const Bytes& payload = {});

// One packet as the host delivers it.
struct CapturedPacket {
  std::uint32_t direction;
  Bytes tcp_bytes;
};

// Makes a connection's packets with right numbers: what each side sends is
// acknowledged by the other side's next packet.
class Conversation {
 public:
  // Initial sequence numbers of the two sides.
  explicit Conversation(std::uint32_t zero_side = 1000,
                        std::uint32_t other_side = 5000)
      : next_{zero_side, other_side} {}

  // SYN from `opener`, SYN and ACK, ACK.
  Conversation& Open(std::uint32_t opener = 0);
  // One segment with payload.
  Conversation& Send(std::uint32_t direction, const Bytes& payload) {
    return Add(direction, kAck | kPsh, payload);
  }
  // A bare acknowledgement: what the other side sent is settled by it.
  Conversation& Acknowledge(std::uint32_t direction) {
    return Add(direction, kAck, {});
  }
  // FIN from both sides, each acknowledged.
  Conversation& Close();
  // Any other segment.
  Conversation& Add(std::uint32_t direction, std::uint8_t flags,
                    const Bytes& payload = {});

  const std::vector<CapturedPacket>& Packets() const { return packets_; }
  std::vector<CapturedPacket>& Packets() { return packets_; }
  std::uint32_t Sequence(std::uint32_t direction) const {
    return next_[direction != 0];
  }

 private:
  std::uint32_t next_[2];  // each side's next sequence number
  std::vector<CapturedPacket> packets_;
};

}  // namespace dicom::testing

#endif  // TESTS_BYTES_H_
