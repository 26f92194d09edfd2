#include "host/capview/capture_summary.h"

#include <algorithm>

#include "host/text/number_text.h"

namespace host {
namespace {

std::string FailedText(const CaptureDocument& document, ListKind list) {
  if (!document.chosen()) return {};
  const auto [count, first] = document.FailedMessages(*document.chosen());
  if (count > 0) {
    return CountText(count, "message failed: row ",
                     "messages failed, the first in row ") +
           std::to_string(first + 1) +
           (list == ListKind::kMessages ? ". " : " of the messages, Ctrl+2. ");
  }
  for (std::size_t i = 0; i < document.ConnectionCount(); ++i) {
    if (document.FailedMessages(i).count == 0) continue;
    return "A message of connection " + std::to_string(i + 1) +
           " failed; Ctrl+K lists such connections in red. ";
  }
  return {};
}

// How much was found; the findings themselves are above the rows.
std::string FindingsText(const CaptureDocument& document) {
  const auto count = [&document](Severity severity) {
    return static_cast<std::size_t>(
        std::ranges::count(document.Findings(), severity, &Finding::severity));
  };
  const std::size_t faults = count(Severity::kFault);
  const std::size_t warnings = count(Severity::kWarning);
  std::string text;
  if (faults > 0) text = CountText(faults, "fault", "faults");
  if (warnings > 0) {
    if (!text.empty()) text += ", ";
    text += CountText(warnings, "warning", "warnings");
  }
  return text.empty() ? text : text + ". ";
}

// The first note, and how many there are.
std::string NotesText(const CaptureDocument& document) {
  const auto notes = document.Notes();
  if (notes.empty()) return {};
  std::string text = notes[0];
  if (document.HasModuleFailed()) text += " F5 lets the module try again.";
  if (notes.size() > 1) {
    text += " (" + NumberText(notes.size()) + " notes, Ctrl+I)";
  }
  return text;
}

std::string ConnectionsText(const CaptureDocument& document) {
  std::size_t dicom = 0;
  for (std::size_t i = 0; i < document.ConnectionCount(); ++i) {
    dicom += document.ConnectionAt(i).carries_dicom;
  }
  const bool following =
      document.loader().state() == CaptureLoader::State::kFollowing;
  return (following ? "Following the file: " : "") +
         CountText(document.ConnectionCount(), "TCP connection, ",
                   "TCP connections, ") +
         NumberText(dicom) + " with DICOM.";
}

}  // namespace

std::string CaptureSummary(const CaptureDocument& document, ListKind list) {
  const std::string notes = NotesText(document);
  return FindingsText(document) + FailedText(document, list) +
         (notes.empty() ? ConnectionsText(document) : notes);
}

std::string EmptyListText(const CaptureDocument& document,
                          const RowModel& model, bool busy) {
  if (!document.IsOpen()) return "Open a capture (Ctrl+O), or drop one here.";
  if (model.Count() > 0) return "No row passes the filter; Esc clears it.";
  if (busy) return {};
  if (!document.chosen()) return "This capture holds no TCP connection.";
  if (!document.ConnectionAt(*document.chosen()).carries_dicom) {
    return "No DICOM was found in this connection; choose another (Ctrl+K).";
  }
  return model.list() == ListKind::kPdus
             ? "This connection has no PDUs."
             : "This connection has no messages; Ctrl+1 shows its PDUs.";
}

std::string RowCountText(const RowModel& model) {
  const std::string count =
      NumberText(model.Count()) +
      (model.list() == ListKind::kPdus ? " PDUs" : " messages");
  return model.IsFiltered() ? NumberText(model.ShownCount()) + " of " + count
                            : count;
}

}  // namespace host
