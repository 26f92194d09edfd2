#include <cstdlib>
#include <utility>

#include "interface/host_interface.h"
#include "tests/recorders.h"
#include "tests/win32/stand_in.h"

namespace dicom::testing {

using stand_in::Records;

MessageBoxRecorder::MessageBoxRecorder() {
  Records().boxes.clear();
  Records().box_shown = nullptr;
}

MessageBoxRecorder::~MessageBoxRecorder() { Records().box_shown = nullptr; }

const std::vector<ShownBox>& MessageBoxRecorder::Boxes() const {
  return Records().boxes;
}

void MessageBoxRecorder::WhileBoxIsOpen(std::function<void()> action) {
  Records().box_shown = std::move(action);
}

PrinterRecorder::PrinterRecorder() : dc_(reinterpret_cast<HDC>(0x1234)) {
  Records().printed.clear();
}

PrinterRecorder::~PrinterRecorder() = default;

std::string PrinterRecorder::Printed() { return Records().printed; }

void AdvanceTicks(DWORD milliseconds) { Records().ticks += milliseconds; }

std::size_t GlobalBlocks() { return Records().blocks.size(); }

void ForgetGlobalBlocks() {
  for (void* const block : Records().blocks) std::free(block);
  Records().blocks.clear();
}

void FailGlobalAlloc(unsigned count) {
  Records().allocations_to_failure = count;
}

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
