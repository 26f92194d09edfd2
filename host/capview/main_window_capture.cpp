// How the window follows what is being read and shows rows.

#include <windows.h>
// After windows.h.
#include <commctrl.h>

#include <exception>
#include <filesystem>
#include <new>
#include <system_error>
#include <utility>

#include "host/capview/main_window.h"
#include "host/capview/resource.h"
#include "host/text/number_text.h"
#include "host/text/text_encoding.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

constexpr DWORD kSliceMilliseconds = 25;
constexpr DWORD kFirstSliceMilliseconds = 10;  // until there are rows to show
constexpr DWORD kUpdateMilliseconds = 200;
constexpr UINT_PTR kWorkTimer = 1;  // keeps working while a menu is open
constexpr UINT_PTR kFollowTimer = 2;
constexpr UINT kWorkMilliseconds = 40;
constexpr UINT kFollowMilliseconds = 400;

TimeIsUp After(DWORD milliseconds) {
  const DWORD begin = GetTickCount();
  return [=] { return GetTickCount() - begin >= milliseconds; };
}

// Failures are told as capdump prints them, behind its name.
std::string WholeSentence(std::string text) {
  if (text.empty()) return text;
  if (text[0] >= 'a' && text[0] <= 'z') text[0] ^= 'a' ^ 'A';
  if (text.back() != '.') text += '.';
  return text;
}

}  // namespace

void MainWindow::Say(const std::string& sentence) {
  said_ = !sentence.empty();
  if (said_) {
    status_->SetText(WholeSentence(sentence));
  } else {
    ShowDone();
  }
}

void MainWindow::Open(const std::wstring& path) {
  follow_ = false;
  wanted_connection_.reset();
  wanted_row_.reset();
  OpenCapture(path, false);
}

// The same capture again, to be read in another way.
void MainWindow::Reopen() {
  if (!document_.IsOpen()) return;
  wanted_connection_ = document_.chosen();
  wanted_row_ = rows_->Selected();
  OpenCapture(document_.path().wstring(), true);
}

void MainWindow::OpenCapture(const std::wstring& path, bool keep_place) {
  job_.reset();
  try {
    document_.Open(path,
                   settings_.clean_streams ? HandOver::kCleanStreams
                                           : HandOver::kAsCaptured,
                   follow_);
  } catch (const std::exception& failure) {
    Say(failure.what());
    return;
  }
  if (!keep_place) {
    SetWindowTextW(filter_, L"");
    model_.SetFilter("");
  }
  std::error_code unknown;
  const auto whole_path = std::filesystem::absolute(path, unknown);
  settings_.AddRecentFile(unknown ? path : whole_path.wstring());
  was_busy_ = true;  // Work() is called when the empty panes are painted
  SetWindowTextW(
      window_, (document_.path().filename().wstring() + L" - capview").c_str());
  Say("");
  ShowNothing();
  KillTimer(window_, kFollowTimer);
  if (follow_) SetTimer(window_, kFollowTimer, kFollowMilliseconds, nullptr);
  next_update_ = GetTickCount();
}

// The panes before there is anything to show.
void MainWindow::ShowNothing() {
  pending_row_.reset();
  displayed_row_.reset();
  tree_->BeginFilling();
  document_.Clear(tree_->Handle(), hex_->Handle());
  tree_->EndFilling(0);
  hex_->Highlight({});
  model_.Reset();
  rows_->Select({});
  rows_->SetHint(EmptyListText());
  rows_->Update();
  connections_->Update();
  const bool messages = model_.view() == View::kMessages;
  CheckDlgButton(window_, IDC_PDUS, messages ? BST_UNCHECKED : BST_CHECKED);
  CheckDlgButton(window_, IDC_MESSAGES, messages ? BST_CHECKED : BST_UNCHECKED);
  status_->SetRows("");
  status_->SetBytes("");
  if (!document_.IsOpen()) {
    Say("Open a capture (Ctrl+O), or drop one here.");
  }
}

bool MainWindow::Work() {
  if (working_ || window_ == nullptr) return false;
  if (IsPendingRowThere()) {
    ShowPendingRow();
    return true;
  }
  working_ = true;
  bool more = false;
  try {
    const TimeIsUp time_is_up = After(
        model_.Count() == 0 ? kFirstSliceMilliseconds : kSliceMilliseconds);
    more = document_.Work(time_is_up);
    if (job_ && !more) {
      more = job_->Work(document_, time_is_up) || !document_.IsListed();
      if (!more) StopWork();
    }
  } catch (const std::bad_alloc&) {
    document_.Stop();
    Say("The capture does not fit into memory; what was read is shown.");
  } catch (const std::exception& failure) {
    Say(failure.what());
  }
  working_ = false;
  ShowProgress(more);
  return was_busy_ || IsPendingRowThere();
}

void MainWindow::LookAgain() {
  document_.LookAgain();
  was_busy_ = true;
}

void MainWindow::ShowProgress(bool more) {
  if (!document_.IsOpen()) return;
  if (!std::exchange(was_busy_, more) && !more) return;
  // Painting takes longer than reading; what comes first is shown at once.
  const DWORD now = GetTickCount();
  const bool first = model_.Count() == 0;
  if (!more || first || static_cast<LONG>(now - next_update_) >= 0) {
    next_update_ = now + kUpdateMilliseconds;
    connections_->Update();
    ShowRows();
  }
  const bool job = job_ && document_.IsListed();
  status_->SetProgress(
      more ? std::optional(job ? job_->Percent() : document_.Percent())
           : std::nullopt);
  if (more) {
    SetTimer(window_, kWorkTimer, kWorkMilliseconds, nullptr);
  } else {
    KillTimer(window_, kWorkTimer);
  }
  if (!said_) ShowDone();
}

void MainWindow::ShowRows() {
  TakePlaces();
  model_.Update();
  rows_->SetHint(EmptyListText());
  rows_->Update();
  const std::string count = NumberText(model_.Count());
  const char* kind = model_.view() == View::kPdus ? " PDUs" : " messages";
  status_->SetRows(model_.IsFiltered()
                       ? NumberText(model_.ShownCount()) + " of " + count + kind
                       : count + kind);
  if (wanted_row_ && *wanted_row_ < model_.Count()) {
    rows_->Mark(wanted_row_);
    pending_row_ = std::exchange(wanted_row_, {});
  }
}

void MainWindow::TakePlaces() {
  if (wanted_connection_ && *wanted_connection_ < document_.ConnectionCount()) {
    document_.Choose(*wanted_connection_);
    wanted_connection_.reset();
    model_.Reset();
  }
  // The first row is shown as soon as it is there.
  const bool nothing = !displayed_row_ && !wanted_row_ && !pending_row_;
  if (nothing && !wanted_connection_ && !model_.IsFiltered()) wanted_row_ = 0;
}

std::wstring MainWindow::EmptyListText() const {
  if (!document_.IsOpen()) return L"Open a capture (Ctrl+O), or drop one here.";
  if (model_.Count() > 0) return L"No row passes the filter; Esc clears it.";
  if (was_busy_) return L"";
  if (!document_.chosen()) return L"This capture holds no TCP connection.";
  if (!document_.ConnectionAt(*document_.chosen()).carries_dicom) {
    return L"No DICOM was found in this connection; choose another (Ctrl+K).";
  }
  return model_.view() == View::kPdus
             ? L"This connection has no PDUs."
             : L"This connection has no messages; Ctrl+1 shows its PDUs.";
}

// What is left to say when nothing else is.
void MainWindow::ShowDone() {
  if (!document_.IsOpen()) return;
  status_->SetText(was_busy_ ? "Reading; Esc stops." : CaptureText());
}

// What a person looks for first.
std::string MainWindow::FailedText() const {
  if (!document_.chosen()) return {};
  const auto [count, first] = document_.FailedMessages(*document_.chosen());
  if (count > 0) {
    const bool here = model_.view() == View::kMessages;
    return CountText(count, "message failed: row ",
                     "messages failed, the first in row ") +
           NumberText(first + 1) + (here ? ". " : " of the messages, Ctrl+2. ");
  }
  for (std::size_t i = 0; i < document_.ConnectionCount(); ++i) {
    if (document_.FailedMessages(i).count == 0) continue;
    return "A message of connection " + NumberText(i + 1) +
           " failed; Ctrl+K lists such connections in red. ";
  }
  return {};
}

std::string MainWindow::CaptureText() const {
  const std::string failed = FailedText();
  const auto notes = document_.Notes();
  if (!notes.empty()) {
    return failed + WholeSentence(notes[0]) +
           (document_.HasModuleFailed() ? " F5 lets the module try again."
                                        : "") +
           (notes.size() == 1
                ? ""
                : " (" + std::to_string(notes.size()) + " notes, Ctrl+I)");
  }
  std::size_t dicom = 0;
  for (std::size_t i = 0; i < document_.ConnectionCount(); ++i) {
    dicom += document_.ConnectionAt(i).carries_dicom;
  }
  return failed + (follow_ ? "Following the file: " : "") +
         CountText(document_.ConnectionCount(), "TCP connection, ",
                   "TCP connections, ") +
         NumberText(dicom) + " with DICOM.";
}

void MainWindow::ChooseConnection(std::size_t connection) {
  document_.Choose(connection);
  said_ = false;
  was_busy_ = true;
  ShowNothing();
  Work();
}

void MainWindow::ShowRow(std::uint32_t position) {
  pending_row_ = position;
  if (std::exchange(said_, false)) ShowDone();
  ShowPendingRow();
}

bool MainWindow::IsPendingRowThere() const {
  return pending_row_ && *pending_row_ < document_.Available(model_.view());
}

void MainWindow::ShowPendingRow() {
  if (!IsPendingRowThere()) return;
  const std::uint32_t position = *pending_row_;
  pending_row_.reset();
  displayed_row_ = position;
  hex_->Highlight({});
  status_->SetBytes("");
  tree_->BeginFilling();
  const std::string stopped = document_.Display(
      model_.view(), position, tree_->Handle(), hex_->Handle(),
      {settings_.show_message_data, settings_.expand_mask});
  tree_->EndFilling(settings_.expand_mask);
  if (std::exchange(find_when_shown_, false)) FindNext();
  if (!stopped.empty()) {
    Say("Row " + NumberText(position + 1) +
        " could not be decoded to its end (" +
        PrintableFromCodePage1252(stopped) +
        "); the module was loaded again, choose another row.");
    was_busy_ = true;
  }
}

void MainWindow::ShowBytes() {
  const auto bytes = tree_->SelectedBytes();
  hex_->Highlight(bytes);
  if (!bytes) {
    status_->SetBytes("");
  } else if (bytes->length == 0) {
    status_->SetBytes("no bytes");
  } else {
    status_->SetBytes("bytes " + NumberText(bytes->offset) + " to " +
                      NumberText(bytes->offset + bytes->length - 1) + " (" +
                      NumberText(bytes->length) + ")");
  }
}

}  // namespace host
