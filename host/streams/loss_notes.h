#ifndef HOST_STREAMS_LOSS_NOTES_H_
#define HOST_STREAMS_LOSS_NOTES_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/streams/pdu_cutter.h"
#include "host/streams/stream_assembler.h"

namespace host {

// What a clean stream says about the bytes that it lacks: notes of rows, whose
// parts stand behind each other, and whole sentences about a connection.

// "1 lost byte was filled with zero", "120 lost bytes were filled with zero".
std::string FilledText(std::uint64_t lost);
// Adds a part to a row's note, behind a semicolon if there is one already.
void AppendNote(std::string_view part, std::string& note);

// How a PDU is handed over to the module.
enum class PduFate {
  kWhole,
  kItemsAreInexact,  // whole, but its PDV items do not fill it exactly
  kLeftOut,          // not at all: it is too short for a PDV item
};

// Counts what one direction of a connection lacks, PDU by PDU.
class LossNotes {
 public:
  // Counts the direction's next PDU and answers the note of its row, which is
  // empty if nothing is wrong with it.
  std::string AddPdu(const CutPdu& pdu, PduFate fate);
  // Appends a sentence for each kind of loss among the PDUs so far. `endpoint`
  // has sent them in `stream`.
  void AppendSentences(const StreamAssembler& stream,
                       const std::string& endpoint,
                       std::vector<std::string>& sentences) const;

 private:
  std::uint64_t filled_ = 0;  // bytes
  std::uint64_t filled_pdus_ = 0;
  std::uint64_t lost_ = 0;      // bytes between PDUs
  std::uint64_t skipped_ = 0;   // bytes
  std::uint64_t left_out_ = 0;  // PDUs
};

// Why nothing is cut behind the last PDU of a stream, in one sentence; empty if
// nothing is there. `finished`: nothing will come any more. Before that only a
// stream that is no DICOM is told.
std::string EndSentence(const StreamAssembler& stream, const PduCutter& cutter,
                        const std::string& endpoint, bool finished);

}  // namespace host

#endif  // HOST_STREAMS_LOSS_NOTES_H_
