#ifndef HOST_CAPTURE_CAPTURE_SERIES_H_
#define HOST_CAPTURE_CAPTURE_SERIES_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/capture/byte_store.h"
#include "host/capture/capture_file.h"
#include "host/capture/capture_names.h"
#include "host/capture/frame_names.h"
#include "host/capture/twin_frames.h"

namespace host {

// The frames of one or several capture files as those of one capture. Files
// follow each other in the order of their first frames; of such as overlap in
// time the earlier frame comes first, each file's own in its order, and what
// two of them hold is taken once. Files may be of all formats and link types.
class CaptureSeries {
 public:
  // The bytes are added to `store`, which has to outlive it. `most_temporary`
  // bounds what is kept of pipes and compressed files together; without it half
  // of the room in the folder for temporary files. Throws CaptureError when
  // nothing can be read.
  CaptureSeries(const std::vector<CaptureInput>& inputs, ByteStore& store,
                std::optional<std::uint64_t> most_temporary);

  // The next frame; false at the end. A capture of one file goes on with a
  // later call, should the file have grown.
  bool Next();
  // Of a capture of one file: whether Next() need not wait for a pipe.
  bool IsNextThere() { return current_->file->IsNextThere(); }
  // Valid until the next call of Next(), as the two below are.
  const FrameRecord& record() const { return current_->file->record(); }
  std::uint32_t number() const { return frames_; }  // in the capture, from 1
  ByteStore::Offset stored() const;                 // of the record's bytes

  // Of the first file that can be read.
  int link_type() const;
  const std::shared_ptr<FrameNames>& names() const { return names_; }
  unsigned percent() const;

  // One sentence for each file that cannot be read, or not to its end; in a
  // capture of one file only as long as it does not grow.
  std::vector<std::string> Failures() const;
  // One sentence about each thing else that is worth to be known.
  std::vector<std::string> Notes() const;
  // The file of a capture of one ends too early.
  bool EndsInsideFrame() const;

 private:
  struct Source {
    CaptureInput input;
    Nanoseconds first_time = 0;
    // With its first frame read; null where that has to be done once more, so
    // that a thousand files are not open at once.
    std::unique_ptr<CaptureFile> file;
  };
  struct Open {
    std::unique_ptr<CaptureFile> file;
    ByteStore::Offset begin = 0;
    std::uint32_t index = 0;  // of the source
    Nanoseconds clock = 0;    // the latest time so far
  };

  // Looks into each of several files, and brings those that can be read into
  // their order.
  void FindSources(const std::vector<CaptureInput>& inputs);
  void Probe(const CaptureInput& input);
  void NameFiles();
  // Sees that current_ is the file whose frame is next of several; false
  // without one.
  bool Choose();
  void SetAside();  // puts current_ to the others
  void OpenNext();
  // Makes it current_.
  Open& Begin(std::unique_ptr<CaptureFile> file, std::uint32_t index);
  // current_ has read on: without a frame it is over.
  void Settle(bool has_frame);
  // Notes where the frame stands. True when another file has brought it.
  bool NoteFrame();
  std::string DamageOf(const Open& open) const;
  static bool IsLater(const Open& one, const Open& other);

  ByteStore& store_;
  std::shared_ptr<TemporaryRoom> room_;
  bool is_one_;  // file, and not several: current_ at all times
  std::vector<Source> sources_;
  std::size_t next_ = 0;         // of the sources, to be opened
  std::optional<Open> current_;  // with a frame
  std::vector<Open> others_;     // with a frame each, a heap by clock
  std::shared_ptr<FrameNames> names_ = std::make_shared<FrameNames>();
  TwinFrames twins_;
  Nanoseconds twins_until_ = 0;  // the latest time of a file that is over
  std::uint64_t twin_count_ = 0;
  std::uint32_t frames_ = 0;
  int link_type_ = 0;
  std::vector<std::string> failures_;
  std::vector<std::string> skipped_;
};

}  // namespace host

#endif  // HOST_CAPTURE_CAPTURE_SERIES_H_
