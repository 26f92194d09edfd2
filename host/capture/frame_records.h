#ifndef HOST_CAPTURE_FRAME_RECORDS_H_
#define HOST_CAPTURE_FRAME_RECORDS_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>

#include "host/capture/file_bytes.h"
#include "host/text/time_text.h"

namespace host {

// One frame as a capture file holds it.
struct FrameRecord {
  // What was captured of it. Valid until the next one is read.
  std::span<const std::uint8_t> bytes;
  std::uint64_t offset = 0;  // of these bytes in the file
  std::uint32_t wire_length = 0;
  Nanoseconds time = 0;
  int link_type = 0;  // LINKTYPE_ value of capture files
};

// The frames of a capture file in the order in which they stand there. A frame
// that is not whole yet is read once it is: after kEnd and kCut a later call
// goes on in the same place.
class FrameRecords {
 public:
  enum class Next {
    kFrame,    // record() is the next frame
    kEnd,      // the file ends behind the last one
    kCut,      // the file ends inside what follows
    kDamaged,  // what follows makes no sense, and nothing behind it can be read
  };

  virtual ~FrameRecords() = default;

  // Throws Failure when the file cannot be read.
  virtual Next Read() = 0;
  // Whether all of the next frame, or of what stands before it, is there by
  // now, so that Read() does not wait for a pipe.
  bool IsNextThere();
  const FrameRecord& record() const { return record_; }
  // Why Read() answered kCut or kDamaged, as a clause.
  const std::string& reason() const { return reason_; }
  // The link type of the frames, as far as one is known before any was read.
  std::optional<int> link_type() const { return link_type_; }
  // Where it will go on, in bytes from the file's beginning.
  std::uint64_t position() const { return at_; }

 protected:
  // How many bytes the next record has, from its first `header` on.
  virtual std::uint64_t LengthOf(
      std::span<const std::uint8_t> header) const = 0;

  // No record is shorter than `least` bytes, which are its header.
  FrameRecords(FileBytes& file, std::size_t least)
      : file_(file), least_(least) {}

  Next Cut(const char* reason);
  Next Damaged(std::string reason);
  // Completes record_, whose bytes are at `offset` in the file.
  Next Deliver(std::span<const std::uint8_t> bytes, std::uint64_t offset,
               std::uint32_t wire_length);

  FileBytes& file_;
  std::size_t least_;
  std::uint64_t at_ = 0;
  FrameRecord record_;
  std::optional<int> link_type_;

 private:
  std::string reason_;
};

// No frame is longer: an IP packet and its link header have room in it.
inline constexpr std::uint32_t kMostFrameBytes = 262144;

// A capture file of which no frame can be read. The text is a clause.
class IncompleteFile : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Knows a pcap or a pcapng file by its first bytes; null when it is neither.
// `file` has to outlive the answer. Throws IncompleteFile.
std::unique_ptr<FrameRecords> OpenFrameRecords(FileBytes& file);

}  // namespace host

#endif  // HOST_CAPTURE_FRAME_RECORDS_H_
