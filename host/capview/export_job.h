#ifndef HOST_CAPVIEW_EXPORT_JOB_H_
#define HOST_CAPVIEW_EXPORT_JOB_H_

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/capview/job.h"
#include "host/objects/object_export.h"

namespace host {

// Saves the objects of all connections as DICOM files, and a manifest of those
// that were saved when it ends.
class ExportJob final : public Job {
 public:
  // Makes the folder if it is not there. Throws Failure when it cannot.
  explicit ExportJob(const std::filesystem::path& folder);

  bool Work(CaptureDocument& document, const TimeIsUp& time_is_up) override;
  unsigned Percent() const override;
  std::string Finish() override;

 private:
  // The next message of the capture; false behind the last one.
  bool BeginNext(const CaptureDocument& document);

  ObjectExport files_;
  std::size_t connection_ = 0;  // that it is at
  std::size_t message_ = 0;     // the next one of its dialogue
  std::vector<std::optional<std::size_t>> rows_;  // of its records
  std::size_t connections_ = 1;                   // as many as there are
  bool is_whole_ = false;                         // all messages were looked at
};

}  // namespace host

#endif  // HOST_CAPVIEW_EXPORT_JOB_H_
