#include "host/streams/capture_part.h"

#include <algorithm>

namespace host {
namespace {

std::uint64_t Hash(const Endpoint& end, std::uint64_t hash) {
  const auto add = [&hash](std::uint8_t byte) {  // FNV-1a
    hash = (hash ^ byte) * 0x100000001B3;
  };
  add(end.is_ipv6 ? 6 : 4);
  for (const std::uint8_t byte : end.address) add(byte);
  add(static_cast<std::uint8_t>(end.port >> 8));
  add(static_cast<std::uint8_t>(end.port));
  return hash;
}

}  // namespace

bool CapturePart::Holds(const Endpoint& one, const Endpoint& other) const {
  if (count == 1) return true;
  std::uint64_t hash = Hash(std::min(one, other), 0xCBF29CE484222325);
  hash = Hash(std::max(one, other), hash);
  hash ^= hash >> 32;  // the low bits alone know too little of the first bytes
  return static_cast<std::uint32_t>(hash) % count == index;
}

}  // namespace host
