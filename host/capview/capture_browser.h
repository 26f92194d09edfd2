#ifndef HOST_CAPVIEW_CAPTURE_BROWSER_H_
#define HOST_CAPVIEW_CAPTURE_BROWSER_H_

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "host/capview/capture_document.h"
#include "host/capview/panes.h"
#include "host/capview/row_model.h"
#include "host/capview/row_navigator.h"
#include "host/capview/work_loop.h"

namespace host {

// Which capture the window shows, how it is read, and which of its connections
// is looked at; keeps the panes on what was read so far.
class CaptureBrowser {
 public:
  // All must outlive this. The window gets WM_TIMER with kFollowTimer while a
  // capture is followed.
  CaptureBrowser(HWND window, CaptureDocument& document, RowModel& model,
                 Panes& panes, bool clean_streams);

  static constexpr UINT_PTR kFollowTimer = 2;

  // Told after each Open().
  void OnOpened(std::function<void()> handler) {
    on_opened_ = std::move(handler);
  }

  // Empties the panes, as they are before there is a capture, or before it has
  // been read.
  void ShowNothing();
  // Shows another capture, of one or several files, without a filter; the row
  // is the one to begin with, counted from 0, if there is a choice. Throws
  // Failure; the old one stays.
  void Open(const CaptureNames& names, std::optional<std::uint32_t> row = {});
  // The same capture, read anew to its end and beyond, or no longer than it is.
  // The place is kept. Throws Failure.
  void ToggleFollow();
  bool IsFollowing() const { return follow_; }
  // How packets are handed over to the module, of this capture, read anew, and
  // of later ones. Throws Failure.
  void UseCleanStreams(bool clean_streams);
  bool UsesCleanStreams() const { return clean_streams_; }

  // By its index in the document. The module lists its rows when they were not
  // listed yet. Throws Failure when it cannot be loaded.
  void ChooseConnection(std::size_t connection);
  // Has the module decode the connection anew, after it went wrong; the file is
  // not read again. Throws Failure.
  void Reload();
  // Ends what takes long, and following; what is there stays.
  void Stop();
  // A followed capture may have grown.
  void LookAgain();

  // Takes the person to the finding, by its place among the document's: to its
  // connection, its row and the line of it.
  void GoToFinding(std::size_t index);
  // Takes the person to the row that was under way at a time of the capture.
  void GoToMoment(Nanoseconds time);
  // Told when a pane wants another height.
  void OnHeights(std::function<void()> handler) {
    on_heights_ = std::move(handler);
  }

  // A slice of the work that is left; false when there is none.
  bool Work();

  // The rows of the connection, and what is at work: for the commands.
  RowNavigator& Rows() { return rows_; }
  WorkLoop& Loop() { return loop_; }
  const WorkLoop& Loop() const { return loop_; }

 private:
  // Begins to read the capture into empty panes. Throws Failure; everything is
  // as before then.
  void Read(const CaptureNames& names, bool follow, bool clean_streams);
  // The open capture, in another way; connection and row are wanted again.
  void ReadAnew(bool follow, bool clean_streams);
  // While it is on, the timer says when to look for more.
  void SetFollow(bool follow);
  // Chooses the connection that is wanted when there is one. False while it has
  // not been read; one that does not come is given up at the end.
  bool IsConnectionThere();
  // Brings the panes up to what was read, now and then, and at the end.
  void ShowProgress();
  // When they are others than those that are shown.
  void ShowFindings();
  void ShowTimes();

  HWND window_;
  CaptureDocument& document_;
  RowModel& model_;
  Panes& panes_;
  WorkLoop loop_;
  RowNavigator rows_;
  std::function<void()> on_opened_;
  std::function<void()> on_heights_;
  unsigned shown_findings_ = 0;  // their version
  std::shared_ptr<const ConnectionTiming> shown_times_;
  bool follow_ = false;
  bool clean_streams_;
  std::optional<std::size_t> wanted_connection_;  // as soon as it is there
  DWORD next_update_ = 0;                         // of the panes, in ticks
};

}  // namespace host

#endif  // HOST_CAPVIEW_CAPTURE_BROWSER_H_
