#ifndef HOST_TEXT_FAILURE_H_
#define HOST_TEXT_FAILURE_H_

#include <stdexcept>

namespace host {

// Something that the user has to know. The text is one sentence that says what
// went wrong and what to do, in UTF-8.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace host

#endif  // HOST_TEXT_FAILURE_H_
