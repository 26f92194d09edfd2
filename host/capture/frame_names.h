#ifndef HOST_CAPTURE_FRAME_NAMES_H_
#define HOST_CAPTURE_FRAME_NAMES_H_

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace host {

// What people call the frames of a capture, which the host numbers from 1 on
// in the order in which it takes them. In a capture of one file that is the
// number that other tools show; of several it is the file's name and the number
// there.
class FrameNames {
 public:
  struct Place {
    std::uint32_t file = 0;    // in the order of AddFile()
    std::uint32_t number = 0;  // in that file, from 1
  };

  void AddFile(std::string name) { files_.push_back({std::move(name)}); }
  // Says where a frame stands; later ones have greater numbers. Not needed in
  // a capture of one file.
  void Note(std::uint32_t frame, Place place);

  // Of a capture of one file, whose name nobody needs, 0.
  std::uint32_t size() const {
    return static_cast<std::uint32_t>(files_.size());
  }
  bool HasSeveralFiles() const { return files_.size() > 1; }
  Place PlaceOf(std::uint32_t frame) const;
  // The name of the file that holds the frame; empty in a capture of one file,
  // and for frame 0, which stands for none.
  std::string FileOf(std::uint32_t frame) const;
  // "12" or "ring_2.pcap:12".
  std::string Text(std::uint32_t frame) const;
  // "12", "12-14", "ring_2.pcap:12-14", "ring_1.pcap:99-ring_2.pcap:1".
  std::string Text(std::uint32_t first, std::uint32_t last) const;
  // Whether all of file `one` was taken before the first frame of the other.
  bool EndsBefore(std::uint32_t one, std::uint32_t other) const;
  const std::string& file(std::uint32_t index) const {
    return files_[index].name;
  }

 private:
  struct File {
    std::string name;
    std::uint32_t first = 0, last = 0;  // frames of the capture
  };
  // Frames that follow each other in the capture and in their file.
  struct Run {
    std::uint32_t first = 0;
    Place place;  // of the first
  };

  std::vector<File> files_;
  std::vector<Run> runs_;
};

}  // namespace host

#endif  // HOST_CAPTURE_FRAME_NAMES_H_
