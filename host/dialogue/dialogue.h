#ifndef HOST_DIALOGUE_DIALOGUE_H_
#define HOST_DIALOGUE_DIALOGUE_H_

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/dataset/byte_source.h"
#include "host/dialogue/association.h"
#include "host/dialogue/dialogue_message.h"
#include "host/dialogue/irregularity.h"
#include "host/streams/connection.h"
#include "host/streams/stream_assembler.h"

namespace host {

// A PDU of the dialogue; its index is that of its record in Connection::pdus.
struct DialoguePdu {
  StreamPosition position = 0;  // of its header, in its direction's stream
  Nanoseconds time = 0;         // of last_frame
  std::uint32_t length = 0;     // of what follows the header
  std::uint32_t first_frame = 0;
  std::uint32_t last_frame = 0;
  std::uint8_t type = 0;  // a PduType, or another number
  std::uint8_t direction = 0;
  bool has_lost_bytes = false;      // they read as zero
  bool follows_lost_bytes = false;  // bytes before it are in no PDU
};

// How the stream of one direction ended, for after the end of the connection.
struct StreamEnd {
  // Where it turned out to be no DICOM; nothing was read from there on.
  std::optional<StreamPosition> not_dicom_from;
  // The PDU that the end cuts off: where it begins, its type and length as far
  // as its header came, and how many bytes of it came.
  std::optional<StreamPosition> unfinished_pdu;
  std::uint8_t unfinished_type = 0;       // 0: the header is cut as well
  std::uint32_t unfinished_length = 0;    // of what follows the header
  std::uint64_t unfinished_captured = 0;  // bytes, header included
};

// What the two sides of one connection said to each other, as the host reads it
// itself from the clean streams. Grows while the connection is read; what was
// there stays at its index. A message changes until it is complete and
// answered.
struct Dialogue {
  // In the order in which they were complete on the wire.
  std::vector<DialoguePdu> pdus;
  std::vector<Association> associations;
  // In the order in which their first fragments were complete.
  std::vector<DialogueMessage> messages;
  // In the order of the wire, a bounded number of each kind: the first ones.
  std::vector<Irregularity> irregularities;
  // How many there were of each kind, by its number.
  std::array<std::uint64_t, kIrregularityKinds> irregularity_counts{};
  std::array<StreamEnd, 2> ends;
  bool is_over = false;  // the connection ended, or the capture
  // What the pieces of messages are read from; null in made-up dialogues.
  std::array<const StreamAssembler*, 2> streams{};

  // A message's command set, read again from its pieces. Throws Failure when
  // the bytes cannot be read back.
  CommandSet ReadCommand(const DialogueMessage& message) const;
  // The data set as far as it came, lost bytes being zero; must not outlive the
  // dialogue. Reading throws as ReadCommand().
  std::unique_ptr<ByteSource> DataSetOf(const DialogueMessage& message) const;
  // The abstract syntax's row in the message's negotiation, or null.
  const PresentationContext* ContextOf(const DialogueMessage& message) const;
  // The transfer syntax of its data set; empty when it is not known.
  std::string_view TransferSyntaxOf(const DialogueMessage& message) const;
  WirePlace PlaceOfPdu(std::uint32_t pdu) const;
  // The association that the PDU belongs to; empty when there is none.
  std::optional<std::uint32_t> AssociationOfPdu(std::uint32_t pdu) const;
};

// The dialogue of a connection whose capture was read with ReadDialogues(), see
// dialogue_reader.h; null for others, and where the packets are handed over as
// captured.
const Dialogue* DialogueOf(const Connection& connection);

}  // namespace host

#endif  // HOST_DIALOGUE_DIALOGUE_H_
