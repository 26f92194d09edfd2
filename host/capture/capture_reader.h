#ifndef HOST_CAPTURE_CAPTURE_READER_H_
#define HOST_CAPTURE_CAPTURE_READER_H_

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "host/capture/block_scanner.h"
#include "host/capture/frame_parser.h"
#include "host/text/failure.h"

namespace host {

// Why a capture cannot be read.
class CaptureError : public Failure {
 public:
  using Failure::Failure;
};

// The filter expression is wrong: the user's command, not the file.
class FilterError : public CaptureError {
 public:
  using CaptureError::CaptureError;
};

// Reads the TCP segments of a pcap or pcapng file one after the other.
class CaptureReader {
 public:
  // kFollow is for a file that still grows: where Next() had to stop, a later
  // call goes on, also in the middle of a frame.
  enum class Mode { kWholeFile, kFollow };

  // `filter` is a BPF expression, empty for all frames. Throws CaptureError
  // when the file cannot be read at all, FilterError for a bad filter.
  CaptureReader(const std::filesystem::path& path, const std::string& filter,
                Mode mode = Mode::kWholeFile);
  ~CaptureReader();

  // The next TCP segment that passes the filter; null at the end of the file
  // or where it is damaged. Lasts until the next call, as its bytes do.
  const TcpFrame* Next();

  // IP fragments of TCP packets that passed the filter so far: they are left
  // out.
  std::uint32_t fragments() const { return fragments_; }
  // Bytes of the file read so far, and its size when it was opened; for a
  // progress display.
  std::uint64_t bytes_read() const;
  std::uint64_t file_bytes() const { return file_bytes_; }
  // One sentence when the file broke off or is damaged; else empty.
  const std::string& damage() const { return damage_; }
  // The damage is that the file ends too early.
  bool EndsInsideFrame() const { return ends_inside_frame_; }

 private:
  struct Pcap;

  // Throws FilterError.
  void CompileFilter(const std::string& filter);
  // Reads one frame into frame_ and answers what it holds: kOther if it does
  // not pass the filter, none when there is no frame to be read now.
  std::optional<FrameKind> ReadFrame();
  // libpcap gave no frame: notes why. Leaves a file that grows at `start`,
  // where the frame begins.
  void NoteEnd(int answer, std::int64_t start);
  // Of a file that grows: whether libpcap can be asked for a frame now.
  bool MayReadOn();
  // Sets damage(); a frame that is read after all takes it back.
  void NoteDamage(const std::string& reason);

  std::unique_ptr<Pcap> pcap_;
  Mode mode_;
  BlockScanner scanner_;  // for a pcapng file that grows
  bool is_pcapng_ = false;
  bool is_over_ = false;  // what follows cannot be read, even later
  int link_type_ = 0;
  TcpFrame frame_;            // the newest
  std::uint32_t frames_ = 0;  // read, whatever they hold
  std::uint32_t fragments_ = 0;
  std::uint64_t file_bytes_ = 0;
  std::string damage_;
  bool ends_inside_frame_ = false;
};

}  // namespace host

#endif  // HOST_CAPTURE_CAPTURE_READER_H_
