#ifndef HOST_DIALOGUE_MESSAGE_READER_H_
#define HOST_DIALOGUE_MESSAGE_READER_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/dialogue/dialogue.h"
#include "host/streams/pdu_header.h"

namespace host {

// A PDV item as its value's reader gets it.
struct ReadItem {
  PdvHeader header;
  PdvPiece value;
  std::uint32_t association = 0;
};

// Notes an irregularity: in the dialogue while there are few of its kind, else
// in its count only.
void NoteIrregularity(Irregularity irregularity, Dialogue& dialogue);

// Puts the fragments of one direction's messages together. A command fragment
// begins a message, or goes on with one whose command set has not ended; a data
// fragment belongs to the message before it.
class MessageReader {
 public:
  // Completes messages in `dialogue`, which the other direction's reader
  // shares.
  MessageReader(std::uint32_t direction, Dialogue& dialogue)
      : direction_(direction), dialogue_(dialogue) {}

  // The next item. Answers the message whose command set it has completed.
  std::optional<std::uint32_t> Read(const ReadItem& item);
  // Bytes are missing before what comes next, or in it: until the next message
  // begins, nothing is held against the sender.
  void ForgetStep();
  // An association begins here, so that no message goes on behind it, and none
  // was missed.
  void BeginAssociation();

 private:
  enum class Stage { kNone, kCommand, kBeforeData, kData };

  void BeginMessage(const ReadItem& item);
  // Looks at how a fragment follows the one before it, before it is taken.
  void CheckOrder(const ReadItem& item);
  void AddPiece(const ReadItem& item);
  void NoteUnfinished(const ReadItem& next);
  void Note(IrregularityKind kind, const ReadItem& item, std::uint64_t expected,
            std::uint64_t found);
  DialogueMessage& Open() { return dialogue_.messages[*open_]; }

  const std::uint32_t direction_;
  Dialogue& dialogue_;
  std::optional<std::uint32_t> open_;  // the message that fragments go to
  Stage stage_ = Stage::kNone;         // what of it came
  bool in_step_ = false;
};

}  // namespace host

#endif  // HOST_DIALOGUE_MESSAGE_READER_H_
