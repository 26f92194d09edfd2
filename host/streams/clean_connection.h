#ifndef HOST_STREAMS_CLEAN_CONNECTION_H_
#define HOST_STREAMS_CLEAN_CONNECTION_H_

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "host/streams/clean_feed.h"
#include "host/streams/connection_builder.h"
#include "host/streams/message_follower.h"
#include "host/streams/pdu_cutter.h"

namespace host {

// Hands a connection over as clean streams: the PDUs of both directions in the
// order in which they were complete, each once and whole, whatever TCP made of
// them on the way.
class CleanConnection final : public ConnectionBuilder {
 public:
  explicit CleanConnection(const std::shared_ptr<ByteStore>& store);

  // A SYN whose number does not fit to what its direction began with, or the
  // SYN of a direction that has sent nothing while the other has.
  bool BeginsAnother(const TcpFrame& frame,
                     std::uint32_t direction) const override;
  bool Update() override;
  void Finish() override;

 protected:
  void AddSegment(const TcpFrame& frame, std::uint32_t direction) override;

 private:
  // One direction: where its bytes are, and what became of them.
  struct Side {
    explicit Side(StreamAssembler& s) : stream(s), cutter(s) {}

    StreamAssembler& stream;
    PduCutter cutter;
    std::vector<CutPdu> pdus;  // cut, not yet reported; empty between calls
    bool fin_seen = false;
    // Bytes before this position that are missing are lost: the other side has
    // acknowledged later ones and enough packets have passed since.
    StreamPosition final_until = 0;
    std::optional<StreamPosition> acknowledged;  // becomes final_until later
    std::uint64_t acknowledged_at = 0;  // packets of the connection then

    std::uint64_t filled = 0;
    std::uint64_t filled_pdus = 0;
    std::uint64_t lost = 0;
    std::uint64_t skipped = 0;
    std::uint64_t left_out = 0;
  };

  // Told beside the rows, since no RST is handed over.
  struct Reset {
    std::uint32_t direction;
    std::uint32_t frame;
  };

  void AddPayload(const TcpFrame& frame, const TcpHeader& header,
                  std::uint32_t direction);
  void NoteAcknowledgement(std::uint32_t direction, std::uint32_t number);
  void Cut(bool over);
  void ReportPdu(std::uint32_t direction, const CutPdu& pdu);
  void Open();
  std::uint32_t SynDirection() const;
  void Describe();
  void DescribeSide(std::uint32_t direction);
  void DescribeEnd(std::uint32_t direction);
  const std::string& EndpointOf(std::uint32_t direction) const;

  CleanFeed* feed_;  // owned by the connection
  std::array<Side, 2> sides_;
  MessageFollower follower_;
  std::array<std::uint16_t, 2> ports_{};
  std::optional<std::uint32_t> syn_direction_;
  std::optional<Reset> reset_;  // the first RST
  bool finished_ = false;
  std::uint64_t packets_at_update_ = 0;
};

}  // namespace host

#endif  // HOST_STREAMS_CLEAN_CONNECTION_H_
