#ifndef HOST_CAPDUMP_PROGRESS_LINE_H_
#define HOST_CAPDUMP_PROGRESS_LINE_H_

#include <chrono>
#include <string>

namespace host {

// What a long run is at, on standard error, rewritten in place; nothing when
// standard error is no terminal, and nothing in the first second.
class ProgressLine {
 public:
  ProgressLine();
  ~ProgressLine() { Clear(); }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  // Says what is done and how far it has come, as "decoding connection 1 of 2
  // 40 %". Cheap to call often; the line changes a few times a second.
  void Show(std::string what, unsigned percent);
  // Removes the line, before other output.
  void Clear();

 private:
  using Clock = std::chrono::steady_clock;

  bool terminal_;
  bool shown_ = false;
  Clock::time_point next_;  // from which on the line may change again
};

}  // namespace host

#endif  // HOST_CAPDUMP_PROGRESS_LINE_H_
