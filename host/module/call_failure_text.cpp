#include "host/module/call_failure_text.h"

#include <array>
#include <cstdio>

namespace host {
namespace {

// At least eight digits.
std::string Hex(std::uintptr_t value) {
  std::array<char, 24> text{};
  std::snprintf(text.data(), text.size(), "%08lXh",
                static_cast<unsigned long>(value));
  return text.data();
}

}  // namespace

std::string AccessViolationText(std::uintptr_t place, const char* access,
                                std::uintptr_t address) {
  return "access violation at " + Hex(place) + " (" + access + " address " +
         Hex(address) + ")";
}

std::string DivisionByZeroText(std::uintptr_t place) {
  return "division by zero at " + Hex(place);
}

std::string OtherExceptionText(std::uint32_t code, std::uintptr_t place) {
  return "exception " + Hex(code) + " at " + Hex(place);
}

}  // namespace host
