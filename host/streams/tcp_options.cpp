#include "host/streams/tcp_options.h"

#include <algorithm>

#include "host/capture/wire_bytes.h"

namespace host {
namespace {

constexpr std::uint8_t kEnd = 0, kNothing = 1, kMaximum = 2, kScale = 3,
                       kSelective = 5, kTimestamps = 8;

}  // namespace

TcpOptions ReadTcpOptions(const TcpFrame& frame) {
  TcpOptions options;
  const std::size_t end =
      std::min<std::size_t>(frame.header->length, frame.tcp.size());
  if (end <= kTcpHeaderBytes) return options;
  WireReader in(frame.tcp.subspan(kTcpHeaderBytes, end - kTcpHeaderBytes));
  while (in.ok() && !in.rest().empty()) {
    const std::uint8_t kind = in.Byte();
    if (kind == kEnd) break;
    if (kind == kNothing) continue;
    const std::uint8_t length = in.Byte();
    if (length < 2 || in.rest().size() < length - 2u) break;
    WireReader value(in.rest().first(length - 2u));
    if (kind == kMaximum && length == 4) {
      options.segment_limit = value.Word16();
    } else if (kind == kScale && length == 3) {
      options.window_scale = value.Byte();
    } else if (kind == kTimestamps && length == 10) {
      options.timestamps = true;
    } else if (kind == kSelective && length >= 10) {
      options.selective = value.Word32();
    }
    in.Skip(length - 2u);
  }
  return options;
}

}  // namespace host
