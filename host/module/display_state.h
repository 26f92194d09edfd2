#ifndef HOST_MODULE_DISPLAY_STATE_H_
#define HOST_MODULE_DISPLAY_STATE_H_

#include <windows.h>

#include <array>
#include <cstdint>
#include <cstring>

#include "interface/host_interface.h"

namespace host {

// Where a decode is printed.
struct Paper {
  HDC printer = nullptr;
  std::int32_t line_height = 0;  // device units
  std::int32_t lines_per_page = 0;
};

// The block that a host window shows to the module with each display: what to
// leave out, where the lines go. What is set stays set.
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
  // Whether the hex dumps of message data are among the lines.
  void SetShowMessageData(bool show) {
    Write(DICOM_STATE_SHOW_MESSAGE_DATA, std::uint32_t{show});
  }
  // Bit n expands section n of the tree, bit 8 the hex dumps.
  void SetSectionExpandMask(std::uint32_t mask) {
    Write(DICOM_STATE_SECTION_EXPAND_MASK, mask);
  }
  // For kSave: an HFILE that is open for writing.
  void SetFile(std::int32_t file) { Write(DICOM_STATE_FILE_HANDLE, file); }
  // For kPrint: the lines begin at the top of the page.
  void SetPaper(const Paper& paper) {
    constexpr std::int32_t kFirstLine = 1;
    Write(DICOM_STATE_PRINTER_DC, paper.printer);
    Write(DICOM_STATE_LINE_HEIGHT, paper.line_height);
    Write(DICOM_STATE_LINES_PER_PAGE, paper.lines_per_page);
    Write(DICOM_STATE_CURRENT_LINE, kFirstLine);
  }

  // What the module is given the address of; it writes to it as well.
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
