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
  // Clients count their ports up in steps, often of two: each bit of an end has
  // to reach all bits of the result.
  hash = (hash ^ hash >> 33) * 0xFF51AFD7ED558CCD;
  hash = (hash ^ hash >> 33) * 0xC4CEB9FE1A85EC53;
  hash ^= hash >> 33;
  return static_cast<std::uint32_t>(hash) % count == index;
}

}  // namespace host
