#include "host/capview/commands.h"

#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/capview/ask_dialog.h"
#include "host/capview/copying.h"
#include "host/capview/export_job.h"
#include "host/capview/file_dialogs.h"
#include "host/capview/resource.h"
#include "host/module/module_version.h"
#include "host/text/failure.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

using Targets = CommandTargets;
using Commands = std::vector<Command>;

constexpr int kShareStep = 4;  // per cent

void AskAndOpen(const Targets& t) {
  const auto names = AskForCaptures(t.window);
  if (!names.empty()) t.browser.Open(names);
}

void AskAndOpenFolder(const Targets& t) {
  const auto folder = AskForFolder(
      t.window, L"Folder with the files of a capture, as a ring leaves them.");
  if (folder) t.browser.Open({*folder});
}

void OpenRecent(const Targets& t, std::size_t index) {
  if (index >= t.recent.Paths().size()) return;
  t.browser.Open(RecentFiles::NamesOf(t.recent.Paths()[index]));
}

// Ends what takes long; else clears the filter.
void Escape(const Targets& t) {
  if (t.browser.Loop().IsBusy()) {
    t.browser.Stop();
  } else if (!t.panes.bar.FilterText().empty()) {
    t.panes.bar.ClearFilter();
    SetFocus(t.panes.rows.Handle());
  }
}

void Save(const Targets& t, const std::optional<RowRange>& rows) {
  if (!rows) {
    throw Failure("Select a row first; its decode can then be saved.");
  }
  if (const auto name = AskForTextFile(t.window)) {
    t.browser.Loop().StartJob(std::make_unique<SaveJob>(*rows, *name));
  }
}

void SaveObjects(const Targets& t) {
  if (!t.document.IsOpen()) {
    throw Failure("Open a capture first; its objects can then be saved.");
  }
  const auto folder = AskForFolder(
      t.window,
      L"Folder for the objects of this capture, one DICOM file each. The files "
      L"are for diagnosis, not for clinical use.");
  if (folder) t.browser.Loop().StartJob(std::make_unique<ExportJob>(*folder));
}

void Print(const Targets& t, const std::optional<RowRange>& rows) {
  if (!rows) {
    throw Failure("Select a row first; its decode can then be printed.");
  }
  if (Printer printer = AskForPrinter(t.window)) {
    t.browser.Loop().StartJob(
        std::make_unique<PrintJob>(*rows, std::move(printer)));
  }
}

void AskAndGoTo(const Targets& t) {
  const auto number =
      AskForText(t.window, L"Go to Row", L"Number of the row:", L"");
  if (number) t.browser.Rows().GoTo(*number);
}

void ShowNotes(const Targets& t) {
  std::string text;
  for (const std::string& note : t.document.Notes()) text += note + "\n\n";
  if (text.empty()) text = "There is nothing to remark on this connection.";
  MessageBoxW(t.window, WideFromUtf8(text).c_str(), L"Notes on the Connection",
              MB_OK);
}

void ShowVersions(const Targets& t) {
  t.document.LoadModule();
  const std::string text =
      "capview 1.1\n" + ModuleVersionText(*t.document.module());
  MessageBoxW(t.window, WideFromUtf8(text).c_str(), L"Versions", MB_OK);
}

void ToggleMessageData(const Targets& t) {
  DecodePanes::Choice choice = t.panes.decode.Chosen();
  choice.show_message_data = !choice.show_message_data;
  t.panes.decode.Choose(choice);
  t.browser.Rows().ShowAgain();
}

void ToggleSection(const Targets& t, unsigned bit) {
  DecodePanes::Choice choice = t.panes.decode.Chosen();
  choice.expand_mask ^= bit;
  t.panes.decode.Choose(choice);
  t.browser.Rows().ShowAgain();
}

void ToggleTimeBar(const Targets& t) {
  t.panes.times.SetWanted(!t.panes.times.IsWanted());
  t.sizes.Place();
}

void ToggleTimeColumns(const Targets& t) {
  ListColumns& columns = t.panes.rows.Columns();
  columns.WantTimes(!columns.ShowsTimes());
}

// Messages have them.
void SortByTimes(const Targets& t, RowColumn column) {
  t.browser.Rows().ShowList(ListKind::kMessages);
  t.panes.rows.Columns().WantTimes(true);
  if (t.model.sorted_by() != column) t.browser.Rows().SortBy(column);
}

Commands FileCommands(const Targets& t) {
  const auto is_open = [t] { return t.document.IsOpen(); };
  const auto has_row = [t] { return t.panes.rows.Selected().has_value(); };
  const auto has_rows = [t] { return t.model.Count() > 0; };
  RowNavigator& rows = t.browser.Rows();
  return {
      {IDM_OPEN, [t] { AskAndOpen(t); }},
      {IDM_OPEN_FOLDER, [t] { AskAndOpenFolder(t); }},
      {IDM_FOLLOW, [t] { t.browser.ToggleFollow(); }, is_open,
       [t] { return t.browser.IsFollowing(); }},
      {IDM_RELOAD, [t] { t.browser.Reload(); }, is_open},
      {IDM_STOP, [t] { t.browser.Stop(); },
       [t] { return t.browser.Loop().IsBusy(); }},
      {IDM_SAVE_ROW, [t, &rows] { Save(t, rows.SelectedRow()); }, has_row},
      {IDM_SAVE_ALL, [t, &rows] { Save(t, rows.AllRows()); }, has_rows},
      {IDM_SAVE_OBJECTS, [t] { SaveObjects(t); }, is_open},
      {IDM_PRINT_ROW, [t, &rows] { Print(t, rows.SelectedRow()); }, has_row},
      {IDM_PRINT_ALL, [t, &rows] { Print(t, rows.AllRows()); }, has_rows},
      {IDM_EXIT, [t] { SendMessageW(t.window, WM_CLOSE, 0, 0); }},
  };
}

Commands EditCommands(const Targets& t) {
  const auto has_line = [t] {
    return t.panes.tabs.Active().Copied(LinePart::kWhole).has_value();
  };
  const auto copy = [t](LinePart part) {
    return [t, part] { CopyPart(t.window, t.panes, part); };
  };
  return {
      {IDCANCEL, [t] { Escape(t); }},
      {IDM_COPY_LINE, [t] { CopyLine(t.window, t.panes, t.model); }},
      {IDM_COPY_VALUE, copy(LinePart::kValue), has_line},
      {IDM_COPY_SUBTREE, copy(LinePart::kSubtree), has_line},
      {IDM_COPY_BYTES, copy(LinePart::kBytes), has_line},
      {IDM_FILTER, [t] { t.panes.bar.FocusFilter(); }},
      {IDM_FIND, [t] { t.find.Ask(); }},
      {IDM_FIND_NEXT, [t] { t.find.Again(false); }},
      {IDM_FIND_PREVIOUS, [t] { t.find.Again(true); }},
      {IDM_GO_TO_ROW, [t] { AskAndGoTo(t); },
       [t] { return t.model.Count() > 0; }},
      {IDM_NEXT_ROW, [t] { t.panes.rows.Move(+1); }},
      {IDM_PREVIOUS_ROW, [t] { t.panes.rows.Move(-1); }},
      {IDM_JUMP, [t] { t.browser.Rows().Jump(); },
       [t] { return t.panes.rows.Selected().has_value(); }},
  };
}

// What is listed, and how the packets get to the module.
Commands ListCommands(const Targets& t) {
  const auto show_pdus = [t] { t.browser.Rows().ShowList(ListKind::kPdus); };
  const auto show_messages = [t] {
    t.browser.Rows().ShowList(ListKind::kMessages);
  };
  return {
      {IDM_PDU_VIEW, show_pdus, nullptr,
       [t] { return t.model.list() == ListKind::kPdus; }},
      {IDM_MESSAGE_VIEW, show_messages, nullptr,
       [t] { return t.model.list() == ListKind::kMessages; }},
      {IDC_PDUS, show_pdus},
      {IDC_MESSAGES, show_messages},
      {IDM_CONNECTION, [t] { t.panes.bar.Connections().Focus(); }},
      {IDM_NOTES, [t] { ShowNotes(t); }, [t] { return t.document.IsOpen(); }},
      {IDM_CLEAN_STREAMS, [t] { t.browser.UseCleanStreams(true); }, nullptr,
       [t] { return t.browser.UsesCleanStreams(); }},
      {IDM_AS_CAPTURED, [t] { t.browser.UseCleanStreams(false); }, nullptr,
       [t] { return !t.browser.UsesCleanStreams(); }},
  };
}

// How it looks.
Commands ViewCommands(const Targets& t) {
  const auto move = [t](Splitter splitter, int by) {
    return [t, splitter, by] { t.sizes.MoveSplitter(splitter, by); };
  };
  const DetailTabs& tabs = t.panes.tabs;
  return {
      {IDM_SHOW_MESSAGE_DATA, [t] { ToggleMessageData(t); }, nullptr,
       [t] { return t.panes.decode.Chosen().show_message_data; }},
      {IDM_EXPAND_ALL, [&tabs] { tabs.Active().ExpandAll(true); }},
      {IDM_COLLAPSE_ALL, [&tabs] { tabs.Active().ExpandAll(false); }},
      {IDM_TIME_BAR, [t] { ToggleTimeBar(t); }, nullptr,
       [t] { return t.panes.times.IsWanted(); }},
      {IDM_LARGER, [t] { t.sizes.ChangeFont(+1); }},
      {IDM_SMALLER, [t] { t.sizes.ChangeFont(-1); }},
      {IDM_TALLER_LIST, move(Splitter::kBelowList, +kShareStep)},
      {IDM_SHORTER_LIST, move(Splitter::kBelowList, -kShareStep)},
      {IDM_WIDER_TREE, move(Splitter::kBesideTree, +kShareStep)},
      {IDM_NARROWER_TREE, move(Splitter::kBesideTree, -kShareStep)},
      {IDM_KEYS, [t] { ShowText(t.window, IDD_KEYS); }},
      {IDM_ABOUT, [t] { ShowVersions(t); }},
  };
}

// In which order the rows are, and by which of their times.
Commands OrderCommands(const Targets& t) {
  Commands commands{
      {IDM_TIME_COLUMNS, [t] { ToggleTimeColumns(t); },
       [t] { return t.model.list() == ListKind::kMessages; },
       [t] { return t.panes.rows.Columns().ShowsTimes(); }},
      {IDM_SORT_NONE, [t] { t.browser.Rows().SortBy(RowColumn::kNumber); },
       nullptr, [t] { return !t.model.sorted_by(); }},
  };
  for (const auto& [id, column] :
       {std::pair{IDM_SORT_LATENCY, RowColumn::kLatency},
        {IDM_SORT_THROUGHPUT, RowColumn::kThroughput}}) {
    commands.push_back({id, [t, column] { SortByTimes(t, column); }, nullptr,
                        [t, column] { return t.model.sorted_by() == column; }});
  }
  return commands;
}

// What is shown of the row.
Commands TabCommands(const Targets& t) {
  Commands commands;
  for (const auto& [id, tab] : {std::pair{IDM_DECODE_TAB, DetailTab::kDecode},
                                {IDM_DATA_SET_TAB, DetailTab::kDataSet},
                                {IDM_CONTEXTS_TAB, DetailTab::kContexts}}) {
    commands.push_back({id,
                        [t, tab] {
                          t.panes.tabs.Choose(tab);
                          SetFocus(t.panes.tabs.Active().Handle());
                        },
                        nullptr,
                        [t, tab] { return t.panes.tabs.Chosen() == tab; }});
  }
  return commands;
}

// The items that a menu has several of.
Commands NumberedCommands(const Targets& t) {
  Commands commands;
  for (int i = 0; i < DecodePanes::kSections; ++i) {
    const unsigned bit = 2U << i;  // bit 0 is no section's
    commands.push_back(
        {IDM_FIRST_SECTION + i, [t, bit] { ToggleSection(t, bit); }, nullptr,
         [t, bit] {
           return (t.panes.decode.Chosen().expand_mask & bit) != 0;
         }});
  }
  for (std::size_t i = 0; i < RecentFiles::kMost; ++i) {
    commands.push_back(
        {IDM_FIRST_RECENT + static_cast<int>(i), [t, i] { OpenRecent(t, i); }});
  }
  return commands;
}

}  // namespace

CommandTable MakeCommands(const CommandTargets& targets) {
  Commands all;
  for (Commands (*const part)(const Targets&) :
       {FileCommands, EditCommands, ListCommands, ViewCommands, OrderCommands,
        TabCommands, NumberedCommands}) {
    Commands commands = part(targets);
    std::move(commands.begin(), commands.end(), std::back_inserter(all));
  }
  return CommandTable(std::move(all));
}

}  // namespace host
