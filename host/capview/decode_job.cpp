#include "host/capview/decode_job.h"

#include <algorithm>
#include <utility>

#include "host/capview/ui_fonts.h"
#include "host/text/failure.h"
#include "host/text/number_text.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

constexpr int kPrintPoints = 8;  // some 110 characters in a line of A4

Paper PaperOf(HDC printer) {
  TEXTMETRICW font;
  GetTextMetricsW(printer, &font);
  Paper paper;
  paper.printer = printer;
  paper.line_height = font.tmHeight + font.tmExternalLeading;
  // The module counts lines from 1 and leaves the place of line 0 empty.
  paper.lines_per_page =
      std::max(GetDeviceCaps(printer, VERTRES) / paper.line_height - 2, 1);
  return paper;
}

}  // namespace

bool DecodeJob::Work(CaptureDocument& document, const TimeIsUp& time_is_up) {
  while (next_ < rows_.end && document.IsListed()) {
    if (!PutOut(document, {rows_.list, next_++}).empty()) ++failed_;
    if (time_is_up()) break;
  }
  return next_ < rows_.end;
}

unsigned DecodeJob::Percent() const {
  const std::uint64_t all = std::max(rows_.end - rows_.first, 1U);
  return static_cast<unsigned>(std::uint64_t{next_ - rows_.first} * 100 / all);
}

std::string DecodeJob::Finish() {
  std::string text =
      CountText(next_ - rows_.first, "decode was ", "decodes were ") + Target();
  if (failed_ != 0) {
    text += "; " + NumberText(failed_) + " of them stopped early";
  }
  return text + (next_ < rows_.end ? ", then it was stopped." : ".");
}

SaveJob::SaveJob(const RowRange& rows, const std::wstring& file_name)
    : DecodeJob(rows),
      name_(file_name),
      file_(file_name, "choose another file") {}

std::string SaveJob::PutOut(CaptureDocument& document, RowRef row) {
  return document.Save(row, file_.Handle());
}

std::string SaveJob::Target() const {
  return "saved to " + Utf8FromWide(name_);
}

PrintJob::PrintJob(const RowRange& rows, Printer printer)
    : DecodeJob(rows),
      font_(MakeFixedFont(kPrintPoints, static_cast<unsigned>(GetDeviceCaps(
                                            printer.get(), LOGPIXELSY)))),
      printer_(std::move(printer)) {
  DOCINFOW document{};
  document.cbSize = sizeof document;
  document.lpszDocName = L"DICOM decode";
  if (StartDocW(printer_.get(), &document) <= 0) {
    throw Failure("The printer takes no document: choose another printer.");
  }
  // The module draws with the font that is there.
  SelectObject(printer_.get(), font_.get());
  paper_ = PaperOf(printer_.get());
}

PrintJob::~PrintJob() { EndDoc(printer_.get()); }

// Every row begins on a page of its own.
std::string PrintJob::PutOut(CaptureDocument& document, RowRef row) {
  StartPage(printer_.get());
  std::string stopped = document.Print(row, paper_);
  EndPage(printer_.get());
  return stopped;
}

}  // namespace host
