#ifndef HOST_STREAMS_CLEAN_CONNECTION_H_
#define HOST_STREAMS_CLEAN_CONNECTION_H_

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/streams/clean_feed.h"
#include "host/streams/connection_builder.h"
#include "host/streams/loss_notes.h"
#include "host/streams/message_follower.h"
#include "host/streams/pdu_cutter.h"
#include "host/streams/pdu_observer.h"

namespace host {

// Hands a connection over as clean streams: the PDUs of both directions in the
// order in which they were complete, each once and whole, whatever TCP made of
// them on the way.
class CleanConnection final : public ConnectionBuilder {
 public:
  // The payload is in `store`. Unless it is empty, `observe` makes the
  // connection's observer.
  CleanConnection(const std::shared_ptr<ByteStore>& store,
                  const MakePduObserver& observe);

  // A SYN whose number does not fit to what its direction began with, or the
  // SYN of a direction that has sent nothing while the other has.
  bool BeginsAnother(const TcpFrame& frame,
                     std::uint32_t direction) const override;
  // A connection that was closed or reset is over when nothing has come for a
  // second.
  Standing Update(Clock::time_point now) override;
  void Finish() override;

 protected:
  void AddSegment(const TcpFrame& frame, std::uint32_t direction) override;

 private:
  // One direction: where its bytes are, and what became of them.
  struct Side {
    Side(std::uint32_t direction, StreamAssembler& bytes,
         std::vector<WireRecord>& messages)
        : stream(bytes), cutter(bytes), follower(direction, bytes, messages) {}

    StreamAssembler& stream;
    PduCutter cutter;
    MessageFollower follower;
    LossNotes losses;
    bool fin_seen = false;
    // Bytes before this position that are missing are lost: the other side has
    // acknowledged later ones and enough packets have passed since.
    StreamPosition final_until = 0;
    std::optional<StreamPosition> acknowledged;  // becomes final_until later
    std::uint64_t acknowledged_at = 0;  // packets of the connection then
  };

  // Told beside the rows, since no RST is handed over.
  struct Reset {
    std::uint32_t direction;
    std::uint32_t frame;
  };

  using CutPdus = std::array<std::vector<CutPdu>, 2>;  // of both directions

  // A SYN says where the direction begins, and who opened the connection.
  void NoteSyn(const TcpHeader& header, std::uint32_t direction);
  // The sender of bytes in `direction` got an acknowledgement for them: what is
  // missing before `number` is lost, unless it comes within the next packets.
  void NoteAcknowledgement(std::uint32_t direction, std::uint32_t number);
  void AddPayload(const TcpFrame& frame, std::uint32_t direction);
  void AddParts(const TcpFrame& frame, std::uint32_t sequence,
                StreamAssembler& stream);
  // Cuts what can be cut in both directions and reports it in the order in
  // which it was complete. `over`: nothing will follow.
  void Cut(bool over);
  // Reports the handshake, unless it was. `pdus` are the first of all.
  void OpenFeed(const CutPdus& pdus);
  // The side that opens the connection: the one whose SYN was captured, else
  // the one that asks for the association.
  std::uint32_t SynDirection(const CutPdus& pdus) const;
  // Hands the PDU over and adds its record.
  void ReportPdu(std::uint32_t direction, const CutPdu& pdu);
  // Adds the PDU's packets to the feed, PDV item by PDV item, each of which the
  // direction's follower sees, and answers what became of it.
  PduFate HandOverPdu(std::uint32_t direction, const CutPdu& pdu);
  // Completes the facts about one side by what its stream shows.
  void NoteStream(std::uint32_t direction);
  // What is missing between bytes of different files.
  void NoteFileGaps(const StreamAssembler& stream);
  // Lets the direction's follower see the packets of an item of the PDU, and
  // the observer the item.
  void FollowItem(Side& side, const PacketRun& run, const PdvItem& item,
                  const CutPdu& pdu);
  // Writes the notes anew, with all that is known by now.
  void Describe();
  const std::string& EndpointOf(std::uint32_t direction) const;

  CleanFeed* feed_;  // owned by the connection; its streams are the sides'
  std::array<Side, 2> sides_;
  std::array<std::uint16_t, 2> ports_{};
  std::optional<std::uint32_t> syn_direction_;
  std::optional<Reset> reset_;  // the first RST
  bool finished_ = false;
  std::uint64_t packets_at_update_ = 0;
  Clock::time_point quiet_since_;  // that many packets were first seen then
};

}  // namespace host

#endif  // HOST_STREAMS_CLEAN_CONNECTION_H_
