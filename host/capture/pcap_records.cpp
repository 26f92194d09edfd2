#include "host/capture/pcap_records.h"

#include "host/capture/wire_bytes.h"
#include "host/text/number_text.h"

namespace host {
namespace {

constexpr std::uint32_t kMicroseconds = 0xA1B2C3D4;
constexpr std::uint32_t kNanoseconds = 0xA1B23C4D;
constexpr std::uint32_t kLongHeaders = 0xA1B2CD34;

constexpr std::size_t kFileHeaderBytes = 24;
constexpr std::size_t kFrameHeaderBytes = 16;
constexpr std::uint32_t kLinkTypeMask = 0xFFFF;  // above it: frame check bytes

bool IsOneOfThem(std::uint32_t magic) {
  return magic == kMicroseconds || magic == kNanoseconds ||
         magic == kLongHeaders;
}

std::uint32_t Swapped(std::uint32_t word) {
  return word >> 24 | (word >> 8 & 0xFF00) | (word & 0xFF00) << 8 | word << 24;
}

}  // namespace

bool PcapRecords::IsMagic(std::uint32_t magic) {
  return IsOneOfThem(magic) || IsOneOfThem(Swapped(magic));
}

PcapRecords::PcapRecords(FileBytes& file)
    : FrameRecords(file, kFrameHeaderBytes) {
  const auto bytes = file.Ahead(0, kFileHeaderBytes);
  if (!IsOneOfThem(WireReader(bytes).Word32())) order_ = std::endian::little;
  WireReader in(bytes, order_);
  const std::uint32_t magic = in.Word32();
  in.Skip(16);  // version, time zone, accuracy, snap length
  const std::uint32_t link = in.Word32();
  if (!in.ok()) throw IncompleteFile("the file ends inside its header");
  if (magic == kNanoseconds) nanoseconds_per_unit_ = 1;
  if (magic == kLongHeaders) header_bytes_ = 24;
  link_type_ = record_.link_type = static_cast<int>(link & kLinkTypeMask);
  at_ = kFileHeaderBytes;
}

std::uint64_t PcapRecords::LengthOf(
    std::span<const std::uint8_t> header) const {
  WireReader in(header, order_);
  in.Skip(8);  // time
  return std::uint64_t{header_bytes_} + in.Word32();
}

FrameRecords::Next PcapRecords::Read() {
  const auto header = file_.Ahead(at_, header_bytes_);
  if (header.empty()) return Next::kEnd;
  if (header.size() < header_bytes_) return Cut("a frame's header is cut");
  WireReader in(header, order_);
  // Seconds are unsigned in capture files.
  const Nanoseconds seconds{in.Word32()};
  record_.time = seconds * 1'000'000'000 + in.Word32() * nanoseconds_per_unit_;
  const std::uint32_t captured = in.Word32();
  const std::uint32_t wire_length = in.Word32();
  if (captured > kMostFrameBytes) {
    return Damaged("a frame of " + NumberText(captured) + " bytes");
  }
  const std::size_t whole = std::size_t{header_bytes_} + captured;
  const auto record = file_.Ahead(at_, whole);
  if (record.size() < whole) return Cut("a frame is cut");
  const std::uint64_t offset = at_ + header_bytes_;
  at_ += whole;
  return Deliver(record.subspan(header_bytes_, captured), offset, wire_length);
}

}  // namespace host
