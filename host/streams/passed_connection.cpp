#include "host/streams/passed_connection.h"

namespace host {

bool PassedConnection::BeginsAnother(const TcpFrame& frame,
                                     std::uint32_t direction) const {
  if (!frame.header || !frame.header->Has(kSyn)) return false;
  const Side& own = sides_[direction];
  const Side& other = sides_[1 - direction];
  if (!is_clean_) {
    const bool closed = reset_ || (own.fin_seen && other.fin_seen);
    const bool is_same = own.syn_seen && own.syn == frame.header->sequence;
    return closed && !is_same;
  }
  return BeginsAnotherStream(*frame.header, own.numbers.beginning_number(),
                             other.has_payload);
}

void PassedConnection::Add(const TcpFrame& frame, std::uint32_t direction) {
  if (!frame.header) return;
  const TcpHeader& header = *frame.header;
  Side& side = sides_[direction];
  const bool is_syn = header.Has(kSyn);
  if (is_syn) {
    side.numbers.Begin(header.sequence + 1);
    side.syn_seen = true;
    side.syn = header.sequence;
  }
  side.fin_seen |= header.Has(kFin);
  reset_ |= header.Has(kRst);
  const auto payload = frame.Payload();
  if (!payload || header.Has(kRst)) return;
  const std::uint32_t sequence = header.sequence + (is_syn ? 1 : 0);
  const std::uint32_t wire_length = frame.wire_length - header.length;
  side.has_payload |=
      side.numbers.Add(sequence, payload->size(), wire_length).has_value();
  if (header.Has(kFin)) side.numbers.Close(sequence + wire_length);
}

}  // namespace host
