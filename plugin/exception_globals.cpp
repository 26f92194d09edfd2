#include <cxxabi.h>

// The exception runtime keeps what is being thrown and caught in thread-local
// storage, for which the static runtime takes a slot of the process that it
// never gives back: a host that reloads the DLL (the way on after a failed
// display) would be ended at the thousandth time. All calls come on one thread,
// so plain storage serves, and with these two functions the runtime's own are
// not linked.
namespace __cxxabiv1 {
namespace {

struct {
  void* caught_exceptions;
  unsigned int uncaught_exceptions;
} globals;

}  // namespace

extern "C" {

__cxa_eh_globals* __cxa_get_globals() noexcept {
  return reinterpret_cast<__cxa_eh_globals*>(&globals);
}

__cxa_eh_globals* __cxa_get_globals_fast() noexcept {
  return reinterpret_cast<__cxa_eh_globals*>(&globals);
}

}  // extern "C"

}  // namespace __cxxabiv1
