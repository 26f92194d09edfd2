#include "host/capdump/dump.h"

#include <algorithm>
#include <new>
#include <string>
#include <utility>

#include "host/capdump/console.h"
#include "host/streams/ae_titles.h"
#include "host/text/file_name.h"

namespace host {
namespace {

std::size_t CountDicom(const std::vector<Connection>& connections) {
  return static_cast<std::size_t>(
      std::count_if(connections.begin(), connections.end(),
                    [](const Connection& one) { return one.carries_dicom; }));
}

}  // namespace

std::filesystem::path ModulePath(const Options& options) {
  return options.module.empty() ? ModuleBesideProgram()
                                : PathFromUtf8(options.module);
}

void ReportDecoded(Report& report, const ReportedRow& row,
                   const std::function<DecodedRow()>& decode) {
  try {
    report.Row(row, decode());
    return;
  } catch (const std::bad_alloc&) {  // by now all of it is free again
  }
  DecodedRow none;
  none.stopped =
      "There is not enough memory for the lines of this row: show it with "
      "capdump for a system of 64 bits.";
  report.Row(row, none);
}

Dump::Dump(const Options& options)
    : options_(options),
      module_(ModulePath(options)),
      controls_(options.hex ? DecodeControls::HexWindow::kEdit
                            : DecodeControls::HexWindow::kPlain),
      report_(options.json ? MakeJsonReport(WriteOutput)
                           : MakeTextReport(WriteOutput)) {
  if (!options.save_file.empty()) {
    save_file_ = std::make_unique<SaveFile>(PathFromUtf8(options.save_file),
                                            "name another file with --save");
  }
}

void Dump::Show(const std::string& name,
                const std::vector<Connection>& connections) {
  connections_ = connections.size();
  report_->BeginCapture(name, connections.size(), CountDicom(connections));
  for (std::size_t i = 0; i < connections.size(); ++i) {
    if (IsWanted(connections[i])) ShowConnection(i, connections[i]);
  }
  RequireRow();
}

void Dump::ShowRest(const std::string& name,
                    const std::vector<Connection>& connections,
                    const std::vector<bool>& shown) {
  connections_ = connections.size();
  for (std::size_t i = 0; i < connections.size(); ++i) {
    const Connection& connection = connections[i];
    const bool was_shown =
        connection.index < shown.size() && shown[connection.index];
    if (!was_shown && IsWanted(connection)) ShowConnection(i, connection);
  }
  report_->EndCapture(name, connections.size(), CountDicom(connections));
  RequireRow();
}

bool Dump::IsWanted(const Connection& connection) const {
  if (options_.connection) return connection.index == *options_.connection;
  return options_.all_connections || connection.carries_dicom;
}

void Dump::RequireRow() const {
  const bool may_be_elsewhere = options_.part.count > 1;
  if (!options_.row || row_was_found_ || may_be_elsewhere) return;
  throw UsageError("No list has a row " + std::to_string(*options_.row + 1) +
                   ": without --row all rows are shown.");
}

void Dump::ShowConnection(std::size_t index, const Connection& connection) {
  shown_ = index;
  ModuleSession session(module_, controls_, connection);
  session.State().SetShowMessageData(!options_.no_message_data);
  session.ReadLists(false, [this](unsigned percent) {
    ShowProgress("listing", percent);
    return true;
  });
  progress_.Clear();
  auto pdus = session.AllRows(ListKind::kPdus);
  auto messages = session.AllRows(ListKind::kMessages);
  ReportedConnection reported;
  reported.index = connection.index;
  reported.connection = &connection;
  reported.ae_titles = FindAeTitles(*connection.feed);
  reported.pdus = pdus.size();
  reported.messages = messages.size();
  reported.notes = connection.notes;
  const auto& notes = session.Notes();
  reported.notes.insert(reported.notes.end(), notes.begin(), notes.end());
  report_->BeginConnection(reported);
  for (const ListKind list : options_.Lists()) {
    const bool is_pdus = list == ListKind::kPdus;
    auto rows =
        ReportRows(std::move(is_pdus ? pdus : messages), session.Trace(list),
                   is_pdus ? connection.pdus : connection.messages);
    AddOutcomes(connection, list, rows);
    ShowList(session, list, std::move(rows));
  }
}

void Dump::ShowList(ModuleSession& session, ListKind list,
                    std::vector<ReportedRow> rows) {
  if (options_.row) {
    std::erase_if(rows, [this](const ReportedRow& row) {
      return row.index != options_.row;
    });
  }
  report_->BeginList(list, rows);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    ShowProgress("decoding", static_cast<unsigned>(i * 100 / rows.size()));
    ShowRow(session, list, rows[i]);
  }
  progress_.Clear();
}

void Dump::ShowRow(ModuleSession& session, ListKind list,
                   const ReportedRow& row) {
  ReportDecoded(*report_, row, [&] {
    DecodedRow decoded;
    if (!row.index) return decoded;  // nothing that the module could show
    const RowRef ref{list, *row.index};
    row_was_found_ = true;
    if (options_.tree || options_.hex) decoded = session.Decode(ref);
    if (save_file_) {
      auto stopped = session.Save(ref, save_file_->Handle());
      if (!decoded.stopped) decoded.stopped = std::move(stopped);
    }
    if (!options_.tree) decoded.tree.reset();
    return decoded;
  });
}

void Dump::ShowProgress(const char* doing, unsigned percent) {
  std::string text =
      std::string(doing) + " connection " + std::to_string(shown_ + 1);
  if (connections_ != 0) text += " of " + std::to_string(connections_);
  progress_.Show(text, percent);
}

}  // namespace host
