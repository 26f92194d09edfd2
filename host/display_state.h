#ifndef HOST_DISPLAY_STATE_H_
#define HOST_DISPLAY_STATE_H_

#include <windows.h>

#include <array>
#include <cstdint>
#include <cstring>

#include "plugin/host_interface.h"

namespace host {

// The block that a host window shows to the module: what to leave out, where
// the lines go.
class DisplayState {
 public:
  enum class Output : char { kTree = '0', kSave = '8' };

  DisplayState() {
    SetOutput(Output::kTree);
    SetShowMessageData(true);
  }

  void SetOutput(Output output) {
    Write(DICOM_STATE_OUTPUT_MODE, static_cast<char>(output));
  }
  void SetShowMessageData(bool show) {
    Write(DICOM_STATE_SHOW_MESSAGE_DATA, std::uint32_t{show});
  }
  void SetFile(HFILE file) { Write(DICOM_STATE_FILE_HANDLE, file); }
  void* Block() { return block_.data(); }

 private:
  template <class Value>
  void Write(std::size_t offset, Value value) {
    std::memcpy(&block_[offset], &value, sizeof value);
  }

  std::array<std::uint8_t, DICOM_STATE_SIZE> block_{};
};

}  // namespace host

#endif  // HOST_DISPLAY_STATE_H_
