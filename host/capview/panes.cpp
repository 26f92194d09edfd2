#include "host/capview/panes.h"

#include "host/capview/resource.h"
#include "host/text/number_text.h"

namespace host {
namespace {

// "bytes 54 to 55 (2)", counted from 0.
std::string MarkedBytesText(std::uint64_t offset, std::uint64_t length) {
  if (length == 0) return "no bytes";
  return "bytes " + NumberText(offset) + " to " +
         NumberText(offset + length - 1) + " (" + NumberText(length) + ")";
}

}  // namespace

Panes::Panes(HWND window, const CaptureDocument& document, RowModel& model)
    : bar(window, document),
      findings(window, IDC_FINDINGS),
      times(window, IDC_TIMES, document),
      rows(window, IDC_ROWS, model),
      tabs(window, IDC_TABS),
      decode(window),
      data_set(window, document),
      contexts(window, document),
      status(window) {
  const auto tell = [this](const auto& bytes) {  // none: no line is selected
    status.SetBytes(bytes ? MarkedBytesText(bytes->offset, bytes->length) : "");
  };
  decode.OnBytes(tell);
  data_set.OnBytes(tell);
  times.OnText([this](const std::string& text) { status.Say(text); });
  tabs.SetViews({&decode, &data_set, &contexts});
}

void Panes::SetFonts(const UiFonts& fonts) {
  bar.SetFonts(fonts);
  status.SetFonts(fonts);
  findings.SetFonts(fonts);
  times.SetFonts(fonts);
  rows.SetFonts(fonts);
  tabs.SetFonts(fonts);
  decode.SetFonts(fonts);
  data_set.SetFonts(fonts);
  contexts.SetFonts(fonts);
}

void Panes::Place(const PaneLayout& layout) {
  bar.Place(layout);
  findings.Place(layout.findings);
  times.Place(layout.times);
  rows.Place(layout);
  tabs.Place(layout);
  decode.Place(layout);
  data_set.Place(layout);
  contexts.Place(layout);
}

LRESULT Panes::Notify(NMHDR* header) {
  if (header->hwndFrom == rows.Handle()) return rows.Notify(header);
  if (header->hwndFrom == decode.Tree().Handle()) return decode.Notify(header);
  if (header->hwndFrom == data_set.Handle()) return data_set.Notify(header);
  if (header->hwndFrom == tabs.Handle()) return tabs.Notify(header);
  return 0;
}

bool Panes::IsReadOnlyText(HWND control) const {
  return control == decode.Hex().Handle() ||
         control == data_set.Hex().Handle() || control == contexts.Handle();
}

}  // namespace host
