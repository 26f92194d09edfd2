#include <windows.h>
#include <malloc.h>

#include <array>

#include "host/module/call_failure_text.h"
#include "host/module/guarded_call.h"
#include "interface/host_interface.h"

// The compiler knows no structured exception handling for 32-bit Windows, so
// the frame is built by hand: a registration {previous frame, handler} in the
// list that begins at fs:[0], followed by what the way back needs.
//
//   int host_call_with_frame(void (*function)(void*), void* argument,
//                            HostException* exception)
// answers 0 when the function returned, 1 when an exception ended it.
//
// Frame, from its address upwards: previous frame, handler, `exception`, ebp,
// then the saved ebx, esi, edi. RtlUnwind tells the frames below that they are
// dropped; it comes back with esp and ebp as they were but may lose the other
// registers, hence they are restored from the frame.
extern "C" {
struct HostException {
  std::uint32_t code;
  std::uintptr_t address;
  std::uintptr_t first_argument;  // 0 when there is none
  std::uintptr_t second_argument;
  std::array<char, 512> text;  // of DICOM_DECODE_EXCEPTION
};

int host_call_with_frame(void (*function)(void*), void* argument,
                         HostException* exception);
int host_take_exception(EXCEPTION_RECORD* record, HostException* exception);
}

asm(R"(
    .text
    .balign 16
    .globl _host_call_with_frame
_host_call_with_frame:
    pushl %ebp
    movl %esp, %ebp
    pushl %ebx
    pushl %esi
    pushl %edi
    pushl %ebp
    pushl 16(%ebp)
    pushl $_host_exception_handler
    pushl %fs:0
    movl %esp, %fs:0
    movl 8(%ebp), %eax
    movl 12(%ebp), %ecx
    subl $12, %esp
    andl $-16, %esp
    subl $12, %esp
    pushl %ecx
    call *%eax
    xorl %eax, %eax
    leal -28(%ebp), %esp
_host_leave_frame:
    popl %fs:0
    addl $12, %esp
    popl %edi
    popl %esi
    popl %ebx
    popl %ebp
    ret

    .balign 16
_host_exception_handler:
    pushl %ebp
    movl %esp, %ebp
    movl 8(%ebp), %eax
    movl 12(%ebp), %ecx
    pushl 8(%ecx)
    pushl %eax
    call _host_take_exception
    addl $8, %esp
    testl %eax, %eax
    jz 2f
    pushl $0
    pushl 8(%ebp)
    pushl $1f
    pushl 12(%ebp)
    call _RtlUnwind@16
1:
    movl 12(%ebp), %esp
    movl 12(%esp), %ebp
    movl $1, %eax
    cld
    jmp _host_leave_frame
2:
    movl $1, %eax
    popl %ebp
    ret
)");

namespace {

constexpr std::uint32_t kErrorSeverity = 0xC0000000;

// The text may be anywhere or nowhere: it is read without trusting the address.
void CopyText(std::uintptr_t address, std::array<char, 512>& text) {
  SIZE_T copied = 0;
  std::size_t length = 0;
  while (length + 1 < text.size() &&
         ReadProcessMemory(GetCurrentProcess(),
                           reinterpret_cast<const void*>(address + length),
                           &text[length], 1, &copied) &&
         copied == 1 && text[length] != '\0') {
    ++length;
  }
  text[length] = '\0';
}

}  // namespace

// Answers whether the exception is ours to end the call with. Runs on the stack
// of the exception, which may have little room left.
int host_take_exception(EXCEPTION_RECORD* record, HostException* exception) {
  constexpr DWORD kUnwinding = 2, kExitUnwind = 4;
  if ((record->ExceptionFlags & (kUnwinding | kExitUnwind)) != 0) return 0;
  if ((record->ExceptionCode & kErrorSeverity) != kErrorSeverity) return 0;
  exception->code = record->ExceptionCode;
  exception->address =
      reinterpret_cast<std::uintptr_t>(record->ExceptionAddress);
  const DWORD arguments = record->NumberParameters;
  exception->first_argument =
      arguments > 0 ? record->ExceptionInformation[0] : 0;
  exception->second_argument =
      arguments > 1 ? record->ExceptionInformation[1] : 0;
  if (exception->code == DICOM_DECODE_EXCEPTION) {
    CopyText(exception->first_argument, exception->text);
  }
  return 1;
}

namespace host {
namespace {

constexpr std::uint32_t kForeignCppException = 0xE06D7363;  // another runtime's

const char* AccessName(std::uintptr_t kind) {
  return kind == 0 ? "reading" : kind == 1 ? "writing" : "executing";
}

std::string Describe(const HostException& exception) {
  switch (exception.code) {
    case DICOM_DECODE_EXCEPTION:
      return exception.text[0] != '\0' ? exception.text.data() : kNoText;
    case EXCEPTION_ACCESS_VIOLATION:
      return AccessViolationText(exception.address,
                                 AccessName(exception.first_argument),
                                 exception.second_argument);
    case EXCEPTION_STACK_OVERFLOW:
      return kStackOverflowText;
    case EXCEPTION_INT_DIVIDE_BY_ZERO:
      return DivisionByZeroText(exception.address);
    case kForeignCppException:
      return "a C++ exception that nobody handled";
    default:
      return OtherExceptionText(exception.code, exception.address);
  }
}

}  // namespace

std::optional<CallFailure> RunGuarded(void (*function)(void*), void* argument) {
  HostException exception{};
  if (host_call_with_frame(function, argument, &exception) == 0) return {};
  if (exception.code == EXCEPTION_STACK_OVERFLOW) _resetstkoflw();
  return CallFailure{exception.code, Describe(exception)};
}

}  // namespace host
