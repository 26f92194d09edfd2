#include "host/capview/decode_job.h"

#include <algorithm>

#include "host/text/failure.h"
#include "host/text/number_text.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

constexpr int kPrintPoints = 8;  // some 110 characters in a line of A4

}  // namespace

bool DecodeJob::Work(CaptureDocument& document, const TimeIsUp& time_is_up) {
  while (rows_.next < rows_.end && document.IsListed()) {
    if (!DoRow(document, rows_.view, rows_.next++).empty()) ++failed_;
    if (time_is_up()) break;
  }
  return rows_.next < rows_.end;
}

unsigned DecodeJob::Percent() const {
  const std::uint64_t all = std::max(rows_.end - first_, 1U);
  return static_cast<unsigned>(std::uint64_t{rows_.next - first_} * 100 / all);
}

std::string DecodeJob::Report(bool stopped) const {
  const std::uint32_t done = rows_.next - first_;
  std::string text = NumberText(done) +
                     (done == 1 ? " decode was " : " decodes were ") + Target();
  if (failed_ != 0) {
    text += "; " + NumberText(failed_) + " of them stopped early";
  }
  return text + (stopped ? ", then it was stopped." : ".");
}

SaveJob::SaveJob(const JobRows& rows, const std::wstring& file_name)
    : DecodeJob(rows),
      name_(file_name),
      file_(file_name, "choose another file") {}

std::string SaveJob::DoRow(CaptureDocument& document, View view,
                           std::uint32_t position) {
  return document.Save(view, position, file_.Handle());
}

std::string SaveJob::Target() const {
  return "saved to " + Utf8FromWide(name_);
}

PrintJob::PrintJob(const JobRows& rows, HDC printer)
    : DecodeJob(rows),
      printer_(printer),
      font_(MakeFixedFont(kPrintPoints, static_cast<unsigned>(GetDeviceCaps(
                                            printer, LOGPIXELSY)))) {
  DOCINFOW document{};
  document.cbSize = sizeof document;
  document.lpszDocName = L"DICOM decode";
  if (StartDocW(printer_, &document) <= 0) {
    DeleteDC(printer_);
    throw Failure("the printer takes no document; choose another printer");
  }
  SelectObject(printer_, font_.get());  // the module draws with what is there
  TEXTMETRICW font;
  GetTextMetricsW(printer_, &font);
  paper_.printer = printer_;
  paper_.line_height = font.tmHeight + font.tmExternalLeading;
  // The module counts lines from 1 and leaves the place of line 0 empty.
  paper_.lines_per_page =
      std::max(GetDeviceCaps(printer_, VERTRES) / paper_.line_height - 2, 1);
}

PrintJob::~PrintJob() {
  EndDoc(printer_);
  DeleteDC(printer_);
}

// Every row begins on a page of its own.
std::string PrintJob::DoRow(CaptureDocument& document, View view,
                            std::uint32_t position) {
  StartPage(printer_);
  std::string stopped = document.Print(view, position, paper_);
  EndPage(printer_);
  return stopped;
}

}  // namespace host
