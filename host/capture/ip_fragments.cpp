#include "host/capture/ip_fragments.h"

#include <algorithm>

namespace host {
namespace {

constexpr Nanoseconds kPatience = 30'000'000'000;
constexpr std::size_t kMostMemory = std::size_t{16} << 20;
// What the system needs for one entry besides the bytes, about.
constexpr std::size_t kPacketMemory = 400;
constexpr std::size_t kPieceMemory = 250;
constexpr std::size_t kOrderMemory = 64;  // of by_age_, as long as it is there
constexpr std::uint32_t kMostBytes = 65535;  // of a packet

std::uint64_t HashOf(std::span<const std::uint8_t> bytes) {
  std::uint64_t hash = 0xCBF29CE484222325;  // FNV-1a
  for (const std::uint8_t byte : bytes) hash = (hash ^ byte) * 0x100000001B3;
  return hash;
}

}  // namespace

void IpFragments::Charge(std::size_t bytes, Packet& packet) {
  packet.memory += bytes;
  memory_ += bytes;
}

const WholePacket* IpFragments::Add(const IpFragment& fragment,
                                    std::uint32_t frame, Nanoseconds time) {
  clock_ = std::max(clock_, time);
  Age();
  ++left_out_;
  if (fragment.wire_length == 0 || fragment.end() > kMostBytes) return nullptr;
  const Seen seen{fragment.offset, fragment.wire_length,
                  HashOf(fragment.bytes)};
  Packet* const packet = FindPacket(fragment, seen);
  if (packet == nullptr) {
    --left_out_;
    return nullptr;
  }
  ++packet->fragments;
  packet->seen.emplace(seen.offset, seen);
  Charge(kPieceMemory, *packet);
  if (fragment.is_last && !packet->length) SetLength(fragment.end(), *packet);
  Insert(fragment, {0, frame, time}, *packet);
  if (packet->covered != packet->length) return nullptr;
  left_out_ -= packet->fragments;
  Assemble(fragment.packet, *packet);
  return &whole_;
}

IpFragments::Packet* IpFragments::FindPacket(const IpFragment& fragment,
                                             const Seen& seen) {
  auto at = packets_.find(fragment.packet);
  if (at != packets_.end()) {
    const auto known = at->second.seen.find(seen.offset);
    if (known != at->second.seen.end() && known->second == seen) return nullptr;
    if (!at->second.is_whole) return &at->second;
    memory_ -= at->second.memory;  // its name is used again
    packets_.erase(at);
  }
  Packet& packet = packets_[fragment.packet];
  packet.order = begun_++;
  packet.time = clock_;
  by_age_.emplace_back(fragment.packet, packet.order);
  memory_ += kOrderMemory;
  Charge(kPacketMemory, packet);
  return &packet;
}

void IpFragments::SetLength(std::uint32_t length, Packet& packet) {
  packet.length = length;
  auto next = packet.pieces.lower_bound(length);
  while (next != packet.pieces.end()) {
    packet.covered -= next->second.length;
    next = packet.pieces.erase(next);
  }
  if (packet.pieces.empty()) return;
  auto& [begin, piece] = *std::prev(packet.pieces.end());
  const std::uint32_t most = length - begin;
  if (piece.length <= most) return;
  packet.covered -= piece.length - most;
  piece.length = most;
  piece.bytes.resize(std::min<std::size_t>(piece.bytes.size(), most));
}

void IpFragments::Insert(const IpFragment& fragment, const FramePart& from,
                         Packet& packet) {
  const std::uint32_t end =
      std::min(fragment.end(), packet.length.value_or(kMostBytes));
  std::uint32_t at = fragment.offset;
  bool overlaps = false;
  auto next = packet.pieces.upper_bound(at);
  if (next != packet.pieces.begin()) --next;
  while (at < end) {
    while (next != packet.pieces.end() &&
           next->first + next->second.length <= at) {
      ++next;
    }
    const bool is_there = next != packet.pieces.end() && next->first <= at;
    std::uint32_t until = end;
    if (is_there) {
      until = std::min(end, next->first + next->second.length);
      overlaps = true;
    } else {
      if (next != packet.pieces.end()) until = std::min(end, next->first);
      Keep(fragment, at, until, from, packet);
    }
    at = until;
  }
  overlaps_ += overlaps;
}

void IpFragments::Keep(const IpFragment& fragment, std::uint32_t begin,
                       std::uint32_t end, const FramePart& from,
                       Packet& packet) {
  const auto size = static_cast<std::uint32_t>(fragment.bytes.size());
  const std::uint32_t first = std::min(begin - fragment.offset, size);
  const std::uint32_t last = std::min(end - fragment.offset, size);
  const auto bytes = fragment.bytes.subspan(first, last - first);
  Piece& piece = packet.pieces[begin];
  piece.length = end - begin;
  piece.bytes.assign(bytes.begin(), bytes.end());
  piece.from = from;
  packet.covered += piece.length;
  Charge(kPieceMemory + bytes.size(), packet);
}

void IpFragments::Assemble(const IpPacketName& name, Packet& packet) {
  whole_ = {name, {}, *packet.length, {}};
  for (const auto& [offset, piece] : packet.pieces) {
    whole_.bytes.insert(whole_.bytes.end(), piece.bytes.begin(),
                        piece.bytes.end());
    FramePart part = piece.from;
    part.length = static_cast<std::uint32_t>(piece.bytes.size());
    whole_.parts.push_back(part);
    if (piece.bytes.size() < piece.length) break;
  }
  packet.pieces.clear();
  packet.fragments = 0;
  packet.is_whole = true;
  memory_ -= packet.memory;
  packet.memory = 0;
  Charge(kPacketMemory + kPieceMemory * packet.seen.size(), packet);
}

void IpFragments::Age() {
  while (!by_age_.empty()) {
    const auto& [name, order] = by_age_.front();
    const auto at = packets_.find(name);
    const bool is_there = at != packets_.end() && at->second.order == order;
    if (is_there) {
      const bool is_old = clock_ - at->second.time > kPatience;
      if (!is_old && memory_ <= kMostMemory) return;
      memory_ -= at->second.memory;
      packets_.erase(at);
    }
    by_age_.pop_front();
    memory_ -= kOrderMemory;
  }
}

}  // namespace host
