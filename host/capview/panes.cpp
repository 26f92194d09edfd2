#include "host/capview/panes.h"

#include "host/capview/resource.h"
#include "host/text/number_text.h"

namespace host {
namespace {

// "bytes 54 to 55 (2)", counted from 0; empty when no line is selected.
std::string MarkedBytesText(const std::optional<ByteRange>& bytes) {
  if (!bytes) return {};
  if (bytes->length == 0) return "no bytes";
  return "bytes " + NumberText(bytes->offset) + " to " +
         NumberText(std::uint64_t{bytes->offset} + bytes->length - 1) + " (" +
         NumberText(bytes->length) + ")";
}

}  // namespace

Panes::Panes(HWND window, const CaptureDocument& document, RowModel& model)
    : bar(window, document),
      findings(window, IDC_FINDINGS),
      rows(window, IDC_ROWS, model),
      decode(window),
      status(window) {
  decode.OnBytes([this](const std::optional<ByteRange>& bytes) {
    status.SetBytes(MarkedBytesText(bytes));
  });
}

void Panes::SetFonts(const UiFonts& fonts) {
  bar.SetFonts(fonts);
  status.SetFonts(fonts);
  findings.SetFonts(fonts);
  rows.SetFonts(fonts);
  decode.SetFonts(fonts);
}

void Panes::Place(const PaneLayout& layout) {
  bar.Place(layout);
  findings.Place(layout.findings);
  rows.Place(layout);
  decode.Place(layout);
}

LRESULT Panes::Notify(NMHDR* header) {
  if (header->hwndFrom == rows.Handle()) return rows.Notify(header);
  if (header->hwndFrom == decode.Tree().Handle()) return decode.Notify(header);
  return 0;
}

}  // namespace host
