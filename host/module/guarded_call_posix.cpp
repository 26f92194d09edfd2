#include <setjmp.h>
#include <signal.h>
#include <ucontext.h>

#include <array>
#include <cstdint>
#include <cstring>

#include "host/module/call_failure_text.h"
#include "host/module/guarded_call.h"
#include "interface/host_interface.h"
#include "port/raised_exception.h"

// A fault comes as a signal, whose handler goes back to where the innermost
// call began; a raised exception as one of C++.
namespace host {
namespace {

struct Fault {
  int signal = 0;
  int kind = 0;  // si_code
  std::uintptr_t place = 0;
  std::uintptr_t address = 0;
  std::uintptr_t stack = 0;
  const char* access = "accessing";
};

struct Frame {
  Frame* outer;
  sigjmp_buf begin;
  Fault fault;
};

Frame* innermost = nullptr;  // null: no call is being guarded

constexpr std::array kFaultSignals = {SIGSEGV, SIGFPE, SIGILL};
std::array<struct sigaction, kFaultSignals.size()> handlers_before;

// How much of the stack one function may step over at once.
constexpr std::uintptr_t kLargestStep = 1 << 20;

// Those of this machine; elsewhere a text says less.
void ReadRegisters(const ucontext_t& context, Fault& fault) {
#if defined(__x86_64__)
  constexpr unsigned long long kWrites = 2, kFetches = 16;
  const auto& registers = context.uc_mcontext.gregs;
  const auto error = static_cast<unsigned long long>(registers[REG_ERR]);
  fault.place = static_cast<std::uintptr_t>(registers[REG_RIP]);
  fault.stack = static_cast<std::uintptr_t>(registers[REG_RSP]);
  fault.access = (error & kFetches) != 0  ? "executing"
                 : (error & kWrites) != 0 ? "writing"
                                          : "reading";
#elif defined(__i386__)
  constexpr int kWrites = 2;
  const auto& registers = context.uc_mcontext.gregs;
  fault.place = static_cast<std::uintptr_t>(registers[REG_EIP]);
  fault.stack = static_cast<std::uintptr_t>(registers[REG_ESP]);
  fault.access = (registers[REG_ERR] & kWrites) != 0 ? "writing" : "reading";
#elif defined(__aarch64__)
  fault.place = context.uc_mcontext.pc;
  fault.stack = context.uc_mcontext.sp;
#else
  static_cast<void>(context);
  static_cast<void>(fault);
#endif
}

void PassOn(int signal) {
  for (std::size_t i = 0; i < kFaultSignals.size(); ++i) {
    if (kFaultSignals[i] == signal) {
      sigaction(signal, &handlers_before[i], nullptr);
    }
  }
}

// Runs on a stack of its own: the other one may have no room left.
void OnFault(int signal, siginfo_t* info, void* context) {
  if (innermost == nullptr) return PassOn(signal);  // which then comes again
  Fault& fault = innermost->fault;
  fault.signal = signal;
  fault.kind = info->si_code;
  fault.address = reinterpret_cast<std::uintptr_t>(info->si_addr);
  ReadRegisters(*static_cast<const ucontext_t*>(context), fault);
  siglongjmp(innermost->begin, 1);
}

bool HandleFaults() {
  static std::array<std::uint8_t, 1 << 16> room;
  stack_t stack{};
  stack.ss_sp = room.data();
  stack.ss_size = room.size();
  sigaltstack(&stack, nullptr);
  struct sigaction action {};
  action.sa_sigaction = OnFault;
  // Not blocked while it is handled, since the handler does not return.
  action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
  for (std::size_t i = 0; i < kFaultSignals.size(); ++i) {
    sigaction(kFaultSignals[i], &action, &handlers_before[i]);
  }
  return true;
}

std::string Describe(const Fault& fault) {
  if (fault.signal == SIGFPE && fault.kind == FPE_INTDIV) {
    return DivisionByZeroText(fault.place);
  }
  if (fault.signal != SIGSEGV) {
    return OtherExceptionText(static_cast<std::uint32_t>(fault.signal),
                              fault.place);
  }
  const bool near_stack =
      fault.address - (fault.stack - kLargestStep) < 2 * kLargestStep;
  return near_stack
             ? kStackOverflowText
             : AccessViolationText(fault.place, fault.access, fault.address);
}

// The text may be anywhere or nowhere: reading it is guarded as well.
std::string TextAt(std::uintptr_t address) {
  std::array<char, 512> text{};
  const auto failure = Guarded([&] {
    const auto* from = reinterpret_cast<const char*>(address);
    std::memcpy(text.data(), from, ::strnlen(from, text.size() - 1));
  });
  return failure || text[0] == '\0' ? kNoText : text.data();
}

CallFailure Explain(const port::RaisedException& raised) {
  return {raised.code, raised.code == DICOM_DECODE_EXCEPTION
                           ? TextAt(raised.argument)
                           : OtherExceptionText(raised.code, 0)};
}

}  // namespace

std::optional<CallFailure> RunGuarded(void (*function)(void*), void* argument) {
  [[maybe_unused]] static const bool handled = HandleFaults();
  Frame frame{innermost, {}, {}};
  std::optional<CallFailure> failure;
  if (sigsetjmp(frame.begin, 0) != 0) {
    innermost = frame.outer;
    return CallFailure{static_cast<std::uint32_t>(frame.fault.signal),
                       Describe(frame.fault)};
  }
  innermost = &frame;
  try {
    function(argument);
    innermost = frame.outer;
  } catch (const port::RaisedException& raised) {
    innermost = frame.outer;
    failure = Explain(raised);
  }
  return failure;
}

}  // namespace host
