#include "host/capture/frame_records.h"

#include <utility>

#include "host/capture/pcap_records.h"
#include "host/capture/pcapng_records.h"
#include "host/capture/wire_bytes.h"

namespace host {

FrameRecords::Next FrameRecords::Cut(const char* reason) {
  reason_ = reason;
  return Next::kCut;
}

FrameRecords::Next FrameRecords::Damaged(std::string reason) {
  reason_ = std::move(reason);
  return Next::kDamaged;
}

FrameRecords::Next FrameRecords::Deliver(std::span<const std::uint8_t> bytes,
                                         std::uint64_t offset,
                                         std::uint32_t wire_length) {
  record_.bytes = bytes;
  record_.offset = offset;
  record_.wire_length = wire_length;
  return Next::kFrame;
}

bool FrameRecords::IsNextThere() {
  const std::uint64_t known = file_.known_size();
  if (known < at_ + least_) return false;
  const auto header = file_.Ahead(at_, least_);
  return header.size() >= least_ && known >= at_ + LengthOf(header);
}

std::unique_ptr<FrameRecords> OpenFrameRecords(FileBytes& file) {
  const std::uint32_t magic = WireReader(file.Ahead(0, 4)).Word32();
  if (PcapRecords::IsMagic(magic)) return std::make_unique<PcapRecords>(file);
  if (PcapngRecords::IsMagic(magic)) {
    return std::make_unique<PcapngRecords>(file);
  }
  return nullptr;
}

}  // namespace host
