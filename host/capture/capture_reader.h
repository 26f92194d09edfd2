#ifndef HOST_CAPTURE_CAPTURE_READER_H_
#define HOST_CAPTURE_CAPTURE_READER_H_

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "host/capture/byte_store.h"
#include "host/capture/capture_error.h"
#include "host/capture/frame_parser.h"
#include "host/capture/frame_records.h"
#include "host/capture/packet_filter.h"

namespace host {

// Reads the TCP segments of a pcap or pcapng file one after the other. Where it
// had to stop, a later call goes on, should the file have grown meanwhile.
class CaptureReader {
 public:
  // `filter` is a BPF expression, empty for all frames; `most_temporary` bounds
  // what is kept of a pipe or a compressed file, see OpenCaptureBytes(). Throws
  // CaptureError when the file cannot be read at all, FilterError for a bad
  // filter.
  CaptureReader(const std::filesystem::path& path, const std::string& filter,
                std::optional<std::uint64_t> most_temporary = {});

  // The next TCP segment that passes the filter; null at the end of the file
  // or where it is damaged. Lasts until the next call, as its bytes do.
  const TcpFrame* Next();

  // Where the bytes of all segments can be read again.
  const std::shared_ptr<ByteStore>& store() const { return store_; }

  // IP fragments of TCP packets that passed the filter so far: they are left
  // out.
  std::uint32_t fragments() const { return fragments_; }
  // Bytes of the file read so far, and its size as far as it is known; for a
  // progress display.
  std::uint64_t bytes_read() const { return records_->position(); }
  std::uint64_t file_bytes() const { return file_->known_size(); }
  // One sentence when the file broke off or is damaged; else empty.
  const std::string& damage() const { return damage_; }
  // The damage is that the file ends too early.
  bool EndsInsideFrame() const { return ends_inside_frame_; }

 private:
  // Throws CaptureError unless frames of the link type can be read; `name` is
  // that of the capture.
  void RequireKnownLinkType(const std::string& name) const;
  // Reads one frame into frame_ and answers what it holds: kOther if it does
  // not pass the filter, none when there is no frame to be read now.
  std::optional<FrameKind> ReadFrame();
  // There is no frame now: notes why.
  void NoteEnd(FrameRecords::Next answer);

  std::shared_ptr<ByteStore> store_ = std::make_shared<ByteStore>();
  std::shared_ptr<FileBytes> file_;
  ByteStore::Offset file_begin_ = 0;
  std::unique_ptr<FrameRecords> records_;
  std::optional<PacketFilter> filter_;  // always there once it is built
  TcpFrame frame_;                      // the newest
  std::uint32_t frames_ = 0;            // read, whatever they hold
  std::uint32_t fragments_ = 0;
  std::string damage_;
  bool ends_inside_frame_ = false;
};

}  // namespace host

#endif  // HOST_CAPTURE_CAPTURE_READER_H_
