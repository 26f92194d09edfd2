#ifndef HOST_DIALOGUE_OUTCOME_H_
#define HOST_DIALOGUE_OUTCOME_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/dialogue/dialogue.h"

namespace host {

// What became of a PDU or a message, as people want to read it.

// How a status stands to success, DICOM PS3.7 annex C.
enum class StatusClass { kSuccess, kPending, kCancel, kWarning, kFailure };

struct StatusText {
  StatusClass status_class = StatusClass::kFailure;
  // "Refused: Out of resources"; of a status that the standard does not list
  // for the service, "a failure (not in the standard)".
  std::string text;
  bool is_listed = false;
};

// Of a status in an answer of this command for this SOP class.
StatusText ExplainStatus(std::uint16_t status, std::uint16_t command_field,
                         std::string_view sop_class);

// "A700h Refused: Out of resources".
std::string StatusWithText(std::uint16_t status, std::uint16_t command_field,
                           std::string_view sop_class);

// "permanent", "transient", "result 7".
std::string RejectResultText(std::uint8_t result);
// "called AE title not recognized", with its source.
std::string RejectReasonText(std::uint8_t source, std::uint8_t reason);
std::string RejectSourceText(std::uint8_t source);
// "the service user", "the service provider".
std::string AbortSourceText(std::uint8_t source);
// "unexpected PDU"; empty where the reason means nothing.
std::string AbortReasonText(std::uint8_t source, std::uint8_t reason);
// "accepted", "abstract syntax not supported".
std::string ContextResultText(std::uint8_t result);

// The registered name of a UID, or the UID itself.
std::string UidText(std::string_view uid);

// "DCMTK 3.6.7" from what a side says of its implementation; empty when the
// toolkit is not known.
std::string ToolkitText(std::string_view implementation_class_uid,
                        std::string_view implementation_version);

// "offending element (0010,0020) Patient ID"; empty without any.
std::string OffendingElementsText(const std::vector<Tag>& tags);
// "12 done, 3 failed, 0 warnings": what is told of them.
std::string SubOperationsText(const SubOperations& operations);

// One line; empty when there is nothing to say. `index` of the dialogue.
std::string PduOutcome(const Dialogue& dialogue, std::uint32_t index);
std::string MessageOutcome(const Dialogue& dialogue, std::uint32_t index);

}  // namespace host

#endif  // HOST_DIALOGUE_OUTCOME_H_
