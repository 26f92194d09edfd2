#ifndef HOST_CAPVIEW_ROW_MODEL_H_
#define HOST_CAPVIEW_ROW_MODEL_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/capview/capture_document.h"
#include "host/rows/finding_marks.h"
#include "host/rows/row_filter.h"
#include "host/rows/row_outcome.h"
#include "host/rows/row_pages.h"
#include "host/rows/row_text.h"

namespace host {

// The columns of the list, from left to right.
enum class RowColumn {
  kNumber,
  kFinding,  // how bad what was found about the row is
  kTime,
  kSince,
  kDirection,
  kLength,
  // Of messages, of which the times are known when the capture was read.
  kLatency,     // from the end of the request to the begin of the answer
  kThroughput,  // of the message's own bytes
  kSummary,
  kDetail,
  kOutcome,
};
inline constexpr int kRowColumns = 11;

// The rows of the list that is being looked at, and which of them the filter
// lets pass. A position counts the list's rows from 0, an index the shown ones.
// Rows are fetched as they come into sight, so that a list of any length costs
// little; only a filter reads them all. The shown rows are in the capture's
// order, or in that of a column.
class RowModel {
 public:
  explicit RowModel(CaptureDocument& document);

  ListKind list() const { return list_; }
  void SetList(ListKind list);
  // Rows may have come or changed; answers whether the number of shown ones
  // differs.
  bool Update();
  // Everything is new: another connection, or another capture.
  void Reset();

  // As a person typed it: see RowFilter. Code page 1252.
  void SetFilter(const std::string& text);
  bool IsFiltered() const { return !filter_.IsEmpty(); }

  // Whether rows can be in the order of the column: numbers, what takes longest
  // or is slowest first.
  static bool IsSortable(RowColumn column);
  // Empty: in the capture's order, as they are when another list is shown.
  void SortBy(std::optional<RowColumn> column);
  std::optional<RowColumn> sorted_by() const { return sorted_by_; }

  std::uint32_t Count() const { return count_; }
  std::uint32_t ShownCount() const;
  std::uint32_t PositionAt(std::uint32_t index) const;
  // The shown row at the position, or in the capture's order the next one
  // behind it; else ShownCount().
  std::uint32_t IndexOf(std::uint32_t position) const;

  // Null when the module has no such row at the moment.
  const ListedRow* Row(std::uint32_t position) { return pages_.At(position); }
  // What stands in the column, UTF-8; empty for a row that is not there now.
  std::string Text(std::uint32_t position, RowColumn column);
  // By the row, or by what was found about it.
  RowKind Kind(std::uint32_t position);
  // Where the row was in the capture; null when it is not known.
  const WireRecord* Wire(std::uint32_t position) const;

  // The row that was under way at a time of the capture, or the next one, or
  // the last; empty without rows.
  std::optional<std::uint32_t> RowAtTime(Nanoseconds time) const;
  // The position in the other list that is nearest in the capture; the same one
  // where that is not known.
  std::uint32_t PositionInOtherList(std::uint32_t position);
  // The response of a command, the command of a response (of several responses
  // the next one in turn); searched in the list of messages.
  std::optional<std::uint32_t> PartnerOf(std::uint32_t position);

 private:
  // Lets the filter see the rows that it has not seen.
  void ExtendFilter();
  // The texts of columns that take some thought.
  std::string DirectionText(const ListedRow& row) const;
  std::string DetailText(const ListedRow& row, const WireRecord* wire) const;
  // Since the row before; empty for the first one.
  std::optional<Nanoseconds> Since(std::uint32_t position) const;
  std::string OutcomeText(const WireRecord* wire);
  // Of the worst finding about the row; empty without one.
  std::optional<Severity> Found(std::uint32_t position);
  // Of the row's message; null where they are not known.
  const MessageTiming* TimesOf(std::uint32_t position);
  std::string TimesText(std::uint32_t position, RowColumn column);
  // Large ones come first; empty stands behind all.
  std::optional<double> SortKey(std::uint32_t position);
  void Sort();
  // What is said of rows beside their texts has to be made anew.
  void ForgetSayings();
  std::optional<std::uint32_t> SearchPartner(const ListedRow& row,
                                             std::uint32_t from,
                                             bool backwards);

  CaptureDocument& document_;
  ListKind list_ = ListKind::kPdus;
  RowPages pages_;
  RowFilter filter_;
  std::string filter_text_;
  std::vector<std::uint32_t> passing_;  // positions, in order
  std::uint32_t filtered_ = 0;          // positions that the filter has seen
  std::uint32_t count_ = 0;
  std::optional<RowColumn> sorted_by_;
  std::vector<std::uint32_t> sorted_;  // positions of the shown rows, if so
  // Of the chosen connection, made when they are first asked for.
  std::optional<RowOutcomes> outcomes_;
  std::optional<FindingMarks> marks_;
  // Indices into Dialogue::messages, by the record's.
  std::vector<std::optional<std::uint32_t>> messages_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_ROW_MODEL_H_
