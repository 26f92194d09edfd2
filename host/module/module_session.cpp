#include "host/module/module_session.h"

#include <algorithm>
#include <iterator>
#include <span>

namespace host {

ModuleSession::ModuleSession(Module& module, DecodeControls& controls,
                             const Connection& connection)
    : module_(module),
      controls_(controls),
      connection_(connection),
      window_(*connection.feed),
      traces_{RowTrace(connection.pdus), RowTrace(connection.messages)},
      generation_(module.Generation()) {
  list_.emplace(module_, window_, connection_.live);
}

void ModuleSession::ReadLists(bool growing,
                              const PacketList::Progress& progress) {
  if (!IsKnownToModule()) list_->BeginAnew();
  live_ = WantsLive(growing);
  packets_ = window_.PacketCount();
  list_->SetLive(live_);
  read_whole_ = true;
  list_->Read([&](unsigned percent) {
    read_whole_ = !progress || progress(percent);
    return read_whole_;
  });
  packets_ = std::min(packets_, window_.PacketCount());
  generation_ = module_.Generation();
  CountRows();
  window_.RethrowFailure();
}

bool ModuleSession::IsListed(bool growing) const {
  return read_whole_ && IsKnownToModule() &&
         packets_ == window_.PacketCount() && live_ == WantsLive(growing);
}

unsigned ModuleSession::Percent() const {
  const std::uint64_t packets = std::max(window_.PacketCount(), 1U);
  return static_cast<unsigned>(std::uint64_t{window_.NextPacket()} * 100 /
                               packets);
}

void ModuleSession::Refresh() {
  module_.RefreshDecode(window_.Handle());
  list_.reset();
  window_.LiftLimit();
  list_.emplace(module_, window_, connection_.live);
  traces_ = {RowTrace(connection_.pdus), RowTrace(connection_.messages)};
  generation_ = module_.Generation();
  read_whole_ = false;
  available_ = {};
}

void ModuleSession::CountRows() {
  for (const ListKind list : {ListKind::kPdus, ListKind::kMessages}) {
    const std::size_t i = IndexOf(list);
    available_[i] = list_->Count(list);
    counts_[i] =
        read_whole_ ? available_[i] : std::max(counts_[i], available_[i]);
  }
}

std::uint32_t ModuleSession::Count(ListKind list) const {
  return counts_[IndexOf(list)];
}

std::uint32_t ModuleSession::Available(ListKind list) const {
  return IsKnownToModule() ? available_[IndexOf(list)] : 0;
}

std::vector<ListedRow> ModuleSession::Page(ListKind list, std::uint32_t first) {
  if (first >= Available(list)) return {};
  std::vector<ListedRow> page = list_->Page(list, first);
  RowTrace& trace = traces_[IndexOf(list)];
  const std::uint32_t traced = trace.RowCount();
  if (first <= traced && traced - first < page.size()) {
    trace.Append(std::span(page).subspan(traced - first));
  }
  return page;
}

std::vector<ListedRow> ModuleSession::AllRows(ListKind list) {
  std::vector<ListedRow> rows;
  rows.reserve(Available(list));
  while (rows.size() < Available(list)) {
    auto page = Page(list, static_cast<std::uint32_t>(rows.size()));
    if (page.empty()) break;
    std::move(page.begin(), page.end(), std::back_inserter(rows));
  }
  return rows;
}

void ModuleSession::TraceNewRows() {
  for (const ListKind list : {ListKind::kPdus, ListKind::kMessages}) {
    while (Trace(list).RowCount() < Available(list)) {
      if (Page(list, Trace(list).RowCount()).empty()) break;
    }
  }
}

std::optional<std::string> ModuleSession::Display(
    RowRef row, const DecodeWindows& windows) {
  auto stopped = CallDisplay(row, windows);
  window_.RethrowFailure();
  return stopped;
}

std::optional<std::string> ModuleSession::CallDisplay(
    RowRef row, const DecodeWindows& windows) {
  const auto failure = module_.Display(window_.Handle(), row, windows);
  if (!failure) return {};
  module_.Reload();
  return failure->text;
}

DecodedRow ModuleSession::Decode(RowRef row) {
  if (!IsKnownToModule()) ReadLists(false);
  controls_.ForgetHex();
  DecodedRow decoded;
  decoded.stopped = Display(row, controls_.Windows());
  decoded.tree = controls_.Tree();
  decoded.hex = controls_.Hex();
  return decoded;
}

std::optional<std::string> ModuleSession::Save(RowRef row, std::int32_t file) {
  State().SetFile(file);
  return Divert(DisplayState::Output::kSave, row);
}

std::optional<std::string> ModuleSession::Print(RowRef row,
                                                const Paper& paper) {
  State().SetPaper(paper);
  return Divert(DisplayState::Output::kPrint, row);
}

std::optional<std::string> ModuleSession::Divert(DisplayState::Output output,
                                                 RowRef row) {
  if (!IsKnownToModule()) ReadLists(false);
  State().SetOutput(output);
  auto stopped = CallDisplay(row, controls_.Windows());
  State().SetOutput(DisplayState::Output::kTree);
  window_.RethrowFailure();
  return stopped;
}

}  // namespace host
