#include "host/capview/capture_browser.h"

#include "host/rows/finding_marks.h"

namespace host {
namespace {

constexpr DWORD kSliceMilliseconds = 25;
constexpr DWORD kFirstSliceMilliseconds = 10;  // until there are rows to show
constexpr DWORD kUpdateMilliseconds = 200;
constexpr UINT kFollowMilliseconds = 400;

}  // namespace

CaptureBrowser::CaptureBrowser(HWND window, CaptureDocument& document,
                               RowModel& model, Panes& panes,
                               bool clean_streams)
    : window_(window),
      document_(document),
      model_(model),
      panes_(panes),
      loop_(window, document, panes.status),
      rows_(document, model, panes, loop_),
      clean_streams_(clean_streams) {}

void CaptureBrowser::Open(const CaptureNames& names,
                          std::optional<std::uint32_t> row) {
  Read(names, false, clean_streams_);
  wanted_connection_.reset();
  panes_.bar.ClearFilter();
  model_.SortBy({});
  rows_.Want(row);
  if (on_opened_) on_opened_();
}

// Slices go on when the empty panes are painted.
void CaptureBrowser::Read(const CaptureNames& names, bool follow,
                          bool clean_streams) {
  document_.Open(
      names, clean_streams ? HandOver::kCleanStreams : HandOver::kAsCaptured,
      follow);
  model_.Reset();  // before anything is painted
  loop_.DropJob();
  clean_streams_ = clean_streams;
  SetFollow(follow);
  loop_.Start();
  next_update_ = GetTickCount();
  panes_.status.Hush();
  ShowFindings();
  ShowTimes();
  ShowNothing();
}

void CaptureBrowser::ReadAnew(bool follow, bool clean_streams) {
  const auto connection = document_.chosen();
  const auto row = panes_.rows.Selected();
  Read(CaptureNames(document_.names()), follow, clean_streams);
  wanted_connection_ = connection;
  rows_.Want(row);
}

void CaptureBrowser::SetFollow(bool follow) {
  follow_ = follow;
  if (follow) {
    SetTimer(window_, kFollowTimer, kFollowMilliseconds, nullptr);
  } else {
    KillTimer(window_, kFollowTimer);
  }
}

void CaptureBrowser::ToggleFollow() {
  if (!document_.IsOpen()) return;
  if (!follow_) return ReadAnew(true, clean_streams_);
  SetFollow(false);
  document_.Stop();
  loop_.Start();
  panes_.status.Hush();
  Work();
}

void CaptureBrowser::UseCleanStreams(bool clean_streams) {
  if (clean_streams == clean_streams_) return;
  if (document_.IsOpen()) return ReadAnew(follow_, clean_streams);
  clean_streams_ = clean_streams;
}

void CaptureBrowser::ChooseConnection(std::size_t connection) {
  document_.Choose(connection);
  wanted_connection_.reset();
  panes_.status.Hush();
  loop_.Start();
  ShowNothing();
  ShowTimes();
  Work();
}

// A filter might hide the row.
void CaptureBrowser::GoToFinding(std::size_t index) {
  if (index >= document_.Findings().size()) return;
  const Finding finding = document_.Findings()[index];  // others may come
  const auto record = finding.message ? finding.message : finding.pdu;
  const ListKind list = finding.message ? ListKind::kMessages : ListKind::kPdus;
  panes_.bar.ClearFilter();
  if (record) {
    rows_.ShowList(list);
    panes_.tabs.Choose(DetailTab::kDecode);
  }
  document_.Choose(finding.connection);
  if (record) {
    rows_.Want(
        document_.Trace(list)->RowOfRecord(*record),
        ByteOfFinding(finding, document_.ConnectionAt(finding.connection)));
  }
  ChooseConnection(finding.connection);
  if (record) return;
  panes_.status.Say(
      "This is about the connection as a whole, there is no row of it; the "
      "notes (Ctrl+I) may tell more.");
}

void CaptureBrowser::GoToMoment(Nanoseconds time) {
  if (const auto row = model_.RowAtTime(time)) panes_.rows.Select(row);
}

void CaptureBrowser::Reload() {
  if (!document_.IsOpen()) return;
  rows_.Want(panes_.rows.Selected());
  document_.Refresh();
  loop_.Start();
  panes_.status.Hush();
  Work();
}

void CaptureBrowser::Stop() {
  if (loop_.StopJob() || !document_.IsOpen()) return;
  const bool reading =
      document_.loader().state() == CaptureLoader::State::kReading;
  SetFollow(false);
  document_.Stop();
  if (!reading) return;
  panes_.status.Say(
      "Stopped; what was read is shown. F5 does not read on, open the capture "
      "again for all of it.");
}

void CaptureBrowser::LookAgain() {
  document_.LookAgain();
  loop_.Start();
}

void CaptureBrowser::ShowNothing() {
  rows_.Clear();
  panes_.bar.Connections().Update();
}

bool CaptureBrowser::Work() {
  if (loop_.IsInside()) return false;
  if (rows_.ShowPending()) return true;
  DataSetPane& data_set = panes_.data_set;
  if (data_set.IsBusy()) data_set.Work(kSliceMilliseconds);
  const bool empty = model_.Count() == 0;
  if (loop_.Slice(empty ? kFirstSliceMilliseconds : kSliceMilliseconds)) {
    ShowProgress();
  }
  return loop_.IsBusy() || rows_.IsPendingThere() || data_set.IsBusy();
}

// Painting takes longer than reading; what comes first is shown at once.
void CaptureBrowser::ShowProgress() {
  const DWORD now = GetTickCount();
  const bool is_due = static_cast<LONG>(now - next_update_) >= 0;
  if (!loop_.IsBusy() || model_.Count() == 0 || is_due) {
    next_update_ = now + kUpdateMilliseconds;
    panes_.bar.Connections().Update();
    if (IsConnectionThere()) rows_.Update();
  }
  ShowFindings();
  ShowTimes();
  panes_.status.SetProgress(loop_.Percent());
  panes_.status.Refresh();
}

void CaptureBrowser::ShowFindings() {
  if (document_.FindingsVersion() == shown_findings_) return;
  shown_findings_ = document_.FindingsVersion();
  panes_.findings.Show(document_.Findings(), document_.Verdict(),
                       document_.loader().names());
  if (model_.Count() > 0) rows_.Update();  // they mark rows
  if (on_heights_) on_heights_();
}

void CaptureBrowser::ShowTimes() {
  if (document_.Timing() == shown_times_) return;
  shown_times_ = document_.Timing();
  panes_.times.Update();
  if (model_.Count() > 0) rows_.Update();  // they have columns
  if (on_heights_) on_heights_();
}

bool CaptureBrowser::IsConnectionThere() {
  if (!wanted_connection_) return true;
  if (*wanted_connection_ < document_.ConnectionCount()) {
    document_.Choose(*wanted_connection_);
    model_.Reset();
  } else if (loop_.IsBusy()) {
    return false;
  }
  wanted_connection_.reset();
  return true;
}

}  // namespace host
