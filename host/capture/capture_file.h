#ifndef HOST_CAPTURE_CAPTURE_FILE_H_
#define HOST_CAPTURE_CAPTURE_FILE_H_

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "host/capture/capture_error.h"
#include "host/capture/capture_source.h"
#include "host/capture/file_bytes.h"
#include "host/capture/frame_records.h"

namespace host {

// The file is of another kind; others in its folder may be captures.
class NoCaptureError : public CaptureError {
 public:
  // `skipped` is the sentence for a file that was found in a folder.
  NoCaptureError(const std::string& sentence, std::string skipped)
      : CaptureError(sentence), skipped_(std::move(skipped)) {}

  const std::string& skipped() const { return skipped_; }

 private:
  std::string skipped_;
};

// One capture file that is open, read frame by frame.
class CaptureFile {
 public:
  // Throws NoCaptureError for a file of another kind, CaptureError when it
  // cannot be read, or its frames cannot.
  CaptureFile(const std::filesystem::path& path,
              const std::shared_ptr<TemporaryRoom>& room);

  // The next frame; false where there is none for now. A later call goes on,
  // should the file have grown.
  bool Next();
  // Whether Next() need not wait for a pipe.
  bool IsNextThere() { return records_->IsNextThere(); }
  // Valid until the next call of Next().
  const FrameRecord& record() const { return records_->record(); }
  std::uint32_t frames() const { return frames_; }  // that were read

  int link_type() const { return *records_->link_type(); }
  const std::shared_ptr<FileBytes>& bytes() const { return bytes_; }
  // How much of it is read, of 100.
  unsigned percent() const;
  // Why Next() answered false, as a clause or FileBytes::limit(); empty at the
  // file's regular end.
  const std::string& damage() const { return damage_; }
  // The damage is that the file ends too early.
  bool EndsInsideFrame() const { return ends_inside_frame_; }

 private:
  std::shared_ptr<FileBytes> bytes_;
  std::unique_ptr<FrameRecords> records_;
  std::uint32_t frames_ = 0;
  std::string damage_;
  bool ends_inside_frame_ = false;
};

}  // namespace host

#endif  // HOST_CAPTURE_CAPTURE_FILE_H_
