#ifndef HOST_CAPDUMP_REPORT_H_
#define HOST_CAPDUMP_REPORT_H_

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/rows/decoded_row.h"
#include "host/rows/reported_row.h"
#include "host/streams/ae_titles.h"
#include "host/streams/connection.h"

namespace host {

// Takes what was written, UTF-8 with LF line ends.
using Sink = std::function<void(std::string_view)>;

// What is said of a connection before its lists.
struct ReportedConnection {
  std::size_t index = 0;  // in the capture, from 0
  const Connection* connection = nullptr;
  std::optional<AeTitles> ae_titles;
  std::size_t pdus = 0;  // rows of the module's lists
  std::size_t messages = 0;
  std::vector<std::string> notes;  // the connection's and those of its lists
};

// Writes what was found, as a text for people or as JSON for programs. Called
// in the order of the output: for each connection BeginConnection, for each of
// its lists BeginList and its rows. What is handed over is looked at during the
// call only, but for the connection and the rows of BeginList, which stay until
// the next one.
class Report {
 public:
  virtual ~Report() = default;
  // The capture's name as it was given, and how many connections it holds.
  virtual void BeginCapture(const std::string& name, std::size_t connections,
                            std::size_t with_dicom) = 0;
  // In its place, behind all connections of a capture that was shown before it
  // had ended.
  virtual void EndCapture(const std::string& name, std::size_t connections,
                          std::size_t with_dicom) = 0;
  virtual void BeginConnection(const ReportedConnection& connection) = 0;
  // All rows at once, since columns are as wide as their widest text.
  virtual void BeginList(ListKind list,
                         const std::vector<ReportedRow>& rows) = 0;
  // More rows of a list that was begun, or not; those of other lists and
  // connections may stand between. In place of the two above for what comes
  // bit by bit.
  virtual void Continue(const ReportedConnection& connection, ListKind list,
                        const std::vector<ReportedRow>& rows) = 0;
  // `decode` holds what was asked for, or nothing.
  virtual void Row(const ReportedRow& row, const DecodedRow& decode) = 0;
};

// Both hand on what they write a line or a block at a time, and keep none of
// it.
std::unique_ptr<Report> MakeTextReport(Sink sink);
std::unique_ptr<Report> MakeJsonReport(Sink sink);

}  // namespace host

#endif  // HOST_CAPDUMP_REPORT_H_
