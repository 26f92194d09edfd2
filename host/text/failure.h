#ifndef HOST_TEXT_FAILURE_H_
#define HOST_TEXT_FAILURE_H_

#include <stdexcept>

namespace host {

// The root of all that goes wrong in the host and that a person has to know.
// The text is one whole sentence in UTF-8, with a capital and a full stop. It
// says what went wrong and, behind a colon, what to do: "The file a.txt cannot
// be written (Access is denied): name another file with --save." It is shown as
// it is, by nobody mended.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace host

#endif  // HOST_TEXT_FAILURE_H_
