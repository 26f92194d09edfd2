#ifndef HOST_STREAMS_PDU_OBSERVER_H_
#define HOST_STREAMS_PDU_OBSERVER_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "host/streams/pdu_cutter.h"
#include "host/streams/pdv_cutter.h"
#include "host/streams/stream_assembler.h"

namespace host {

// Sees one connection's PDUs when they have been cut from its clean streams, so
// that they are read while they are at hand and each header once. Belongs to
// its Connection. What it throws ends the reading of the capture.
class PduObserver {
 public:
  virtual ~PduObserver() = default;

  // The next PDU in the order of the connection's records: it gets the next
  // one.
  virtual void SeePdu(std::uint32_t direction, const CutPdu& pdu) = 0;
  // The next item of the P-DATA-TF PDU that was seen last. `record`: the
  // message record that the item has brought the module's row of.
  virtual void SeeItem(const PdvItem& item,
                       std::optional<std::size_t> record) = 0;
  // Nothing follows in either direction; `zero` and `one` have cut them.
  virtual void SeeEnd(const PduCutter& zero, const PduCutter& one) = 0;
};

// Makes the observer of a new connection. Both directions' streams stay where
// they are and outlive it.
using MakePduObserver = std::function<std::unique_ptr<PduObserver>(
    const StreamAssembler& zero, const StreamAssembler& one)>;

}  // namespace host

#endif  // HOST_STREAMS_PDU_OBSERVER_H_
