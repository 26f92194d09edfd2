#include "host/capdump/follow.h"

#include <algorithm>
#include <utility>

#include "host/capdump/console.h"
#include "host/capdump/dump.h"
#include "host/capdump/live_reading.h"

namespace host {
// A connection that has rows, and how far they were shown.
struct Follow::Shown {
  Shown(const Connection& one, Module& module, DecodeControls& controls)
      : connection(one),
        session(module, controls, one),
        reporters{RowReporter(one.pdus), RowReporter(one.messages)} {
    reported.connection = &one;
    reported.index = one.index;
  }

  const Connection& connection;
  ModuleSession session;
  std::array<RowReporter, 2> reporters;
  std::array<std::uint32_t, 2> rows{};
  std::uint32_t packets = 0;  // of the feed, at the last look
  ReportedConnection reported;
};

Follow::Follow(const Options& options)
    : options_(options),
      module_(ModulePath(options)),
      controls_(options.hex ? DecodeControls::HexWindow::kEdit
                            : DecodeControls::HexWindow::kPlain),
      report_(options.json ? MakeJsonReport(WriteOutput)
                           : MakeTextReport(WriteOutput)) {}

Follow::~Follow() = default;

void Follow::Run(CaptureLoader& loader) {
  ReadLive(loader, IsPiped(options_), [&] { Look(loader); });
  Look(loader);
  shown_.clear();
}

void Follow::Look(CaptureLoader& loader) {
  shown_.resize(loader.connections().size());
  for (std::size_t i = 0; i < shown_.size(); ++i) {
    const Connection& connection = loader.connections().at(i);
    if (shown_[i] == nullptr) {
      const bool has_rows = !connection.pdus.empty() || options_.as_captured;
      if (!has_rows || !IsWanted(connection)) continue;
      shown_[i] = std::make_unique<Shown>(connection, module_, controls_);
    }
    LookAt(*shown_[i], loader.state() == CaptureLoader::State::kDone);
  }
  FlushOutput();
}

bool Follow::IsWanted(const Connection& connection) const {
  if (options_.connection) return connection.index == *options_.connection;
  return options_.all_connections || connection.carries_dicom;
}

void Follow::LookAt(Shown& shown, bool is_over) {
  const std::uint32_t packets = shown.connection.feed->PacketCount();
  if (std::exchange(shown.packets, packets) == packets && !is_over) return;
  shown.session.State().SetShowMessageData(!options_.no_message_data);
  shown.session.ReadLists(!is_over);
  shown.session.TraceNewRows();
  for (const ListKind list : options_.Lists()) {
    ShowNewRows(shown, list, is_over);
  }
}

void Follow::ShowNewRows(Shown& shown, ListKind list, bool is_over) {
  const bool is_pdus = list == ListKind::kPdus;
  const std::size_t at = is_pdus ? 0 : 1;
  RowReporter& reporter = shown.reporters[at];
  std::uint32_t& next = shown.rows[at];
  std::uint32_t end = shown.session.Available(list);
  // The module lists a message before all of it is there.
  const bool waits = !is_over && end > next && !shown.connection.pdus.empty() &&
                     !shown.session.Trace(list).RecordIndexOf(end - 1);
  if (waits) --end;
  while (next < end) {
    auto page = shown.session.Page(list, next);
    if (page.empty()) break;
    page.resize(std::min<std::size_t>(page.size(), end - next));
    for (ListedRow& row : page) {
      const auto record = shown.session.Trace(list).RecordIndexOf(next);
      reporter.AddRow(next++, std::move(row), record);
    }
  }
  if (is_over) reporter.AddUnlisted();
  std::vector<ReportedRow> rows = reporter.Take();
  if (rows.empty()) return;
  AddOutcomes(shown.connection, list, rows);
  report_->Continue(shown.reported, list, rows);
  for (const ReportedRow& row : rows) ShowRow(shown, list, row);
}

void Follow::ShowRow(Shown& shown, ListKind list, const ReportedRow& row) {
  ReportDecoded(*report_, row, [&] {
    DecodedRow decoded;
    if (row.index && (options_.tree || options_.hex)) {
      decoded = shown.session.Decode({list, *row.index});
      if (!options_.tree) decoded.tree.reset();
    }
    return decoded;
  });
}

}  // namespace host
