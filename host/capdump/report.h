#ifndef HOST_CAPDUMP_REPORT_H_
#define HOST_CAPDUMP_REPORT_H_

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/rows/decoded_row.h"
#include "host/rows/row_trace.h"
#include "host/streams/ae_titles.h"
#include "host/streams/connection.h"

namespace host {

// Takes what was written, UTF-8 with LF line ends.
using Sink = std::function<void(std::string_view)>;

struct ReportedConnection {
  std::uint32_t number = 0;  // in the capture, counted from 1
  const Connection* connection = nullptr;
  std::optional<AeTitles> ae_titles;
  std::size_t pdus = 0;  // rows of the module's lists
  std::size_t messages = 0;
  std::vector<std::string> notes;
};

// Writes what was found, as a text for people or as JSON for programs. Called
// in the order of the output: for each connection Begin, for each of its views
// the list and its rows. Parts that were not asked for are null.
class Report {
 public:
  virtual ~Report() = default;
  virtual void BeginCapture(const std::string& name, std::size_t connections,
                            std::size_t with_dicom) = 0;
  virtual void BeginConnection(const ReportedConnection& connection) = 0;
  virtual void BeginView(ListKind view,
                         const std::vector<ReportedRow>& rows) = 0;
  virtual void Row(const ReportedRow& row, const std::vector<TreeLine>* tree,
                   const std::string* hex, const std::string& stopped) = 0;
};

std::unique_ptr<Report> MakeTextReport(Sink sink);
std::unique_ptr<Report> MakeJsonReport(Sink sink);

}  // namespace host

#endif  // HOST_CAPDUMP_REPORT_H_
