#ifndef HOST_STREAMS_PDV_CUTTER_H_
#define HOST_STREAMS_PDV_CUTTER_H_

#include <cstdint>
#include <optional>

#include "host/streams/pdu_cutter.h"
#include "host/streams/pdu_header.h"
#include "host/streams/stream_assembler.h"

namespace host {

// A PDV item with all bytes that are handed over together with it.
struct PdvItem {
  StreamPosition begin = 0;     // of these bytes: with the PDU header, if first
  StreamPosition position = 0;  // of the item's header
  StreamPosition end = 0;       // behind these bytes
  PdvHeader header;
  // How many of them follow the item: too few for another item's header.
  std::uint32_t tail = 0;
};

// Cuts a P-DATA-TF PDU into its PDV items, each of whose headers is read here
// and nowhere else on its way. An item that does not end inside the PDU takes
// the rest of it, and so do bytes too few for an item header: in a packet of
// their own they would be taken for one.
//
// An item header that was lost would read as length 0, after which the module
// finds no message any more. Its lost bytes are given the values of a last data
// PDV that reaches to the end of the PDU: then the next message begins where it
// should, and data that goes on after all still counts.
class PdvCutter {
 public:
  // `pdu` was cut from `stream` and is at least as long as both headers.
  PdvCutter(StreamAssembler& stream, const CutPdu& pdu);

  // The next item; none at the end of the PDU.
  std::optional<PdvItem> Next();
  // Whether the items up to now ended where the next or the PDU's end is.
  bool is_exact() const { return is_exact_; }

 private:
  void RepairHeader();

  StreamAssembler& stream_;
  StreamPosition begin_;  // what was not handed over yet
  StreamPosition next_;   // the next item's header
  StreamPosition pdu_end_;
  bool has_lost_bytes_;
  bool is_exact_ = true;
};

}  // namespace host

#endif  // HOST_STREAMS_PDV_CUTTER_H_
