#ifndef HOST_DIALOGUE_DIALOGUE_MESSAGE_H_
#define HOST_DIALOGUE_DIALOGUE_MESSAGE_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/dataset/tag.h"
#include "host/streams/stream_assembler.h"

namespace host {

// DIMSE messages as plain data, DICOM PS3.7 section 9 and annex E.

enum CommandField : std::uint16_t {
  kCStoreRq = 0x0001,
  kCGetRq = 0x0010,
  kCFindRq = 0x0020,
  kCMoveRq = 0x0021,
  kCEchoRq = 0x0030,
  kNEventReportRq = 0x0100,
  kNGetRq = 0x0110,
  kNSetRq = 0x0120,
  kNActionRq = 0x0130,
  kNCreateRq = 0x0140,
  kNDeleteRq = 0x0150,
  kCCancelRq = 0x0FFF,
  kAnswerBit = 0x8000,  // of a request's number: its answer
};

// "C-STORE-RQ", "N-ACTION-RSP"; "command 1234h" for what is none.
std::string CommandFieldText(std::uint16_t command_field);

// The value of one PDV item: a fragment of a command set or of a data set.
struct PdvPiece {
  StreamPosition position = 0;  // of the value, behind its message control
  std::uint32_t length = 0;
  std::uint32_t pdu = 0;  // index in Dialogue::pdus
};

struct SubOperations {
  std::optional<std::uint16_t> remaining;
  std::optional<std::uint16_t> completed;
  std::optional<std::uint16_t> failed;
  std::optional<std::uint16_t> warning;
};

// What is kept of every message. The rest of its command set is read again when
// it is asked for: Dialogue::ReadCommand().
struct DialogueMessage {
  std::uint32_t direction = 0;
  std::uint32_t association = 0;   // index in Dialogue::associations
  std::uint8_t context = 0;        // of its first PDV
  bool has_command_field = false;  // false: the command set cannot be read
  // The command set is there up to its last fragment.
  bool command_complete = false;
  // The command set says that a data set follows.
  bool announces_data_set = false;
  // The last fragment of the announced data set came.
  bool data_set_complete = false;
  std::uint16_t command_field = 0;
  // Of a request; of an answer, or of a cancel, the one that it goes with.
  std::optional<std::uint16_t> message_id;
  std::optional<std::uint16_t> status;  // of an answer
  // Affected or Requested SOP Class UID, else that of the request or of the
  // context; it lives as long as the dialogue.
  std::string_view sop_class;
  // Messages of the same association, indices in Dialogue::messages.
  std::optional<std::uint32_t> request;      // of an answer or a cancel
  std::optional<std::uint32_t> last_answer;  // of a request
  std::uint32_t answers = 0;                 // to a request, pending ones too
  // The C-GET that a C-STORE is a sub-operation of.
  std::optional<std::uint32_t> parent;
  // The record in Connection::messages, which is the module's row.
  std::optional<std::uint32_t> record;
  std::uint64_t command_bytes = 0;
  std::uint64_t data_bytes = 0;   // that came
  std::uint32_t data_pieces = 0;  // at the end of `pieces`
  std::uint32_t first_frame = 0;  // 0: nothing of it was captured
  std::uint32_t last_frame = 0;
  Nanoseconds first_time = 0;  // of the first and the last PDU that hold it
  Nanoseconds last_time = 0;
  std::vector<PdvPiece> pieces;  // first those of the command set

  bool IsAnswer() const { return (command_field & kAnswerBit) != 0; }
  // Wants an answer: a request that is no C-CANCEL.
  bool IsRequest() const {
    return has_command_field && !IsAnswer() && command_field != kCCancelRq;
  }
  // All of it came.
  bool IsComplete() const {
    return command_complete && (!announces_data_set || data_set_complete);
  }
};

// A command set, read whole. What it does not hold is empty.
struct CommandSet {
  std::optional<std::uint16_t> command_field;
  std::optional<std::uint16_t> message_id;
  std::optional<std::uint16_t> responded_to;   // Message ID Being Responded To
  std::string sop_class;                       // Affected, else Requested
  std::string sop_instance;                    // Affected, else Requested
  std::optional<std::uint16_t> data_set_type;  // 0101h: no data set
  std::optional<std::uint16_t> status;
  std::string error_comment;  // bytes, mostly ASCII, without blanks around
  std::vector<Tag> offending_elements;
  std::optional<std::uint16_t> error_id;
  std::optional<std::uint16_t> priority;
  std::string move_destination;
  std::string move_originator_title;
  std::optional<std::uint16_t> move_originator_id;
  std::optional<std::uint16_t> event_type;   // of N-EVENT-REPORT
  std::optional<std::uint16_t> action_type;  // of N-ACTION
  SubOperations sub_operations;
  // The bytes end inside an element, or are no command set at all.
  bool is_damaged = false;
};

}  // namespace host

#endif  // HOST_DIALOGUE_DIALOGUE_MESSAGE_H_
