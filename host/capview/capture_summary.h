#ifndef HOST_CAPVIEW_CAPTURE_SUMMARY_H_
#define HOST_CAPVIEW_CAPTURE_SUMMARY_H_

#include <string>

#include "host/capview/capture_document.h"
#include "host/capview/row_model.h"

namespace host {

// What the window says about a capture by itself, in UTF-8.

// One or a few sentences on an open capture, what a person looks for first:
// messages that failed, what is wrong with the connection, how much there is.
std::string CaptureSummary(const CaptureDocument& document, ListKind list);

// Why the list has no rows and what to do; empty while rows may still come.
std::string EmptyListText(const CaptureDocument& document,
                          const RowModel& model, bool busy);

// "15 PDUs", with a filter "2 of 15 PDUs".
std::string RowCountText(const RowModel& model);

}  // namespace host

#endif  // HOST_CAPVIEW_CAPTURE_SUMMARY_H_
