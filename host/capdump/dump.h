#ifndef HOST_CAPDUMP_DUMP_H_
#define HOST_CAPDUMP_DUMP_H_

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include "host/capdump/options.h"
#include "host/capdump/progress_line.h"
#include "host/capdump/report.h"
#include "host/module/decode_controls.h"
#include "host/module/module.h"
#include "host/module/module_session.h"
#include "host/module/save_file.h"
#include "host/rows/reported_row.h"
#include "host/streams/connection.h"

namespace host {

// The module that the options name, or the one beside this program.
std::filesystem::path ModulePath(const Options& options);

// Reports the row with what `decode` answers; where memory does not suffice for
// that, with a sentence that says so.
void ReportDecoded(Report& report, const ReportedRow& row,
                   const std::function<DecodedRow()>& decode);

// Shows the connections of one capture through the module, as a report on
// standard output.
class Dump {
 public:
  // The options must outlive it. Throws Failure when the module cannot be
  // loaded or the file for --save cannot be written.
  explicit Dump(const Options& options);

  // Throws UsageError when the row that was asked for is not there, and Failure
  // as ModuleSession and the output do. `name` is that of the capture.
  void Show(const std::string& name,
            const std::vector<Connection>& connections);
  // In place of Show(): a connection before the capture has ended, and then
  // those that were not shown yet, with the counts of the capture behind them.
  // `shown` is by index in the capture.
  void ShowEnded(const Connection& connection) {
    ShowConnection(connection.index, connection);
  }
  void ShowRest(const std::string& name,
                const std::vector<Connection>& connections,
                const std::vector<bool>& shown);

 private:
  bool IsWanted(const Connection& connection) const;
  // Throws UsageError, when all is shown.
  void RequireRow() const;

  // Each shows itself and what is below it. A list leaves out the rows that
  // were not asked for.
  void ShowConnection(std::size_t index, const Connection& connection);
  void ShowList(ModuleSession& session, ListKind list,
                std::vector<ReportedRow> rows);
  void ShowRow(ModuleSession& session, ListKind list, const ReportedRow& row);
  // "listing connection 2 of 7", with the per cent of that; "listing connection
  // 2" before the capture has ended.
  void ShowProgress(const char* doing, unsigned percent);

  const Options& options_;
  Module module_;
  DecodeControls controls_;
  std::unique_ptr<Report> report_;
  std::unique_ptr<SaveFile> save_file_;  // null without --save
  ProgressLine progress_;
  std::size_t connections_ = 0;  // in the capture; 0 before it has ended
  std::size_t shown_ = 0;        // the index there of the one being shown
  bool row_was_found_ = false;
};

}  // namespace host

#endif  // HOST_CAPDUMP_DUMP_H_
