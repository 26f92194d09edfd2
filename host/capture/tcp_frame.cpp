#include "host/capture/tcp_frame.h"

#include "host/capture/wire_bytes.h"

namespace host {

std::optional<TcpHeader> TcpHeader::Parse(std::span<const std::uint8_t> tcp) {
  WireReader in(tcp);
  in.Skip(4);  // ports
  TcpHeader header;
  header.sequence = in.Word32();
  header.acknowledgement = in.Word32();
  header.length = (in.Byte() >> 4) * 4u;
  header.flags = in.Byte();
  if (!in.ok()) return {};
  return header;
}

std::optional<std::span<const std::uint8_t>> TcpFrame::Payload() const {
  if (!header || header->length < kTcpHeaderBytes ||
      header->length > tcp.size()) {
    return {};
  }
  return tcp.subspan(header->length);
}

}  // namespace host
