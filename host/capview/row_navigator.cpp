#include "host/capview/row_navigator.h"

#include <algorithm>
#include <string>
#include <utility>

#include "host/capview/capture_summary.h"
#include "host/text/number_text.h"
#include "host/text/text_encoding.h"
#include "host/text/wide_text.h"

namespace host {

RowNavigator::RowNavigator(CaptureDocument& document, RowModel& model,
                           Panes& panes, WorkLoop& work)
    : document_(document), model_(model), panes_(panes), work_(work) {
  panes_.rows.OnSelected([this](std::uint32_t row) { Show(row); });
  panes_.rows.OnHead([this](RowColumn column) { SortBy(column); });
}

void RowNavigator::Clear() {
  pending_.reset();
  shown_.reset();
  panes_.decode.Clear(document_);
  panes_.tabs.ShowRow({});
  panes_.times.ShowRow({});
  model_.Reset();
  panes_.rows.Select({});
  panes_.rows.SetHint(
      WideFromUtf8(EmptyListText(document_, model_, work_.IsBusy())));
  panes_.rows.Update();
  panes_.bar.ShowList(model_.list());
  panes_.status.SetRows("");
}

void RowNavigator::Update() {
  const bool nowhere = !shown_ && !wanted_ && !pending_;
  if (nowhere && !model_.IsFiltered()) wanted_ = 0;
  const auto selected =
      model_.sorted_by() ? panes_.rows.Selected() : std::nullopt;
  model_.Update();
  panes_.rows.SetHint(
      WideFromUtf8(EmptyListText(document_, model_, work_.IsBusy())));
  panes_.rows.Update();
  if (selected) panes_.rows.Mark(selected);  // rows may have changed places
  panes_.status.SetRows(RowCountText(model_));
  if (wanted_ && *wanted_ < model_.Count()) {
    panes_.rows.Mark(wanted_);
    pending_ = std::exchange(wanted_, {});
  }
}

void RowNavigator::ShowList(ListKind list) {
  if (list == model_.list()) return;
  const auto selected = panes_.rows.Selected();
  std::optional<std::uint32_t> place;
  if (selected) place = model_.PositionInOtherList(*selected);
  model_.SetList(list);
  Clear();
  if (place && model_.Count() > 0) {
    wanted_ = std::min(*place, model_.Count() - 1);
  }
  Update();
  panes_.status.Hush();
  panes_.status.Refresh();  // what failed is told by this list's rows
}

void RowNavigator::Filter(const std::wstring& text) {
  const auto place = pending_ ? pending_ : shown_;
  panes_.rows.Mark({});
  model_.SetFilter(CodePage1252FromWide(text));
  Update();
  const bool passes = place && model_.IndexOf(*place) < model_.ShownCount() &&
                      model_.PositionAt(model_.IndexOf(*place)) == *place;
  if (passes) panes_.rows.Mark(place);
}

void RowNavigator::SortBy(RowColumn column) {
  const auto place = panes_.rows.Selected();
  const bool sorts =
      RowModel::IsSortable(column) && model_.sorted_by() != column;
  panes_.rows.Mark({});
  model_.SortBy(sorts ? std::optional(column) : std::nullopt);
  Update();
  if (sorts && model_.ShownCount() > 0) {
    panes_.rows.Select(model_.PositionAt(0));
  } else {
    panes_.rows.Mark(place);
  }
}

void RowNavigator::GoTo(const std::wstring& number) {
  const auto row = IndexFromText(Utf8FromWide(number));
  if (row && *row < model_.Count()) {
    panes_.rows.Select(row);
  } else {
    panes_.status.Say("There is no row " + Utf8FromWide(number) +
                      "; rows go from 1 to " + std::to_string(model_.Count()) +
                      ".");
  }
}

void RowNavigator::Jump() {
  if (!panes_.rows.Selected()) return;
  ShowList(ListKind::kMessages);
  const auto row = panes_.rows.Selected();
  const auto partner = row ? model_.PartnerOf(*row) : std::nullopt;
  if (partner) {
    panes_.rows.Select(partner);
  } else {
    panes_.status.Say("This row has no counterpart in the capture.");
  }
}

std::optional<RowRange> RowNavigator::SelectedRow() const {
  const auto row = panes_.rows.Selected();
  if (!row) return {};
  return RowRange{model_.list(), *row, *row + 1};
}

std::optional<RowRange> RowNavigator::AllRows() const {
  if (model_.Count() == 0) return {};
  return RowRange{model_.list(), 0, model_.Count()};
}

void RowNavigator::ShowAgain() {
  pending_ = panes_.rows.Selected();
  ShowPending();
}

// Inside a slice it stays pending until the next one.
void RowNavigator::Show(std::uint32_t row) {
  pending_ = row;
  wanted_byte_.reset();
  panes_.status.Hush();
  if (!work_.IsInside()) ShowPending();
}

bool RowNavigator::IsPendingThere() const {
  return pending_ && *pending_ < document_.Available(model_.list());
}

bool RowNavigator::ShowPending() {
  if (!IsPendingThere()) return false;
  const std::uint32_t row = *std::exchange(pending_, {});
  shown_ = row;
  const std::string stopped =
      panes_.decode.Show(document_, {model_.list(), row});
  panes_.tabs.ShowRow(RowRef{model_.list(), row});
  panes_.times.ShowRow(RowRef{model_.list(), row});
  if (const auto byte = std::exchange(wanted_byte_, {})) {
    panes_.decode.Tree().SelectByte(*byte);
  }
  if (on_shown_) on_shown_();
  if (stopped.empty()) return true;
  panes_.status.Say("Row " + std::to_string(row + 1) +
                    " could not be decoded to its end (" +
                    PrintableFromCodePage1252(stopped) +
                    "); the module was loaded again, choose another row.");
  work_.Start();
  return true;
}

}  // namespace host
