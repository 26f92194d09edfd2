#ifndef HOST_CAPVIEW_JOB_H_
#define HOST_CAPVIEW_JOB_H_

#include <string>

#include "host/capview/capture_document.h"

namespace host {

// Something that takes long and is done in slices, when the capture has been
// read. Ends early by being finished, or by being dropped, without a word.
class Job {
 public:
  Job() = default;
  virtual ~Job() = default;
  Job(const Job&) = delete;
  Job& operator=(const Job&) = delete;

  // Goes on until the time is up. True when there is more to do. Throws Failure
  // when it cannot go on.
  virtual bool Work(CaptureDocument& document, const TimeIsUp& time_is_up) = 0;
  // Of what there is to do, done by now.
  virtual unsigned Percent() const = 0;
  // Ends it: one sentence on what was done. Throws Failure.
  virtual std::string Finish() = 0;
};

}  // namespace host

#endif  // HOST_CAPVIEW_JOB_H_
