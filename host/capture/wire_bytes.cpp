#include "host/capture/wire_bytes.h"

namespace host {

std::span<const std::uint8_t> WireReader::Bytes(std::size_t count) {
  ok_ = ok_ && count <= rest_.size();
  if (!ok_) return {};
  const auto taken = rest_.first(count);
  rest_ = rest_.subspan(count);
  return taken;
}

std::uint32_t WireReader::Number(std::size_t width) {
  std::uint32_t value = 0;
  const auto bytes = Bytes(width);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const bool from_front = order_ == std::endian::big;
    value = value << 8 | bytes[from_front ? i : bytes.size() - 1 - i];
  }
  return value;
}

void WireWriter::Number(std::uint32_t value, std::size_t width) {
  if (width > rest_.size()) return;
  for (std::size_t i = width; i > 0; --i, value >>= 8) {
    rest_[i - 1] = static_cast<std::uint8_t>(value);
  }
  rest_ = rest_.subspan(width);
}

}  // namespace host
