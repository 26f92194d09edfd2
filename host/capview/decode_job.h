#ifndef HOST_CAPVIEW_DECODE_JOB_H_
#define HOST_CAPVIEW_DECODE_JOB_H_

#include <windows.h>

#include <cstdint>
#include <memory>
#include <string>

#include "host/capview/capture_document.h"
#include "host/capview/ui_fonts.h"
#include "host/module/save_file.h"

namespace host {

// The rows whose decodes are written or printed: [next, end) of a view.
struct JobRows {
  View view = View::kPdus;
  std::uint32_t next = 0;
  std::uint32_t end = 0;
};

// Saves or prints the decodes of rows, one after the other, in slices.
class DecodeJob {
 public:
  explicit DecodeJob(const JobRows& rows) : rows_(rows), first_(rows.next) {}
  virtual ~DecodeJob() = default;

  // Does rows until the time is up; the document has to be listed. True when
  // there are more.
  bool Work(CaptureDocument& document, const TimeIsUp& time_is_up);
  unsigned Percent() const;
  // One sentence for the user; `stopped` when it was ended early.
  std::string Report(bool stopped) const;

 protected:
  // Answers why the row stopped early, or nothing.
  virtual std::string DoRow(CaptureDocument& document, View view,
                            std::uint32_t position) = 0;
  virtual std::string Target() const = 0;  // "saved to x.txt"

 private:
  JobRows rows_;
  std::uint32_t first_;
  std::uint32_t failed_ = 0;
};

class SaveJob final : public DecodeJob {
 public:
  // Throws Failure.
  SaveJob(const JobRows& rows, const std::wstring& file_name);

 protected:
  std::string DoRow(CaptureDocument& document, View view,
                    std::uint32_t position) override;
  std::string Target() const override;

 private:
  std::wstring name_;
  SaveFile file_;
};

class PrintJob final : public DecodeJob {
 public:
  // Takes the printer over. Throws Failure.
  PrintJob(const JobRows& rows, HDC printer);
  ~PrintJob() override;

 protected:
  std::string DoRow(CaptureDocument& document, View view,
                    std::uint32_t position) override;
  std::string Target() const override { return "sent to the printer"; }

 private:
  HDC printer_;
  Font font_;
  CaptureDocument::Paper paper_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_DECODE_JOB_H_
