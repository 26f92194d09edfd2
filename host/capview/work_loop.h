#ifndef HOST_CAPVIEW_WORK_LOOP_H_
#define HOST_CAPVIEW_WORK_LOOP_H_

#include <windows.h>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "host/capview/capture_document.h"
#include "host/capview/job.h"
#include "host/capview/status_line.h"

namespace host {

// Does what takes long in short slices between the person's messages: reads the
// capture, has the connection listed, saves or prints. Everything runs on the
// window's thread.
class WorkLoop {
 public:
  // Document and status line must outlive this. While work is left, the window
  // gets WM_TIMER with kTimer, so that slices go on in menus and dialogs, too.
  WorkLoop(HWND window, CaptureDocument& document, StatusLine& status);

  static constexpr UINT_PTR kTimer = 1;

  // There is something to do, or at least to show, with the next slice.
  void Start() { busy_ = true; }
  bool IsBusy() const { return busy_; }

  // One slice. What goes wrong is said in the status line. True when there may
  // be something new to show.
  bool Slice(DWORD milliseconds);
  // How far the work has come, in per cent; empty when it is done.
  std::optional<unsigned> Percent() const;

  // Whether a slice is at work: the module lets messages in while it lists, but
  // neither it nor the document may be called by what they ask for.
  bool IsInside() const { return inside_; }
  // Does it now, or after the slice that is at work.
  void RunOutside(std::function<void()> action);

  // Does it as soon as the connection is listed, in place of an earlier job.
  void StartJob(std::unique_ptr<Job> job);
  // Ends the job early and says how far it came; false without a job.
  bool StopJob();
  // Ends it without a word.
  void DropJob() { job_.reset(); }

 private:
  // Document first, then the job. True when something is left to do.
  bool Work(DWORD milliseconds);
  // A job that fails is dropped.
  bool WorkAtJob(const TimeIsUp& time_is_up);
  // On while work is left.
  void UpdateTimer() const;
  void RunWaiting();

  HWND window_;
  CaptureDocument& document_;
  StatusLine& status_;
  std::unique_ptr<Job> job_;
  bool busy_ = false;
  bool inside_ = false;
  std::vector<std::function<void()>> waiting_;  // for the slice's end
};

}  // namespace host

#endif  // HOST_CAPVIEW_WORK_LOOP_H_
