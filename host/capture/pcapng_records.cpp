#include "host/capture/pcapng_records.h"

#include <algorithm>

#include "host/text/number_text.h"

namespace host {
namespace {

constexpr std::uint32_t kSectionHeader = 0x0A0D0D0A;  // in either byte order
constexpr std::uint32_t kInterface = 1;
constexpr std::uint32_t kObsoletePacket = 2;
constexpr std::uint32_t kSimplePacket = 3;
constexpr std::uint32_t kEnhancedPacket = 6;

constexpr std::uint32_t kHeadBytes = 8;        // type and length
constexpr std::uint32_t kLeastBytes = 12;      // with the length once more
constexpr std::uint32_t kMostRead = 1u << 24;  // of blocks that are looked into
constexpr std::uint32_t kMostBytes = 1u << 28;

constexpr std::uint64_t kPerSecond = 1'000'000'000;

bool HoldsFrame(std::uint32_t type) {
  return type == kObsoletePacket || type == kSimplePacket ||
         type == kEnhancedPacket;
}

bool IsLookedInto(std::uint32_t type) {
  return type == kSectionHeader || type == kInterface || HoldsFrame(type);
}

// `count` units of 1/`per_second`, in nanoseconds; without 128-bit numbers, so
// units finer than 2^-32 seconds lose their last bits.
Nanoseconds TimeFrom(std::uint64_t count, std::uint64_t per_second) {
  std::uint64_t seconds = count / per_second;
  std::uint64_t fraction = count % per_second;
  while (per_second > std::uint64_t{1} << 32) {
    per_second >>= 1;
    fraction >>= 1;
  }
  fraction = fraction * kPerSecond / per_second;
  // Seconds are as wide as in pcap files.
  return static_cast<Nanoseconds>(
      static_cast<std::uint32_t>(seconds) * kPerSecond + fraction);
}

// The unit of time that an option's byte stands for: a power of ten or of two.
// 0 when it is finer than can be counted.
std::uint64_t UnitsPerSecond(std::uint8_t resolution) {
  const unsigned exponent = resolution & 0x7Fu;
  if ((resolution & 0x80) != 0) {
    return exponent < 64 ? std::uint64_t{1} << exponent : 0;
  }
  std::uint64_t units = 1;
  for (unsigned i = 0; i < exponent; ++i) units *= 10;
  return exponent < 20 ? units : 0;
}

}  // namespace

bool PcapngRecords::IsMagic(std::uint32_t magic) {
  return magic == kSectionHeader;
}

PcapngRecords::PcapngRecords(FileBytes& file)
    : FrameRecords(file, kLeastBytes) {
  while (interfaces_.empty()) {
    Block block;
    const Next head = ReadHead(block);
    if (head == Next::kEnd || HoldsFrame(block.type)) {
      throw IncompleteFile("no interface is described in it");
    }
    if (head != Next::kFrame || ReadBlock(block) != Next::kEnd) {
      throw IncompleteFile(reason());
    }
  }
  link_type_ = interfaces_.front().link_type;
}

// A section says its byte order behind its length.
std::uint64_t PcapngRecords::LengthOf(
    std::span<const std::uint8_t> header) const {
  const bool is_section = WireReader(header).Word32() == kSectionHeader;
  const bool is_big =
      is_section ? header[kHeadBytes] == 0x1A : order_ == std::endian::big;
  WireReader in(header, is_big ? std::endian::big : std::endian::little);
  in.Skip(4);  // type
  return in.Word32();
}

FrameRecords::Next PcapngRecords::Read() {
  while (true) {
    Block block;
    const Next head = ReadHead(block);
    if (head != Next::kFrame) return head;
    const Next next = ReadBlock(block);
    if (next != Next::kEnd) return next;
  }
}

FrameRecords::Next PcapngRecords::ReadHead(Block& block) {
  const auto head = file_.Ahead(at_, kLeastBytes);
  if (head.empty()) return Next::kEnd;
  if (head.size() < kLeastBytes) return Cut("a block is cut");
  if (WireReader(head).Word32() == kSectionHeader) {
    // By the first byte of the byte order magic, 1A2B3C4Dh.
    order_ = head[kHeadBytes] == 0x1A ? std::endian::big : std::endian::little;
  }
  WireReader in(head, order_);
  block.type = in.Word32();
  block.length = in.Word32();
  const std::uint32_t most = IsLookedInto(block.type) ? kMostRead : kMostBytes;
  if (block.length < kLeastBytes || block.length % 4 != 0 ||
      block.length > most) {
    return Damaged("a block of " + NumberText(block.length) + " bytes");
  }
  return file_.Reaches(at_ + block.length) ? Next::kFrame
                                           : Cut("a block is cut");
}

FrameRecords::Next PcapngRecords::ReadBlock(const Block& block) {
  if (!IsLookedInto(block.type)) {
    at_ += block.length;
    return Next::kEnd;
  }
  block_ = file_.Ahead(at_, block.length);
  if (block_.size() < block.length) return Cut("a block is cut");
  block_ = block_.first(block.length);
  WireReader in(block_.first(block.length - 4), order_);
  in.Skip(kHeadBytes);
  Next next = Next::kEnd;
  switch (block.type) {
    case kSectionHeader:
      next = ReadSection(in);
      break;
    case kInterface:
      next = ReadInterface(in);
      break;
    case kObsoletePacket:
      next = ReadObsolete(in);
      break;
    case kSimplePacket:
      next = ReadSimple(in);
      break;
    case kEnhancedPacket:
      next = ReadEnhanced(in);
      break;
  }
  if (next != Next::kDamaged) at_ += block.length;
  return next;
}

FrameRecords::Next PcapngRecords::ReadSection(WireReader in) {
  constexpr std::uint32_t kByteOrderMagic = 0x1A2B3C4D;
  if (in.Word32() != kByteOrderMagic) {
    return Damaged("a section of an unknown byte order");
  }
  if (const std::uint16_t major = in.Word16(); !in.ok() || major != 1) {
    return Damaged("a section of version " + NumberText(major));
  }
  interfaces_.clear();
  return Next::kEnd;
}

FrameRecords::Next PcapngRecords::ReadInterface(WireReader in) {
  Interface interface;
  interface.link_type = in.Word16();
  in.Skip(2);
  interface.snap_length = in.Word32();
  if (!in.ok()) return Damaged("an interface that is not described");
  ReadOptions(in, interface);
  if (interface.units_per_second == 0) {
    return Damaged("an interface whose unit of time is too small");
  }
  interfaces_.push_back(interface);
  return Next::kEnd;
}

void PcapngRecords::ReadOptions(WireReader in, Interface& interface) const {
  while (in.ok() && !in.rest().empty()) {
    const std::uint16_t code = in.Word16();
    const std::uint16_t length = in.Word16();
    const auto value = in.Bytes(length);
    in.Skip((4 - length % 4u) % 4);
    if (in.ok()) ReadOption(code, value, interface);
  }
}

void PcapngRecords::ReadOption(std::uint16_t code,
                               std::span<const std::uint8_t> value,
                               Interface& interface) const {
  constexpr std::uint16_t kResolution = 9;
  constexpr std::uint16_t kTimeOffset = 14;
  if (code == kResolution && value.size() == 1) {
    interface.units_per_second = UnitsPerSecond(value[0]);
  }
  if (code == kTimeOffset && value.size() == 8) {
    WireReader in(value, order_);
    const std::uint32_t first = in.Word32(), second = in.Word32();
    const bool big = order_ == std::endian::big;
    // Only as many seconds as pcap files can count.
    interface.time_offset = static_cast<Nanoseconds>(
        static_cast<std::int32_t>(big ? second : first) *
        static_cast<Nanoseconds>(kPerSecond));
  }
}

FrameRecords::Next PcapngRecords::ReadEnhanced(WireReader in) {
  const std::uint32_t interface = in.Word32();
  const std::uint64_t high = in.Word32();
  const std::uint64_t time = high << 32 | in.Word32();
  const std::uint32_t captured = in.Word32();
  const std::uint32_t wire_length = in.Word32();
  return TakeFrame(interface, time, captured, wire_length, in);
}

FrameRecords::Next PcapngRecords::ReadObsolete(WireReader in) {
  const std::uint32_t interface = in.Word16();
  in.Skip(2);  // frames that were dropped
  const std::uint64_t high = in.Word32();
  const std::uint64_t time = high << 32 | in.Word32();
  const std::uint32_t captured = in.Word32();
  const std::uint32_t wire_length = in.Word32();
  return TakeFrame(interface, time, captured, wire_length, in);
}

FrameRecords::Next PcapngRecords::ReadSimple(WireReader in) {
  const std::uint32_t wire_length = in.Word32();
  auto captured = std::min<std::uint32_t>(
      wire_length, static_cast<std::uint32_t>(in.rest().size()));
  if (!interfaces_.empty() && interfaces_.front().snap_length != 0) {
    captured = std::min(captured, interfaces_.front().snap_length);
  }
  return TakeFrame(0, 0, captured, wire_length, in);
}

FrameRecords::Next PcapngRecords::TakeFrame(std::uint32_t interface,
                                            std::uint64_t time,
                                            std::uint32_t captured,
                                            std::uint32_t wire_length,
                                            WireReader in) {
  if (interface >= interfaces_.size()) {
    return Damaged("a frame of interface " + NumberText(interface) +
                   ", which is not described");
  }
  const auto bytes = in.Bytes(captured);
  if (!in.ok() || captured > kMostFrameBytes) {
    return Damaged("a frame of " + NumberText(captured) + " bytes");
  }
  const Interface& from = interfaces_[interface];
  record_.link_type = from.link_type;
  record_.time = TimeFrom(time, from.units_per_second) + from.time_offset;
  const auto within = static_cast<std::uint64_t>(bytes.data() - block_.data());
  return Deliver(bytes, at_ + within, wire_length);
}

}  // namespace host
