#include "host/streams/pdv_cutter.h"

#include <array>

#include "host/capture/wire_bytes.h"

namespace host {

PdvCutter::PdvCutter(StreamAssembler& stream, const CutPdu& pdu)
    : stream_(stream),
      begin_(pdu.position),
      next_(pdu.position + kPduHeaderBytes),
      pdu_end_(pdu.end()),
      has_lost_bytes_(pdu.lost != 0) {}

std::optional<PdvItem> PdvCutter::Next() {
  if (begin_ == pdu_end_) return {};
  if (has_lost_bytes_) RepairHeader();
  PdvItem item;
  item.begin = begin_;
  item.position = next_;
  item.header = PdvHeaderAt(stream_, next_);
  item.end = next_ + kPdvLengthBytes + StreamPosition{item.header.length};
  if (item.end < next_ + kPdvHeaderBytes || item.end > pdu_end_) {
    is_exact_ = false;
    item.end = pdu_end_;
  } else if (item.end != pdu_end_ && pdu_end_ - item.end < kPdvHeaderBytes) {
    is_exact_ = false;
    item.tail = static_cast<std::uint32_t>(pdu_end_ - item.end);
    item.end = pdu_end_;
  }
  begin_ = next_ = item.end;
  return item;
}

void PdvCutter::RepairHeader() {
  if (stream_.PresentUntil(next_) >= next_ + kPdvHeaderBytes) return;
  constexpr std::uint8_t kContext = 1;
  constexpr std::uint8_t kLastData = 2;
  const StreamPosition rest = pdu_end_ - next_ - kPdvLengthBytes;
  // What is left of the length may say that the item is shorter than that.
  const std::uint32_t left = PdvHeaderAt(stream_, next_).length;
  const bool is_shorter = left >= 2 && left <= rest;
  std::array<std::uint8_t, kPdvHeaderBytes> header;
  WireWriter out(header);
  out.Word32(is_shorter ? 0 : static_cast<std::uint32_t>(rest));
  out.Byte(kContext);
  out.Byte(kLastData);
  stream_.Substitute(next_, header);
}

}  // namespace host
