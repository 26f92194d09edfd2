#ifndef HOST_CAPVIEW_DECODE_JOB_H_
#define HOST_CAPVIEW_DECODE_JOB_H_

#include <windows.h>

#include <cstdint>
#include <string>

#include "host/capview/job.h"
#include "host/capview/owned_handles.h"
#include "host/module/save_file.h"

namespace host {

// Rows [first, end) of a list, counted from 0.
struct RowRange {
  ListKind list = ListKind::kPdus;
  std::uint32_t first = 0;
  std::uint32_t end = 0;
};

// Saves or prints the decodes of rows, one after the other.
class DecodeJob : public Job {
 public:
  explicit DecodeJob(const RowRange& rows) : rows_(rows), next_(rows.first) {}

  // At least by one row; waits while the document is not listed.
  bool Work(CaptureDocument& document, const TimeIsUp& time_is_up) override;
  unsigned Percent() const override;
  std::string Finish() override;

 protected:
  // Saves or prints one row; answers why it stopped early, or nothing.
  virtual std::string PutOut(CaptureDocument& document, RowRef row) = 0;
  // Where the rows went, as a part of the report: "saved to x.txt".
  virtual std::string Target() const = 0;

 private:
  RowRange rows_;
  std::uint32_t next_;
  std::uint32_t failed_ = 0;  // rows that stopped early
};

// Writes the lines, as the module saves them, one row after the other.
class SaveJob final : public DecodeJob {
 public:
  // Begins the file anew. Throws Failure when it cannot be written.
  SaveJob(const RowRange& rows, const std::wstring& file_name);

 protected:
  std::string PutOut(CaptureDocument& document, RowRef row) override;
  std::string Target() const override;

 private:
  std::wstring name_;
  SaveFile file_;
};

// Draws the lines, each row from a new page on, in a fixed font.
class PrintJob final : public DecodeJob {
 public:
  // Begins a document, which ends with the job. Throws Failure when the printer
  // takes none.
  PrintJob(const RowRange& rows, Printer printer);
  ~PrintJob() override;

 protected:
  std::string PutOut(CaptureDocument& document, RowRef row) override;
  std::string Target() const override { return "sent to the printer"; }

 private:
  Font font_;  // outlives the printer, which has it selected
  Printer printer_;
  Paper paper_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_DECODE_JOB_H_
