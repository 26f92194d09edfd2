#ifndef HOST_MODULE_GUARDED_CALL_H_
#define HOST_MODULE_GUARDED_CALL_H_

#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>

namespace host {

// Why a guarded call did not return.
struct CallFailure {
  std::uint32_t code = 0;  // of the exception, as the system numbers it
  // The module's own words, or a description: "access violation at 00401000h
  // (reading address 00000008h)". Never empty; to stand inside a sentence.
  std::string text;
};

// Runs `function` so that nothing that happens inside ends this program. Every
// exception of the system of error severity that is raised inside and handled
// by nobody deeper (the module's DICOM_DECODE_EXCEPTION, an access violation, a
// stack overflow, another compiler's C++ exception, ...) ends the call; the
// frames below are dropped without running their destructors. Answers nothing
// when the call returned. `function` must not let a C++ exception of this
// program pass. Calls may nest.
std::optional<CallFailure> RunGuarded(void (*function)(void*), void* argument);

// The same for anything that can be called.
template <class Function>
std::optional<CallFailure> Guarded(Function&& function) {
  return RunGuarded(
      [](void* callable) {
        (*static_cast<std::remove_reference_t<Function>*>(callable))();
      },
      &function);
}

}  // namespace host

#endif  // HOST_MODULE_GUARDED_CALL_H_
