#include "host/capview/export_job.h"

#include <algorithm>

#include "host/rows/row_trace.h"

namespace host {

ExportJob::ExportJob(const std::filesystem::path& folder)
    : files_(folder, {.objects = true, .identifiers = false}) {}

bool ExportJob::Work(CaptureDocument& document, const TimeIsUp& time_is_up) {
  do {
    if (!files_.Continue(time_is_up)) return true;
    is_whole_ = !BeginNext(document);
  } while (!is_whole_ && !time_is_up());
  return !is_whole_;
}

bool ExportJob::BeginNext(const CaptureDocument& document) {
  connections_ = document.ConnectionCount();
  for (; connection_ < connections_; ++connection_, message_ = 0) {
    const Connection& connection = document.ConnectionAt(connection_);
    const Dialogue* const dialogue = DialogueOf(connection);
    if (dialogue == nullptr || message_ >= dialogue->messages.size()) continue;
    if (message_ == 0) rows_ = ListedRows(connection.messages);
    const auto record = dialogue->messages[message_].record;
    const bool has_row = record && *record < rows_.size();
    files_.Begin({connection_, has_row ? rows_[*record] : std::nullopt,
                  message_, &connection.names()},
                 *dialogue);
    ++message_;
    return true;
  }
  return false;
}

// By connections, of which there are many where it takes long as a rule.
unsigned ExportJob::Percent() const {
  return static_cast<unsigned>(connection_ * 100 /
                               std::max<std::size_t>(connections_, 1));
}

std::string ExportJob::Finish() {
  if (files_.Objects().empty()) {
    return is_whole_ ? "There is no object to be saved: no C-STORE request was "
                       "found in clean streams."
                     : "Stopped before an object was saved.";
  }
  files_.WriteManifest();
  return (is_whole_ ? "" : "Stopped before the end. ") + files_.Summary();
}

}  // namespace host
