#include "host/streams/captured_connection.h"

#include <algorithm>

#include "host/capture/wire_bytes.h"
#include "host/streams/pdu_header.h"

namespace host {

namespace {

constexpr std::size_t kSequenceAt = 4;  // in a TCP header
constexpr std::size_t kFlagsAt = 13;

}  // namespace

// One packet for the module: a stored segment, or a piece of one that is too
// long, with the segment's header before it.
struct PacketPiece {
  ByteStore::Offset stored = 0;  // the segment, from its TCP header on
  std::uint32_t length = 0;      // of this packet
  std::uint32_t skipped = 0;     // payload bytes of the pieces before it
  std::uint8_t direction = 0;
  bool is_piece = false;
  bool is_last = true;
};

class CapturedFeed final : public PacketFeed {
 public:
  explicit CapturedFeed(std::shared_ptr<ByteStore> store)
      : store_(std::move(store)) {}

  void Add(const TcpFrame& frame, std::uint32_t direction);

  std::uint32_t PacketCount() const override {
    return static_cast<std::uint32_t>(pieces_.size());
  }
  CopiedPacket CopyPacket(std::uint32_t number, PacketRoom room) const override;

 private:
  void AddPieces(const PacketPiece& whole, std::uint32_t header_bytes);

  std::shared_ptr<ByteStore> store_;
  std::vector<PacketPiece> pieces_;
};

void CapturedFeed::Add(const TcpFrame& frame, std::uint32_t direction) {
  PacketPiece whole;
  whole.stored = frame.stored;
  whole.length = static_cast<std::uint32_t>(frame.tcp.size());
  whole.direction = static_cast<std::uint8_t>(direction);
  if (whole.length <= DICOM_PACKET_BYTES) {
    pieces_.push_back(whole);
    return;
  }
  AddPieces(whole, std::max(frame.header->length, kTcpHeaderBytes));
}

void CapturedFeed::AddPieces(const PacketPiece& whole,
                             std::uint32_t header_bytes) {
  const std::uint32_t payload = whole.length - header_bytes;
  const std::uint32_t room = DICOM_PACKET_BYTES - header_bytes;
  for (std::uint32_t done = 0; done < payload; done += room) {
    PacketPiece piece = whole;
    piece.is_piece = true;
    piece.skipped = done;
    piece.length = header_bytes + std::min(room, payload - done);
    piece.is_last = payload - done <= room;
    pieces_.push_back(piece);
  }
}

CopiedPacket CapturedFeed::CopyPacket(std::uint32_t number,
                                      PacketRoom room) const {
  const PacketPiece& piece = pieces_[number];
  if (!piece.is_piece) {
    store_->Copy(piece.stored, room.first(piece.length));
    return {piece.length, piece.direction};
  }
  store_->Copy(piece.stored, room.first<kTcpHeaderBytes>());
  const TcpHeader header = *TcpHeader::Parse(room);
  const std::uint32_t header_bytes = std::max(header.length, kTcpHeaderBytes);
  store_->Copy(piece.stored, room.first(header_bytes));
  store_->Copy(piece.stored + header_bytes + piece.skipped,
               room.subspan(header_bytes, piece.length - header_bytes));
  const bool after_syn = piece.skipped != 0 && header.Has(kSyn);
  WireWriter(room.subspan(kSequenceAt))
      .Word32(header.sequence + piece.skipped + (after_syn ? 1 : 0));
  std::uint8_t& flags = room[kFlagsAt];
  if (piece.skipped != 0) flags &= static_cast<std::uint8_t>(~kSyn);
  if (!piece.is_last) flags &= static_cast<std::uint8_t>(~(kFin | kPush));
  return {piece.length, piece.direction};
}

CapturedConnection::CapturedConnection(std::shared_ptr<ByteStore> store) {
  auto feed = std::make_unique<CapturedFeed>(std::move(store));
  feed_ = feed.get();
  connection_.feed = std::move(feed);
  connection_.live = false;
}

bool CapturedConnection::BeginsAnother(const TcpFrame& frame,
                                       std::uint32_t direction) const {
  const bool closed = reset_ || (fin_seen_[0] && fin_seen_[1]);
  return closed && frame.header && frame.header->Has(kSyn) &&
         syn_[direction] != frame.header->sequence;
}

void CapturedConnection::AddSegment(const TcpFrame& frame,
                                    std::uint32_t direction) {
  feed_->Add(frame, direction);
  if (frame.header) NoteFlags(*frame.header, direction);
  const auto payload = frame.Payload();
  if (!payload || payload->empty()) return;
  connection_.payload_bytes += payload->size();
  if (!payload_seen_[direction]) {
    payload_seen_[direction] = true;
    connection_.carries_dicom |= BeginsLikePdu(*payload);
  }
}

void CapturedConnection::NoteFlags(const TcpHeader& header,
                                   std::uint32_t direction) {
  if (header.Has(kSyn)) syn_[direction] = header.sequence;
  if (header.Has(kFin)) fin_seen_[direction] = true;
  if (header.Has(kRst)) reset_ = true;
}

}  // namespace host
