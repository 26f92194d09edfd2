#ifndef HOST_MODULE_DISPLAY_STATE_H_
#define HOST_MODULE_DISPLAY_STATE_H_

#include <windows.h>

#include <array>
#include <cstdint>
#include <cstring>

#include "interface/host_interface.h"

namespace host {

// The block that a host window shows to the module: what to leave out, where
// the lines go.
class DisplayState {
 public:
  enum class Output : char { kTree = '0', kPrint = '7', kSave = '8' };

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
  // Lines of `line_height` device units; the first goes to `first_line`, which
  // counts from 1.
  void SetPrinter(HDC printer, std::int32_t line_height,
                  std::int32_t lines_per_page, std::int32_t first_line) {
    Write(DICOM_STATE_PRINTER_DC, printer);
    Write(DICOM_STATE_LINE_HEIGHT, line_height);
    Write(DICOM_STATE_LINES_PER_PAGE, lines_per_page);
    Write(DICOM_STATE_CURRENT_LINE, first_line);
  }
  void SetSectionExpandMask(std::uint32_t mask) {
    Write(DICOM_STATE_SECTION_EXPAND_MASK, mask);
  }
  void* Block() { return block_.data(); }

 private:
  template <class Value>
  void Write(std::size_t offset, Value value) {
    std::memcpy(&block_[offset], &value, sizeof value);
  }

  std::array<std::uint8_t, DICOM_STATE_SIZE> block_{};
};

}  // namespace host

#endif  // HOST_MODULE_DISPLAY_STATE_H_
