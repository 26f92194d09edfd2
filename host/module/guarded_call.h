#ifndef HOST_MODULE_GUARDED_CALL_H_
#define HOST_MODULE_GUARDED_CALL_H_

#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>

namespace host {

// Why a guarded call did not return.
struct CallFailure {
  std::uint32_t code = 0;  // the Win32 exception code
  std::string text;        // for the user, without a full stop
};

// Runs `function` under a structured exception frame. Every Win32 exception of
// error severity that is raised inside and handled by nobody deeper (the
// module's DICOM_DECODE_EXCEPTION, an access violation, a stack overflow,
// another compiler's C++ exception, ...) ends the call; the frames below are
// dropped without running their destructors. Nothing when the call returned.
// `function` must not let a C++ exception of this program pass.
std::optional<CallFailure> RunGuarded(void (*function)(void*), void* argument);

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
