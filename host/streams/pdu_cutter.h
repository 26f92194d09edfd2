#ifndef HOST_STREAMS_PDU_CUTTER_H_
#define HOST_STREAMS_PDU_CUTTER_H_

#include <cstdint>
#include <optional>
#include <vector>

#include "host/streams/pdu_header.h"
#include "host/streams/stream_assembler.h"

namespace host {

// A PDU as it was on the wire. Lengths are in bytes.
struct CutPdu {
  StreamPosition position = 0;
  PduHeader header;
  std::uint64_t lost = 0;         // bytes of it that are filled with zero
  std::uint64_t skipped = 0;      // captured bytes before it that are in no PDU
  std::uint64_t lost_before = 0;  // lost bytes before it that are in no PDU
  FrameRange frames;              // that its own bytes came from
  // The frame with which it and all before it in its direction was there.
  std::uint32_t complete_frame = 0;
  Nanoseconds complete_time = 0;  // of that frame

  std::uint64_t length() const {  // header included
    return std::uint64_t{kPduHeaderBytes} + header.length;
  }
  StreamPosition end() const {
    return position + static_cast<StreamPosition>(length());
  }
};

// Cuts one direction of a connection into PDUs. Bytes are looked at once they
// are there; what is not there holds the cutting up until it is known to be
// lost. The result does not depend on how often Advance() is called, except for
// holes that become final before the end.
//
// In step, the length of one PDU says where the next begins, and only its type
// is asked to be known. Where a header was lost, or the stream is captured from
// its middle on, the next PDU is searched: a start is believed when what
// follows it looks like a chain of PDUs.
class PduCutter {
 public:
  // `stream` stays where it is; what was delivered of it is sealed.
  explicit PduCutter(StreamAssembler& stream) : stream_(stream) {}

  // All PDUs that can be cut now and were not before. Bytes before
  // `final_until` that are missing will never come; `over`: neither will
  // anything behind the end.
  std::vector<CutPdu> Advance(StreamPosition final_until, bool over);

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
  // kWait: what decides is not there yet and may still come.
  enum class Answer { kNo, kYes, kWait };

  // One step on from the cursor in each state; false when there is nothing more
  // to do for now.
  bool Step();
  bool StepInStep();
  bool StepSearching();
  // In step, and the header at the cursor is not there: waits for it, or
  // searches behind what was lost of it.
  bool StepHeaderless();
  // In step, and the PDU at the cursor has holes or ends behind the stream.
  bool StepIncomplete(const PduHeader& header);
  // The stream goes no further for now: false. At its end the PDU at the cursor
  // stays unfinished.
  bool Stop();

  // Reports the PDU at the cursor, of which `lost` bytes are missing, and moves
  // the cursor behind it.
  void Deliver(const PduHeader& header, std::uint64_t lost);
  // Goes on with a search at `from`.
  void Search(StreamPosition from);

  bool Waits(StreamPosition hole) const { return hole >= final_until_; }
  bool HasHeader(StreamPosition at) const;
  StreamPosition PduEnd(StreamPosition at) const;
  // In step everything of a known type is a PDU; behind others, so that the
  // stream is not given up, a short one of any type is, too.
  bool IsTaken(const PduHeader& header) const;

  // Whether the holes in the PDU at the cursor may become zeros: they are
  // final, what follows its end may follow a PDU, and it is not too much for
  // what was captured.
  Answer MayFill(StreamPosition pdu_end);
  // Of the PDU at the cursor.
  std::uint64_t MissingBytes(StreamPosition pdu_end) const;
  // Whether what is at `at` may follow a PDU: a plausible PDU, the end of the
  // stream, or a hole, before which the first byte of a PDU may stand.
  Answer MayFollow(StreamPosition at) const;
  // Whether `at` begins kChainLength plausible PDUs, or as many as there are
  // before a hole or the end; one PDU that is not whole is not enough.
  Answer IsStartOfChain(StreamPosition at) const;
  // Moves the cursor to the first start of a chain before `until`, or to where
  // the window or the search ends: then kNo.
  Answer FindStart(StreamPosition until);
  // Whether the header at `at`, and what is there of the PDU behind it, could
  // be a PDU's: stricter than IsTaken(), since nothing else vouches for it.
  bool IsPlausible(StreamPosition at) const;
  bool HasPlausibleVersion(StreamPosition at) const;
  // Whether the PDV items from `at` on, as far as they are there, are well
  // formed and end where the PDU ends. Looks at the first few only.
  bool HasPlausibleItems(StreamPosition at, StreamPosition pdu_end) const;

  StreamAssembler& stream_;
  State state_ = State::kNotBegun;
  StreamPosition cursor_ = 0;
  StreamPosition checked_until_ = 0;  // the PDU's holes before it are final
  StreamPosition delivered_until_ = 0;
  std::uint64_t pdus_delivered_ = 0;
  std::uint64_t filled_ = 0;
  FrameRange complete_;  // what all delivered PDUs and those before came from
  std::optional<StreamPosition> not_dicom_from_;
  std::optional<StreamPosition> unfinished_;
  // A copy of what the search looks at, from window_begin_ on. It is kept while
  // the search waits, so that each byte is copied once and not at every look.
  std::vector<std::uint8_t> window_;
  StreamPosition window_begin_ = 0;
  // What the Advance() that is running knows, and what it has found.
  StreamPosition final_until_ = 0;
  bool end_is_final_ = false;
  std::vector<CutPdu> found_;
};

}  // namespace host

#endif  // HOST_STREAMS_PDU_CUTTER_H_
