#include "host/capview/row_model.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <numeric>
#include <utility>

#include "host/text/failure.h"
#include "host/text/number_text.h"
#include "host/text/text_encoding.h"
#include "host/text/time_text.h"

namespace host {
namespace {

constexpr const char kToTheRight[] = "\xE2\x86\x92 ";  // an arrow
constexpr const char kToTheLeft[] = "\xE2\x86\x90 ";
constexpr const char kDot[] = " \xC2\xB7 ";

// "85,772 kB/s", "1.4 kB/s".
std::string RateText(double bytes_a_second) {
  constexpr double kKilobyte = 1000;
  constexpr double kSmall = 100;
  const double kilobytes = bytes_a_second / kKilobyte;
  if (kilobytes >= kSmall) {
    return NumberText(static_cast<std::uint64_t>(std::llround(kilobytes))) +
           " kB/s";
  }
  char text[32];
  std::snprintf(text, sizeof text, "%.1f kB/s", kilobytes);
  return text;
}

}  // namespace

RowModel::RowModel(CaptureDocument& document)
    : document_(document), pages_([this](std::uint32_t first) {
        return document_.Page(list_, first);
      }) {}

void RowModel::SetList(ListKind list) {
  list_ = list;
  sorted_by_.reset();
  Reset();
}

void RowModel::ForgetSayings() {
  outcomes_.reset();
  marks_.reset();
  messages_.clear();
}

void RowModel::Reset() {
  pages_.Forget();
  passing_.clear();
  filtered_ = 0;
  SetFilter(filter_text_);
  Update();
}

bool RowModel::Update() {
  const std::uint32_t before = ShownCount();
  ForgetSayings();
  // While the module catches up, what is in sight stays.
  if (document_.Available(list_) >= count_) pages_.Forget();
  count_ = document_.Count(list_);
  if (count_ < filtered_) {
    passing_.clear();
    filtered_ = 0;
  }
  if (IsFiltered()) ExtendFilter();
  Sort();
  return ShownCount() != before;
}

void RowModel::SetFilter(const std::string& text) {
  filter_text_ = text;
  if (document_.chosen()) {
    const Connection& connection = document_.ConnectionAt(*document_.chosen());
    filter_ =
        RowFilter(text, connection.first_endpoint, connection.second_endpoint);
  } else {
    filter_ = RowFilter();
  }
  passing_.clear();
  filtered_ = 0;
  if (IsFiltered()) ExtendFilter();
  Sort();
}

bool RowModel::IsSortable(RowColumn column) {
  return column == RowColumn::kSince || column == RowColumn::kLength ||
         column == RowColumn::kLatency || column == RowColumn::kThroughput;
}

void RowModel::SortBy(std::optional<RowColumn> column) {
  sorted_by_ = column;
  Sort();
}

void RowModel::Sort() {
  sorted_.clear();
  if (!sorted_by_) return;
  std::vector<std::pair<double, std::uint32_t>> keys;
  keys.reserve(ShownCount());
  for (std::uint32_t i = 0; i < ShownCount(); ++i) {
    const std::uint32_t position = IsFiltered() ? passing_[i] : i;
    keys.emplace_back(SortKey(position).value_or(-HUGE_VAL), position);
  }
  std::ranges::stable_sort(keys, std::greater(),
                           &std::pair<double, std::uint32_t>::first);
  sorted_.reserve(keys.size());
  for (const auto& [key, position] : keys) sorted_.push_back(position);
}

std::optional<double> RowModel::SortKey(std::uint32_t position) {
  const WireRecord* const wire = Wire(position);
  const MessageTiming* const times = TimesOf(position);
  if (sorted_by_ == RowColumn::kSince) {
    if (const auto since = Since(position)) return static_cast<double>(*since);
  } else if (sorted_by_ == RowColumn::kLength) {
    if (wire != nullptr) return static_cast<double>(wire->length);
  } else if (times != nullptr && sorted_by_ == RowColumn::kLatency) {
    if (times->answered_after) {
      return static_cast<double>(*times->answered_after);
    }
  } else if (times != nullptr) {
    if (const auto rate = times->Throughput()) return -*rate;
  }
  return {};
}

void RowModel::ExtendFilter() {
  const RowTrace* trace = document_.Trace(list_);
  const std::uint32_t end = std::min(count_, document_.Available(list_));
  while (filtered_ < end) {
    const auto page = document_.Page(list_, filtered_);
    if (page.empty()) break;
    for (const ListedRow& row : page) {
      const WireRecord* record = trace->RecordOf(filtered_);
      if (filter_.Passes(filtered_, row, record)) passing_.push_back(filtered_);
      ++filtered_;
    }
  }
}

std::uint32_t RowModel::ShownCount() const {
  return IsFiltered() ? static_cast<std::uint32_t>(passing_.size()) : count_;
}

std::uint32_t RowModel::PositionAt(std::uint32_t index) const {
  if (index < sorted_.size()) return sorted_[index];
  return IsFiltered() && index < passing_.size() ? passing_[index] : index;
}

std::uint32_t RowModel::IndexOf(std::uint32_t position) const {
  if (sorted_by_) {
    return static_cast<std::uint32_t>(std::ranges::find(sorted_, position) -
                                      sorted_.begin());
  }
  if (!IsFiltered()) return position;
  return static_cast<std::uint32_t>(
      std::lower_bound(passing_.begin(), passing_.end(), position) -
      passing_.begin());
}

const WireRecord* RowModel::Wire(std::uint32_t position) const {
  const RowTrace* trace = document_.Trace(list_);
  return trace == nullptr ? nullptr : trace->RecordOf(position);
}

RowKind RowModel::Kind(std::uint32_t position) {
  const ListedRow* row = Row(position);
  if (row == nullptr) return RowKind::kPlain;
  const RowKind kind = KindOf(*row, Wire(position));
  const auto found = Found(position);
  if (kind == RowKind::kFault || found == Severity::kFault) {
    return RowKind::kFault;
  }
  return found == Severity::kWarning ? RowKind::kWarning : kind;
}

std::optional<Severity> RowModel::Found(std::uint32_t position) {
  const RowTrace* trace = document_.Trace(list_);
  if (trace == nullptr) return {};
  if (!marks_) {
    const std::size_t chosen = *document_.chosen();
    marks_ = FindingMarks(document_.Findings(), chosen,
                          document_.ConnectionAt(chosen));
  }
  const auto record = trace->RecordIndexOf(position);
  return record ? marks_->Of(list_, *record) : std::nullopt;
}

std::string RowModel::Text(std::uint32_t position, RowColumn column) {
  const ListedRow* row = Row(position);
  if (column == RowColumn::kNumber) return std::to_string(position + 1);
  if (row == nullptr) return {};
  const WireRecord* wire = Wire(position);
  switch (column) {
    case RowColumn::kFinding: {
      const auto found = Found(position);
      return found ? std::string(SeverityText(*found)) : std::string();
    }
    case RowColumn::kTime:
      return wire ? TimeOfDay(wire->time) : std::string();
    case RowColumn::kSince: {
      const auto since = Since(position);
      return since ? Seconds(*since, 6) : std::string();
    }
    case RowColumn::kDirection:
      return DirectionText(*row);
    case RowColumn::kLength:
      return NumberText(row->length);
    case RowColumn::kLatency:
    case RowColumn::kThroughput:
      return TimesText(position, column);
    case RowColumn::kSummary:
      return PrintableFromCodePage1252(row->summary);
    case RowColumn::kOutcome:
      return OutcomeText(wire);
    default:
      return DetailText(*row, wire);
  }
}

// Bytes that cannot be read back are said where the outcome would stand.
std::string RowModel::OutcomeText(const WireRecord* wire) {
  if (wire == nullptr) return {};
  if (!outcomes_) {
    outcomes_.emplace(document_.ConnectionAt(*document_.chosen()), list_);
  }
  try {
    return outcomes_->Text(*wire);
  } catch (const Failure& failure) {
    return failure.what();
  }
}

std::optional<Nanoseconds> RowModel::Since(std::uint32_t position) const {
  const WireRecord* wire = Wire(position);
  const WireRecord* before = position == 0 ? nullptr : Wire(position - 1);
  if (wire == nullptr || before == nullptr) return {};
  const Nanoseconds since = wire->complete_time - before->complete_time;
  return std::max(since, Nanoseconds{0});
}

const MessageTiming* RowModel::TimesOf(std::uint32_t position) {
  const RowTrace* const trace = document_.Trace(list_);
  if (list_ != ListKind::kMessages || trace == nullptr || !document_.Timing()) {
    return nullptr;
  }
  const Connection& connection = document_.ConnectionAt(*document_.chosen());
  const Dialogue* const dialogue = DialogueOf(connection);
  const auto record = trace->RecordIndexOf(position);
  if (dialogue == nullptr || !record) return nullptr;
  if (messages_.empty()) {
    messages_.resize(connection.messages.size());
    for (std::uint32_t i = 0; i < dialogue->messages.size(); ++i) {
      const auto& of = dialogue->messages[i].record;
      if (of && *of < messages_.size()) messages_[*of] = i;
    }
  }
  const auto message = messages_.at(*record);
  return message ? &document_.Timing()->messages.at(*message) : nullptr;
}

std::string RowModel::TimesText(std::uint32_t position, RowColumn column) {
  const MessageTiming* const times = TimesOf(position);
  if (times == nullptr) return {};
  if (column == RowColumn::kLatency) {
    return times->answered_after ? Seconds(*times->answered_after, 6)
                                 : std::string();
  }
  const auto rate = times->Throughput();
  if (!rate) return {};
  return RateText(*rate);
}

std::string RowModel::DirectionText(const ListedRow& row) const {
  const Connection& connection = document_.ConnectionAt(*document_.chosen());
  return row.direction == 0 ? kToTheRight + connection.second_endpoint
                            : kToTheLeft + connection.first_endpoint;
}

std::string RowModel::DetailText(const ListedRow& row,
                                 const WireRecord* wire) const {
  std::string text = PrintableFromCodePage1252(row.detail);
  if (wire == nullptr || wire->note.empty()) return text;
  if (!text.empty()) text += kDot;
  return text + wire->note;
}

std::optional<std::uint32_t> RowModel::RowAtTime(Nanoseconds time) const {
  if (count_ == 0) return {};
  std::uint32_t position = 0;
  const auto is_before = [&] {
    const WireRecord* const wire = Wire(position);
    return wire == nullptr || wire->complete_time < time;
  };
  while (position + 1 < count_ && is_before()) ++position;
  return position;
}

std::uint32_t RowModel::PositionInOtherList(std::uint32_t position) {
  const ListKind other =
      list_ == ListKind::kPdus ? ListKind::kMessages : ListKind::kPdus;
  const WireRecord* wire = Wire(position);
  if (wire == nullptr) return position;
  return document_.Trace(other)->RowAtFrame(wire->first_frame, wire->direction);
}

std::optional<std::uint32_t> RowModel::PartnerOf(std::uint32_t position) {
  const ListedRow* found = Row(position);
  if (found == nullptr || !MessageIdOf(*found)) return {};
  const ListedRow row = *found;  // pages come and go
  return SearchPartner(row, position, IsResponse(row));
}

std::optional<std::uint32_t> RowModel::SearchPartner(const ListedRow& row,
                                                     std::uint32_t from,
                                                     bool backwards) {
  for (std::uint32_t at = from; backwards ? at > 0 : at + 1 < count_;) {
    backwards ? --at : ++at;
    const ListedRow* other = Row(at);
    if (other != nullptr && AreCommandAndResponse(row, *other)) return at;
  }
  return {};
}

}  // namespace host
