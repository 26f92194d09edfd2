#ifndef HOST_CAPVIEW_CAPTURE_FINDINGS_H_
#define HOST_CAPVIEW_CAPTURE_FINDINGS_H_

#include <windows.h>

#include <cstddef>
#include <string>
#include <vector>

#include "host/findings/finding.h"
#include "host/findings/scene.h"
#include "host/streams/capture_loader.h"

namespace host {

// What is wrong in a capture, while it is read and afterwards. Of connections
// that are over, faults and warnings are found early, now and then, so that
// nobody waits for the end of the file to read of them; at the end all is
// looked at once more and as a whole.
class CaptureFindings {
 public:
  // Looks at what was read by now, if it is time to. True when the findings
  // have become others.
  bool Look(CaptureLoader& loader);

  // Worst first.
  const std::vector<Finding>& All() const { return findings_; }
  // Where nothing is worse than a note, a sentence that says so; empty as long
  // as that is not known.
  const std::string& Verdict() const { return verdict_; }

 private:
  // Whether enough time has passed since the last look, compared with what that
  // cost.
  bool IsTime() const;
  // False when no more connections are over than at the last look.
  bool LookEarly(TcpConnections& connections);
  void LookAtAll(CaptureLoader& loader);

  std::vector<Finding> findings_;
  std::string verdict_;
  std::size_t seen_ = 0;  // connections that were over at the last look
  bool is_whole_ = false;
  bool has_looked_ = false;
  DWORD looked_at_ = 0;  // in ticks
  DWORD cost_ = 0;       // of the last look, in milliseconds
};

}  // namespace host

#endif  // HOST_CAPVIEW_CAPTURE_FINDINGS_H_
