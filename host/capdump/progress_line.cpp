#include "host/capdump/progress_line.h"

#include <windows.h>
#include <io.h>

#include <cstdio>
#include <string>

namespace host {
namespace {

constexpr unsigned long kQuietMilliseconds = 1000;
constexpr unsigned long kBetweenMilliseconds = 200;
constexpr std::size_t kColumns = 78;
constexpr std::size_t kPercentColumns = 8;

// At once: the runtime would write it to a console character by character.
void Write(const std::string& text) {
  _write(_fileno(stderr), text.data(), static_cast<unsigned>(text.size()));
}

}  // namespace

ProgressLine::ProgressLine()
    : terminal_(_isatty(_fileno(stderr)) != 0),
      next_(GetTickCount() + kQuietMilliseconds) {}

void ProgressLine::Show(std::string what, unsigned percent) {
  if (!terminal_) return;
  const unsigned long now = GetTickCount();
  if (static_cast<long>(now - next_) < 0) return;
  next_ = now + kBetweenMilliseconds;
  what.resize(kColumns - kPercentColumns, ' ');
  Write("\r" + what + " " + std::to_string(percent) + " % ");
  shown_ = true;
}

void ProgressLine::Clear() {
  if (!shown_) return;
  Write("\r" + std::string(kColumns, ' ') + "\r");
  shown_ = false;
}

}  // namespace host
