#ifndef HOST_CAPTURE_PCAPNG_RECORDS_H_
#define HOST_CAPTURE_PCAPNG_RECORDS_H_

#include <bit>
#include <cstdint>
#include <span>
#include <vector>

#include "host/capture/frame_records.h"
#include "host/capture/wire_bytes.h"

namespace host {

// A pcapng file: blocks, each of which says what it is and how long. Frames
// belong to the interfaces that their section has described before them, each
// with its link type and its unit of time.
class PcapngRecords final : public FrameRecords {
 public:
  // `magic` is the file's first word.
  static bool IsMagic(std::uint32_t magic);

  // The file begins with such a word. Throws IncompleteFile when no interface
  // is described before the first frame.
  explicit PcapngRecords(FileBytes& file);

  Next Read() override;

 protected:
  std::uint64_t LengthOf(std::span<const std::uint8_t> header) const override;

 private:
  // A unit of time is 1/units_per_second.
  struct Interface {
    int link_type = 0;
    std::uint32_t snap_length = 0;  // 0: none
    std::uint64_t units_per_second = 1'000'000;
    Nanoseconds time_offset = 0;
  };
  struct Block {
    std::uint32_t type = 0;
    std::uint32_t length = 0;  // with everything
  };

  // Reads the head of the block at at_ and sees that all of it is there: then
  // kFrame.
  Next ReadHead(Block& block);
  // Reads the block at at_ and moves behind it; kEnd when it holds no frame.
  Next ReadBlock(const Block& block);
  Next ReadSection(WireReader in);
  Next ReadInterface(WireReader in);
  // What makes no sense is left out.
  void ReadOptions(WireReader in, Interface& interface) const;
  void ReadOption(std::uint16_t code, std::span<const std::uint8_t> value,
                  Interface& interface) const;
  // `in` stands behind the head of a block that holds a frame.
  Next ReadEnhanced(WireReader in);
  Next ReadObsolete(WireReader in);
  Next ReadSimple(WireReader in);
  // `in` stands before the captured bytes. `time` is in the interface's units.
  Next TakeFrame(std::uint32_t interface, std::uint64_t time,
                 std::uint32_t captured, std::uint32_t wire_length,
                 WireReader in);

  std::endian order_ = std::endian::little;  // of the section that it is in
  std::vector<Interface> interfaces_;        // of this section
  std::span<const std::uint8_t> block_;      // the one that is being read
};

}  // namespace host

#endif  // HOST_CAPTURE_PCAPNG_RECORDS_H_
