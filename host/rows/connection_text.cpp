#include "host/rows/connection_text.h"

#include "host/text/number_text.h"
#include "host/text/text_encoding.h"
#include "host/text/time_text.h"

namespace host {
namespace {

std::string ContentsText(const Connection& connection) {
  std::string text;
  if (!connection.carries_dicom) {
    text = "no DICOM, ";
  } else if (!connection.pdus.empty()) {
    text = CountText(connection.pdus.size(), "PDU, ", "PDUs, ") +
           CountText(connection.messages.size(), "message, ", "messages, ");
  }
  return text + BytesText(connection.payload_bytes);
}

}  // namespace

std::string TitlesText(const AeTitles& titles) {
  const std::string calling = PrintableFromCodePage1252(titles.calling);
  const std::string called = PrintableFromCodePage1252(titles.called);
  return titles.caller_direction == 0 ? calling + " --> " + called
                                      : called + " <-- " + calling;
}

ConnectionColumns ConnectionTexts(std::size_t index,
                                  const Connection& connection,
                                  const std::optional<AeTitles>& titles) {
  return {std::to_string(index + 1),
          connection.first_endpoint + " --> " + connection.second_endpoint,
          titles ? TitlesText(*titles) : std::string(),
          ContentsText(connection),
          Seconds(connection.last_time - connection.first_time, 3) + " s"};
}

}  // namespace host
