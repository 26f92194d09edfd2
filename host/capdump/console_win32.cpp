#include <windows.h>
#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <string>

#include "host/capdump/console.h"
#include "host/text/failure.h"
#include "host/text/system_error.h"

namespace host {
namespace {

constexpr std::size_t kCollectedBytes = std::size_t{1} << 18;

[[noreturn]] void RaiseWriteFailure() {
  const DWORD error = GetLastError();
  const auto output = reinterpret_cast<HANDLE>(_get_osfhandle(1));
  if (GetFileType(output) == FILE_TYPE_PIPE) throw ReaderGone();
  throw Failure("The output cannot be written (" + SystemErrorText(error) +
                "): check where it goes to.");
}

BOOL WINAPI PassOnce(DWORD event) {
  static LONG passed = 0;
  return event == CTRL_C_EVENT && InterlockedExchange(&passed, 1) == 0;
}

}  // namespace

void PrepareConsole() {
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
  SetConsoleOutputCP(CP_UTF8);
  std::setvbuf(stdout, nullptr, _IOFBF, kCollectedBytes);
}

void PassFirstInterrupt() { SetConsoleCtrlHandler(PassOnce, TRUE); }

void WriteOutput(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
    RaiseWriteFailure();
  }
}

void FlushOutput() {
  if (std::fflush(stdout) != 0) RaiseWriteFailure();
}

void Complain(std::string_view sentence) {
  std::fflush(stdout);
  std::fprintf(stderr, "capdump: %s\n", std::string(sentence).c_str());
}

bool HasErrorTerminal() { return _isatty(_fileno(stderr)) != 0; }

// The runtime would write it to a console character by character.
void WriteToErrorTerminal(std::string_view text) {
  _write(_fileno(stderr), text.data(), static_cast<unsigned>(text.size()));
}

}  // namespace host
