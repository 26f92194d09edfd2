#ifndef HOST_STREAMS_PDU_CUTTER_H_
#define HOST_STREAMS_PDU_CUTTER_H_

#include <cstdint>
#include <optional>
#include <vector>

#include "host/streams/stream_assembler.h"

namespace host {

inline constexpr std::uint32_t kPduHeaderBytes = 6;
inline constexpr std::uint32_t kItemHeaderBytes = 6;  // of a PDV item
inline constexpr std::uint8_t kAssociateRq = 1;       // PDU types
inline constexpr std::uint8_t kAssociateAc = 2;
inline constexpr std::uint8_t kPDataTf = 4;

// A PDU as it was on the wire.
struct CutPdu {
  StreamPosition position = 0;
  std::uint64_t length = 0;  // header included
  std::uint8_t type = 0;
  std::uint64_t lost = 0;         // bytes of it that are filled with zero
  std::uint64_t skipped = 0;      // captured bytes before it that are in no PDU
  std::uint64_t lost_before = 0;  // lost bytes before it that are in no PDU
  FrameRange frames;              // that its own bytes came from
  // The frame with which it and all before it in its direction was there.
  std::uint32_t complete_frame = 0;
};

// Cuts one direction of a connection into PDUs. Bytes are looked at once they
// are there; what is not there holds the cutting up until it is known to be
// lost. The result does not depend on how often Advance() is called, except for
// holes that become final before the end.
class PduCutter {
 public:
  explicit PduCutter(StreamAssembler& stream) : stream_(stream) {}

  // Appends all PDUs that can be cut now. Bytes before `final_until` that are
  // missing will never come; `over`: neither will anything behind the end.
  void Advance(StreamPosition final_until, bool over,
               std::vector<CutPdu>* pdus);

  // Behind the last PDU; begin() of the stream before the first.
  StreamPosition delivered_until() const { return delivered_until_; }
  // Where the stream turned out to be no DICOM; nothing is cut from there on.
  std::optional<StreamPosition> not_dicom_from() const {
    return not_dicom_from_;
  }
  // The PDU that the end of the stream cuts off, for after the last Advance():
  // where it begins. Its header may be cut off as well.
  std::optional<StreamPosition> unfinished() const { return unfinished_; }

 private:
  enum class State { kNotBegun, kInStep, kSearching, kNotDicom };
  enum class Answer { kNo, kYes, kWait };

  bool Step();
  bool StepInStep();
  bool StepSearching();
  bool HeaderInHole();
  bool StepIncomplete(StreamPosition pdu_end);
  void Deliver(StreamPosition pdu_end, std::uint64_t lost);
  void Search(StreamPosition from);
  bool Stop();

  bool Waits(StreamPosition hole) const { return hole >= final_until_; }
  bool HasHeader(StreamPosition at) const;
  bool IsTypeTaken(std::uint8_t type, std::uint32_t length) const;
  Answer MayFill(StreamPosition pdu_end);
  Answer MayFollow(StreamPosition at) const;
  Answer IsStartOfChain(StreamPosition at) const;
  Answer CandidateIn(StreamPosition from, StreamPosition to);
  bool IsPlausible(StreamPosition at) const;
  bool HasPlausibleItems(StreamPosition at, StreamPosition pdu_end) const;
  StreamPosition PduEnd(StreamPosition at) const;

  StreamAssembler& stream_;
  State state_ = State::kNotBegun;
  StreamPosition cursor_ = 0;
  StreamPosition checked_until_ = 0;  // holes of the PDU before it are final
  StreamPosition delivered_until_ = 0;
  std::uint64_t pdus_delivered_ = 0;
  std::uint64_t filled_ = 0;
  std::uint32_t complete_frame_ = 0;
  std::optional<StreamPosition> not_dicom_from_;
  std::optional<StreamPosition> unfinished_;
  // What the Advance() that is running knows.
  StreamPosition final_until_ = 0;
  bool end_is_final_ = false;
  std::vector<CutPdu>* pdus_ = nullptr;
};

}  // namespace host

#endif  // HOST_STREAMS_PDU_CUTTER_H_
