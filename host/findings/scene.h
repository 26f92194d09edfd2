#ifndef HOST_FINDINGS_SCENE_H_
#define HOST_FINDINGS_SCENE_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/dialogue/dialogue.h"
#include "host/streams/connection.h"

namespace host {

// What the reading of the file says of the whole capture.
struct CaptureCondition {
  std::string damage;  // one sentence; empty if it is whole
};

// One connection, as rules look at it.
struct SceneConnection {
  std::size_t index = 0;  // in the whole capture
  const Connection* connection = nullptr;
  const Dialogue* dialogue = nullptr;  // null when there is none
  // The direction of the side that opened the connection, as far as is known.
  std::uint32_t client = 0;
  // It carries DICOM, or was meant to: it goes where DICOM is spoken.
  bool concerns_dicom = false;

  const SideFacts& Facts(std::uint32_t direction) const {
    return connection->transport.sides[direction];
  }
  // "192.0.2.1:104".
  const std::string& Address(std::uint32_t direction) const;
  // From the connection's first packet on, by the clock that never goes back.
  Nanoseconds Since(const FrameMark& mark) const {
    return connection->transfer.TimeOf(mark.frame, mark.time) -
           connection->first_time;
  }
  // Bytes of one direction are missing in the capture, so that nothing can be
  // concluded from what is not there.
  bool LacksBytes(std::uint32_t direction) const;
};

// All connections of a capture, and what has to be known of the others to judge
// one. Everything that it is made from outlives it.
class Scene {
 public:
  Scene(const std::vector<const Connection*>& connections,
        CaptureCondition condition);

  const std::vector<SceneConnection>& connections() const {
    return connections_;
  }
  // By its index in the whole capture; null for one of another part.
  const SceneConnection* Find(std::size_t index) const;
  const CaptureCondition& condition() const { return condition_; }
  Nanoseconds end() const { return end_; }  // of the last packet
  // What the capture's frames are called.
  const FrameNames& names() const;

  // An association that an acceptor has accepted.
  struct Accepted {
    std::size_t connection = 0;  // index
    const Association* association = nullptr;
  };
  // Those of the acceptor at this address, in their order; at most
  // kAcceptedKept.
  const std::vector<Accepted>& AcceptedAt(const std::string& address) const;

  // The first connection that was asked for in this time and was refused or
  // not answered; null without one.
  const SceneConnection* FailedBetween(Nanoseconds from, Nanoseconds to) const;

 private:
  static constexpr std::size_t kAcceptedKept = 50;

  void FindServers();

  std::vector<SceneConnection> connections_;
  CaptureCondition condition_;
  Nanoseconds end_ = 0;
  std::map<std::string, std::vector<Accepted>> accepted_;
  std::map<Nanoseconds, std::size_t> failed_;  // by the time of the SYN
};

// "requestor STORESCU (192.0.2.2:41522)" where the association says it, else
// "client 192.0.2.2:41522". `association` may be null.
std::string PeerText(const SceneConnection& at, std::uint32_t direction,
                     const Association* association);

// The frames, and their times as captured, with which the first and the last
// PDU of a message, or a PDU, were there.
FrameMark BeginOf(const Dialogue& dialogue, const DialogueMessage& message);
FrameMark EndOf(const DialogueMessage& message);
FrameMark MarkOf(const WirePlace& place);

// Whether bytes are missing in this PDU or before it: they read as zero, and
// are nobody's fault.
bool FollowsLoss(const Dialogue& dialogue, const WirePlace& place);
// Whether all bytes of this PDU are there, so that what is read of it is what
// was said.
bool IsRead(const Dialogue& dialogue, const WirePlace& place);

// How an association, or a connection, came to its end.
struct Ending {
  enum class Kind {
    kReleased,
    kRejected,
    kAborted,
    kReset,   // RST
    kClosed,  // FIN
    kNone,    // the capture does not show any
  };
  Kind kind = Kind::kNone;
  std::uint32_t direction = 0;  // who did it; of kReleased, who asked
  std::uint32_t frame = 0;
  std::optional<std::uint32_t> pdu;
  Nanoseconds time = 0;
  // How long nothing had been sent before it by either side.
  Nanoseconds silence = 0;
};
Ending EndingOf(const SceneConnection& at, const Association& association);
// By FIN or RST only.
Ending ClosingOf(const SceneConnection& at);
// What its actor did: "aborted the association (by its service provider:
// unexpected PDU)", "closed the connection (FIN)".
// "the service user, its application": which part of a side aborts.
std::string AborterText(std::uint8_t source);
std::string EndingText(const Ending& ending, const Association& association);

// "C-STORE" of a request or an answer.
std::string CommandText(std::uint16_t command_field);
// With its article: "a C-STORE", "an N-GET".
std::string OneCommandText(const std::string& command);
// "the pending answers of C-MOVE: the destination DEST may be slow as well", of
// a request with sub-operations. Throws Failure when it cannot be read again.
std::string SubOperationsText(const Dialogue& dialogue, std::uint32_t request);
// "0.8 ms", "41 ms", "1.25 s", "300 s".
std::string DurationText(Nanoseconds duration);
// ", likely a time-out of 30 s" for round ones, else nothing.
std::string TimeoutText(Nanoseconds duration);
// Of a toolkit: ", DCMTK 3.6.7" behind a side's name, else nothing.
std::string ToolkitOf(const Association& association, std::uint32_t direction);

}  // namespace host

#endif  // HOST_FINDINGS_SCENE_H_
