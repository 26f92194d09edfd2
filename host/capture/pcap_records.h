#ifndef HOST_CAPTURE_PCAP_RECORDS_H_
#define HOST_CAPTURE_PCAP_RECORDS_H_

#include <bit>
#include <cstdint>

#include "host/capture/frame_records.h"

namespace host {

// A pcap file: a header of 24 bytes, then frames with a header of 16 bytes
// each, or of 24 in a variant of old Linux kernels.
class PcapRecords final : public FrameRecords {
 public:
  // `magic` is the file's first word, as if it were big-endian.
  static bool IsMagic(std::uint32_t magic);

  // The file begins with such a word. Throws IncompleteFile when its header is
  // not whole.
  explicit PcapRecords(FileBytes& file);

  Next Read() override;

 protected:
  std::uint64_t LengthOf(std::span<const std::uint8_t> header) const override;

 private:
  std::endian order_ = std::endian::big;
  Nanoseconds nanoseconds_per_unit_ = 1000;
  std::uint32_t header_bytes_ = 16;
};

}  // namespace host

#endif  // HOST_CAPTURE_PCAP_RECORDS_H_
