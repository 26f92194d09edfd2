#include "tree/display_state.h"

#include <cstring>

#include "interface/host_interface.h"

namespace dicom {

// The one place that takes a window's number for an address.
HostDisplayState::HostDisplayState(HWND host_window)
    : block_(reinterpret_cast<char*>(
          ::GetWindowLongPtrA(host_window, DICOM_DISPLAY_STATE_INDEX))) {}

template <class T>
T HostDisplayState::Field(std::size_t offset) const {
  T value{};
  if (block_ != nullptr) std::memcpy(&value, block_ + offset, sizeof(value));
  return value;
}

bool HostDisplayState::ShowsMessageData() const {
  return Field<std::uint32_t>(DICOM_STATE_SHOW_MESSAGE_DATA) != 0;
}

bool HostDisplayState::Prints() const {
  return Field<char>(DICOM_STATE_OUTPUT_MODE) == '7';
}

bool HostDisplayState::Saves() const {
  return Field<char>(DICOM_STATE_OUTPUT_MODE) == '8';
}

std::uint32_t HostDisplayState::SectionExpandMask() const {
  return Field<std::uint32_t>(DICOM_STATE_SECTION_EXPAND_MASK);
}

HDC HostDisplayState::PrinterDc() const {
  return Field<HDC>(DICOM_STATE_PRINTER_DC);
}

std::int32_t HostDisplayState::LineHeight() const {
  return Field<std::int32_t>(DICOM_STATE_LINE_HEIGHT);
}

std::int32_t HostDisplayState::LinesPerPage() const {
  return Field<std::int32_t>(DICOM_STATE_LINES_PER_PAGE);
}

std::int32_t HostDisplayState::CurrentLine() const {
  return Field<std::int32_t>(DICOM_STATE_CURRENT_LINE);
}

void HostDisplayState::SetCurrentLine(std::int32_t line) const {
  std::memcpy(block_ + DICOM_STATE_CURRENT_LINE, &line, sizeof(line));
}

HFILE HostDisplayState::File() const {
  return Field<HFILE>(DICOM_STATE_FILE_HANDLE);
}

}  // namespace dicom
