#ifndef HOST_MODULE_CALL_FAILURE_TEXT_H_
#define HOST_MODULE_CALL_FAILURE_TEXT_H_

#include <cstdint>
#include <string>

namespace host {

// What a CallFailure says, the same on every system.

// `access` is what was done with the address: "reading".
std::string AccessViolationText(std::uintptr_t place, const char* access,
                                std::uintptr_t address);
std::string DivisionByZeroText(std::uintptr_t place);
std::string OtherExceptionText(std::uint32_t code, std::uintptr_t place);
inline constexpr char kStackOverflowText[] = "stack overflow";
// For a DICOM_DECODE_EXCEPTION whose text cannot be read.
inline constexpr char kNoText[] = "a failure without a text";

}  // namespace host

#endif  // HOST_MODULE_CALL_FAILURE_TEXT_H_
