#include "host/capdump/progress_line.h"

#include "host/capdump/console.h"

namespace host {
namespace {

constexpr std::chrono::milliseconds kQuiet{1000};
constexpr std::chrono::milliseconds kBetween{200};
constexpr std::size_t kColumns = 78;
constexpr std::size_t kPercentColumns = 8;

}  // namespace

ProgressLine::ProgressLine()
    : terminal_(HasErrorTerminal()), next_(Clock::now() + kQuiet) {}

void ProgressLine::Show(std::string what, unsigned percent) {
  if (!terminal_) return;
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + kBetween;
  what.resize(kColumns - kPercentColumns, ' ');
  WriteToErrorTerminal("\r" + what + " " + std::to_string(percent) + " % ");
  shown_ = true;
}

void ProgressLine::Clear() {
  if (!shown_) return;
  WriteToErrorTerminal("\r" + std::string(kColumns, ' ') + "\r");
  shown_ = false;
}

}  // namespace host
