#ifndef HOST_DIALOGUE_DIALOGUE_READER_H_
#define HOST_DIALOGUE_DIALOGUE_READER_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "host/dialogue/dialogue.h"
#include "host/dialogue/message_linker.h"
#include "host/dialogue/message_reader.h"
#include "host/streams/pdu_observer.h"

namespace host {

// Makes a Dialogue of one connection's PDUs. Of the payload only association
// PDUs and command sets are read; data sets stay where they are. Costs a
// constant effort a PDV item and a byte of what is read.
class DialogueReader final : public PduObserver {
 public:
  DialogueReader(const StreamAssembler& zero, const StreamAssembler& one);
  DialogueReader(const DialogueReader&) = delete;
  DialogueReader& operator=(const DialogueReader&) = delete;

  void SeePdu(std::uint32_t direction, const CutPdu& pdu) override;
  void SeeItem(const PdvItem& item, std::optional<std::size_t> record) override;
  void SeeEnd(const PduCutter& zero, const PduCutter& one) override;

  const Dialogue& dialogue() const { return dialogue_; }

 private:
  // What each direction did in the current association.
  struct Turn {
    bool associates = false;  // sent the request or the accept
    bool releases = false;    // asked for the release
    bool is_over = false;     // sent what must be its last PDU
  };

  // Each takes the PDU that was seen last.
  void TakePdu(const CutPdu& pdu);
  void TakeRequest(const CutPdu& pdu);
  void TakeAccept(const CutPdu& pdu);
  void TakeReject(const CutPdu& pdu);
  void TakeAbort(const CutPdu& pdu);
  void TakeRelease(std::optional<WirePlace> Association::*release);
  void CheckLength(const CutPdu& pdu);
  // Looks at what its own direction has sent before: the other one's PDUs may
  // stand in another order in the capture than they were sent.
  void CheckTurn(const CutPdu& pdu);

  // The association that is going on; begins one that the capture does not show
  // the beginning of if there is none.
  Association& Current();
  void BeginAssociation();
  void EndAssociation();
  // An A-ASSOCIATE-AC that stands before its request belongs to it.
  bool WaitsForRequest() const;

  std::vector<std::uint8_t> CopyBody(const CutPdu& pdu, std::size_t most) const;
  WirePlace Place() const;  // of the PDU that was seen last
  void Note(IrregularityKind kind, std::uint64_t expected, std::uint64_t found);
  void NoteAll(std::vector<Irregularity> problems);
  StreamEnd EndOf(std::uint32_t direction, const PduCutter& cutter) const;

  Dialogue dialogue_;
  MessageLinker linker_;
  std::array<MessageReader, 2> readers_;
  std::array<Turn, 2> turns_;
  bool is_going_on_ = false;  // the last association
  bool has_losses_ = false;   // bytes are missing since it began
};

// Makes readers; a capture that is read with it has dialogues.
MakePduObserver ReadDialogues();

}  // namespace host

#endif  // HOST_DIALOGUE_DIALOGUE_READER_H_
