#ifndef HOST_CAPDUMP_PROGRESS_LINE_H_
#define HOST_CAPDUMP_PROGRESS_LINE_H_

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

  // Cheap to call often.
  void Show(std::string what, unsigned percent);
  // Removes the line, before other output.
  void Clear();

 private:
  bool terminal_;
  bool shown_ = false;
  unsigned long next_ = 0;  // tick from which the line may change again
};

}  // namespace host

#endif  // HOST_CAPDUMP_PROGRESS_LINE_H_
