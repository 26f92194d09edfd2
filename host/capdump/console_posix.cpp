#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "host/capdump/console.h"
#include "host/text/failure.h"
#include "host/text/system_error.h"

namespace host {
namespace {

constexpr std::size_t kCollectedBytes = std::size_t{1} << 18;

[[noreturn]] void RaiseWriteFailure() {
  if (errno == EPIPE) throw ReaderGone();
  throw Failure("The output cannot be written (" +
                SystemErrorText(static_cast<unsigned long>(errno)) +
                "): check where it goes to.");
}

}  // namespace

void PrepareConsole() {
  ::signal(SIGPIPE, SIG_IGN);  // a write then fails
  std::setvbuf(stdout, nullptr, _IOFBF, kCollectedBytes);
}

void PassFirstInterrupt() {
  struct sigaction action {};
  if (::sigaction(SIGINT, nullptr, &action) != 0) return;
  if (action.sa_handler == SIG_IGN) return;  // by whoever has started us
  action.sa_handler = [](int) {};
  action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
  ::sigaction(SIGINT, &action, nullptr);
}

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

bool HasErrorTerminal() { return ::isatty(STDERR_FILENO) != 0; }

void WriteToErrorTerminal(std::string_view text) {
  [[maybe_unused]] const auto written =
      ::write(STDERR_FILENO, text.data(), text.size());
}

}  // namespace host
