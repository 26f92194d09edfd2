#ifndef HOST_CAPTURE_CAPTURE_READER_H_
#define HOST_CAPTURE_CAPTURE_READER_H_

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/capture/byte_store.h"
#include "host/capture/capture_error.h"
#include "host/capture/capture_series.h"
#include "host/capture/frame_parser.h"
#include "host/capture/ip_fragments.h"
#include "host/capture/packet_filter.h"

namespace host {

// Reads the TCP segments of a capture, one after the other. Where a capture of
// one file had to stop, a later call goes on, should the file have grown
// meanwhile.
class CaptureReader {
 public:
  // `filter` is a BPF expression, empty for all frames; `most_temporary` bounds
  // what is kept of pipes and compressed files. Throws CaptureError when
  // nothing can be read at all, FilterError for a bad filter.
  CaptureReader(const std::vector<CaptureInput>& inputs,
                const std::string& filter,
                std::optional<std::uint64_t> most_temporary = {});
  // Of one file.
  CaptureReader(const std::filesystem::path& path, const std::string& filter,
                std::optional<std::uint64_t> most_temporary = {})
      : CaptureReader(std::vector<CaptureInput>{{path}}, filter,
                      most_temporary) {}

  // Reads the next frame, whatever it is; false at the end of the capture or
  // where it is damaged.
  bool Read();
  // The TCP segment that this frame holds or completes, if it passes the
  // filter; else null. Lasts until the next frame is read, as its bytes do.
  const TcpFrame* segment() const { return has_segment_ ? &frame_ : nullptr; }
  // Reads on to the next one; null at the end.
  const TcpFrame* Next();

  // Of a capture of one file: whether the next frame is there by now, so that
  // Read() does not wait for a pipe.
  bool IsNextThere() { return series_.IsNextThere(); }

  // Where the bytes of all segments can be read again.
  const std::shared_ptr<ByteStore>& store() const { return store_; }
  // What its frames are called. Grows with Next().
  std::shared_ptr<const FrameNames> names() const { return series_.names(); }

  // IP fragments that passed the filter so far and whose packets are not whole:
  // they are left out.
  std::uint64_t fragments() const { return fragments_.left_out(); }
  unsigned percent() const { return series_.percent(); }  // that is read
  // One sentence for each file that cannot be read, breaks off or is damaged.
  std::vector<std::string> Failures() const { return series_.Failures(); }
  // One sentence for each thing else.
  std::vector<std::string> Notes() const;
  // The failure is that the one file ends too early.
  bool EndsInsideFrame() const { return series_.EndsInsideFrame(); }

 private:
  // What the frame holds that the series has come to, in frame_ if it is a
  // segment or completes one; kOther if it does not pass the filter.
  FrameKind ReadFrame();
  FrameKind ReadFragment(const IpFragment& fragment);
  // The segment in frame_ was put together from these.
  void SetParts(const WholePacket& packet);

  std::shared_ptr<ByteStore> store_ = std::make_shared<ByteStore>();
  CaptureSeries series_;
  PacketFilter filter_;
  TcpFrame frame_;  // the newest
  bool has_segment_ = false;
  IpFragments fragments_;
  std::vector<FramePart> parts_;  // of frame_
};

}  // namespace host

#endif  // HOST_CAPTURE_CAPTURE_READER_H_
