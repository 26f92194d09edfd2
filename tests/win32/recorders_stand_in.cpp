#include <utility>

#include "plugin/host_interface.h"
#include "tests/recorders.h"
#include "tests/win32/stand_in.h"

namespace dicom::testing {
namespace {

std::vector<ShownBox> shown_boxes;

}  // namespace

MessageBoxRecorder::MessageBoxRecorder() {
  stand_in::Records().boxes.clear();
  stand_in::Records().box_shown = nullptr;
}

MessageBoxRecorder::~MessageBoxRecorder() {
  stand_in::Records().box_shown = nullptr;
}

const std::vector<ShownBox>& MessageBoxRecorder::Boxes() const {
  shown_boxes.clear();
  for (const auto& box : stand_in::Records().boxes) {
    shown_boxes.push_back({box.owner, box.text, box.caption});
  }
  return shown_boxes;
}

void MessageBoxRecorder::WhileBoxIsOpen(std::function<void()> action) {
  stand_in::Records().box_shown = std::move(action);
}

PrinterRecorder::PrinterRecorder() : dc_(reinterpret_cast<HDC>(0x1234)) {
  stand_in::Records().printer.clear();
}

PrinterRecorder::~PrinterRecorder() = default;

std::string PrinterRecorder::Printed() {
  std::string printed;
  for (const auto& call : stand_in::Records().printer) printed += call + "\n";
  return printed;
}

void AdvanceTicks(DWORD milliseconds) { stand_in::AdvanceTicks(milliseconds); }

std::size_t GlobalBlocks() { return stand_in::GlobalBlocks(); }

void ForgetGlobalBlocks() { stand_in::FreeGlobalBlocks(); }

void FailGlobalAlloc(unsigned count) { stand_in::FailGlobalAlloc(count); }

std::string RaisedText(const std::function<void()>& action) {
  try {
    action();
  } catch (const stand_in::RaisedException& raised) {
    if (raised.code != DICOM_DECODE_EXCEPTION) return "another exception";
    return reinterpret_cast<const char*>(raised.argument);
  }
  return "";
}

}  // namespace dicom::testing
