#ifndef TRACKING_RECORDS_H_
#define TRACKING_RECORDS_H_

#include <cstdint>
#include <optional>

#include "tracking/packet_span.h"

namespace dicom {

// One entry of the PDU view.
// Deliberate: its second text is always empty, so it is not kept, and its
// length is what was recorded, not what its length field says.
struct PduRecord {
  std::uint32_t pdu_number = 0;    // counted from 1 over both directions
  const char* summary_text = "";   // one of the PDU names
  std::uint32_t total_length = 0;  // bytes recorded so far
  SpanList spans;
  std::uint8_t direction = 0;
};

// One entry of the message view. Spans cover PDV values only, never PDV
// headers.
struct DimseMessageRecord {
  std::uint32_t message_number = 0;  // counted from 1 over both directions
  const char* first_text = "";       // a DIMSE command name, or empty
  std::optional<std::uint16_t> message_id;  // shown as the second text
  std::uint32_t command_length = 0;         // bytes
  std::uint32_t data_length = 0;            // bytes
  SpanList spans;
  std::uint8_t direction = 0;
  std::uint8_t presentation_context_id = 0;
};

}  // namespace dicom

#endif  // TRACKING_RECORDS_H_
