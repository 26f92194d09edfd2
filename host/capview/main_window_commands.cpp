// What the person can tell the window to do.

#include <windows.h>
// After windows.h.
#include <commctrl.h>
#include <commdlg.h>

#include <algorithm>
#include <exception>
#include <iterator>

#include "host/capview/ask_dialog.h"
#include "host/capview/main_window.h"
#include "host/capview/resource.h"
#include "host/module/module_version.h"
#include "host/rows/tree_search.h"
#include "host/text/text_encoding.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

constexpr int kLeastPoints = 6;
constexpr int kMostPoints = 36;
constexpr int kSections = 8;

constexpr wchar_t kCaptureFilter[] =
    L"Captures (*.pcap;*.pcapng;*.cap)\0*.pcap;*.pcapng;*.cap\0"
    L"All files\0*.*\0";
constexpr wchar_t kTextFilter[] = L"Texts (*.txt)\0*.txt\0All files\0*.*\0";

std::wstring WideFromCodePage1252(const std::string& text) {
  return WideFromUtf8(Utf8FromCodePage1252(text));
}

std::string CodePage1252FromWide(const std::wstring& wide) {
  std::string text(wide.size(), '\0');
  text.resize(static_cast<std::size_t>(WideCharToMultiByte(
      1252, 0, wide.data(), static_cast<int>(wide.size()), text.data(),
      static_cast<int>(text.size()), nullptr, nullptr)));
  return text;
}

std::wstring TextOf(HWND window) {
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1,
                    L'\0');
  text.resize(static_cast<std::size_t>(
      GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
  return text;
}

OPENFILENAMEW FileQuestion(HWND owner, const wchar_t* filter,
                           std::wstring& name) {
  OPENFILENAMEW question{};
  question.lStructSize = sizeof question;
  question.hwndOwner = owner;
  question.lpstrFilter = filter;
  question.lpstrFile = name.data();
  question.nMaxFile = static_cast<DWORD>(name.size());
  question.Flags = OFN_EXPLORER | OFN_NOCHANGEDIR | OFN_HIDEREADONLY;
  return question;
}

void Check(HMENU menu, int id, bool on) {
  CheckMenuItem(menu, static_cast<UINT>(id),
                MF_BYCOMMAND | (on ? MF_CHECKED : MF_UNCHECKED));
}

void Enable(HMENU menu, std::initializer_list<int> ids, bool on) {
  for (const int id : ids) {
    EnableMenuItem(menu, static_cast<UINT>(id),
                   MF_BYCOMMAND | (on ? MF_ENABLED : MF_GRAYED));
  }
}

}  // namespace

const MainWindow::CommandEntry MainWindow::kCommands[] = {
    {IDM_OPEN, &MainWindow::AskAndOpen},
    {IDM_FOLLOW, &MainWindow::ToggleFollow},
    {IDM_RELOAD, &MainWindow::ReloadDecode},
    {IDM_STOP, &MainWindow::StopWork},
    {IDM_SAVE_ROW, &MainWindow::SaveRow},
    {IDM_SAVE_ALL, &MainWindow::SaveAll},
    {IDM_PRINT_ROW, &MainWindow::PrintRow},
    {IDM_PRINT_ALL, &MainWindow::PrintAll},
    {IDM_EXIT, &MainWindow::Exit},
    {IDCANCEL, &MainWindow::Escape},
    {IDM_COPY_LINE, &MainWindow::CopyLine},
    {IDM_COPY_VALUE, &MainWindow::CopyValue},
    {IDM_COPY_SUBTREE, &MainWindow::CopySubtree},
    {IDM_COPY_BYTES, &MainWindow::CopyBytes},
    {IDM_FILTER, &MainWindow::FocusFilter},
    {IDM_FIND, &MainWindow::Find},
    {IDM_FIND_NEXT, &MainWindow::FindNext},
    {IDM_FIND_PREVIOUS, &MainWindow::FindPrevious},
    {IDM_GO_TO_ROW, &MainWindow::GoToRow},
    {IDM_NEXT_ROW, &MainWindow::NextRow},
    {IDM_PREVIOUS_ROW, &MainWindow::PreviousRow},
    {IDM_JUMP, &MainWindow::Jump},
    {IDM_PDU_VIEW, &MainWindow::ShowPdus},
    {IDC_PDUS, &MainWindow::ShowPdus},
    {IDM_MESSAGE_VIEW, &MainWindow::ShowMessages},
    {IDC_MESSAGES, &MainWindow::ShowMessages},
    {IDM_CONNECTION, &MainWindow::FocusConnections},
    {IDM_NOTES, &MainWindow::ShowNotes},
    {IDM_SHOW_MESSAGE_DATA, &MainWindow::ToggleMessageData},
    {IDM_EXPAND_ALL, &MainWindow::ExpandAll},
    {IDM_COLLAPSE_ALL, &MainWindow::CollapseAll},
    {IDM_LARGER, &MainWindow::LargerFont},
    {IDM_SMALLER, &MainWindow::SmallerFont},
    {IDM_TALLER_LIST, &MainWindow::TallerList},
    {IDM_SHORTER_LIST, &MainWindow::ShorterList},
    {IDM_WIDER_TREE, &MainWindow::WiderTree},
    {IDM_NARROWER_TREE, &MainWindow::NarrowerTree},
    {IDM_CLEAN_STREAMS, &MainWindow::UseCleanStreams},
    {IDM_AS_CAPTURED, &MainWindow::UseCaptured},
    {IDM_KEYS, &MainWindow::ShowKeys},
    {IDM_ABOUT, &MainWindow::ShowVersions},
};

template <class Function>
void MainWindow::Try(Function function) {
  try {
    function();
  } catch (const std::exception& failure) {
    Say(failure.what());
  }
}

void MainWindow::Do(int id, int code) {
  if (!status_) return;
  if (id == IDC_CONNECTIONS) return connections_->Notify(code);
  if (id == IDC_FILTER) {
    if (code == EN_CHANGE) ApplyFilter();
    return;
  }
  if (working_) {  // the module lets messages run in long calls
    PostMessageW(window_, WM_COMMAND, static_cast<WPARAM>(id), 0);
    return;
  }
  if (id >= IDM_FIRST_SECTION && id < IDM_FIRST_SECTION + kSections) {
    return ToggleSection(id - IDM_FIRST_SECTION + 1);
  }
  const auto recent = static_cast<std::size_t>(id - IDM_FIRST_RECENT);
  if (id >= IDM_FIRST_RECENT && recent < settings_.recent_files.size()) {
    return Open(std::wstring(settings_.recent_files[recent]));
  }
  const auto entry =
      std::find_if(std::begin(kCommands), std::end(kCommands),
                   [id](const CommandEntry& one) { return one.id == id; });
  if (entry == std::end(kCommands)) return;
  Try([&] { (this->*entry->command)(); });
}

void MainWindow::OpenMenu(HMENU menu) {
  const UINT first = GetMenuItemID(menu, 0);
  if (first == IDM_NO_RECENT || first == IDM_FIRST_RECENT) FillRecentMenu();
  CheckMenu();
}

void MainWindow::CheckMenu() {
  const HMENU menu = GetMenu(window_);
  const bool messages = model_.view() == View::kMessages;
  Check(menu, IDM_FOLLOW, follow_);
  Check(menu, IDM_PDU_VIEW, !messages);
  Check(menu, IDM_MESSAGE_VIEW, messages);
  Check(menu, IDM_SHOW_MESSAGE_DATA, settings_.show_message_data);
  Check(menu, IDM_CLEAN_STREAMS, settings_.clean_streams);
  Check(menu, IDM_AS_CAPTURED, !settings_.clean_streams);
  for (int i = 0; i < kSections; ++i) {
    Check(menu, IDM_FIRST_SECTION + i,
          (settings_.expand_mask >> (i + 1) & 1) != 0);
  }
  Enable(menu, {IDM_STOP}, was_busy_);
  Enable(menu, {IDM_FOLLOW, IDM_RELOAD, IDM_NOTES}, document_.IsOpen());
  Enable(menu, {IDM_SAVE_ROW, IDM_PRINT_ROW, IDM_JUMP},
         rows_->Selected().has_value());
  Enable(menu, {IDM_SAVE_ALL, IDM_PRINT_ALL, IDM_GO_TO_ROW},
         model_.Count() > 0);
  Enable(menu, {IDM_COPY_SUBTREE, IDM_COPY_VALUE, IDM_COPY_BYTES},
         TreeView_GetSelection(tree_->Handle()) != nullptr);
}

void MainWindow::FillRecentMenu() {
  const HMENU menu = GetSubMenu(GetSubMenu(GetMenu(window_), 0), 1);
  if (settings_.recent_files.empty()) return;
  while (DeleteMenu(menu, 0, MF_BYPOSITION)) {
  }
  for (std::size_t i = 0; i < settings_.recent_files.size(); ++i) {
    std::wstring text = L"&" + std::to_wstring(i + 1) + L"  ";
    for (const wchar_t letter : settings_.recent_files[i]) {
      text += letter;
      if (letter == L'&') text += letter;  // or it would mark a key
    }
    AppendMenuW(menu, MF_STRING, IDM_FIRST_RECENT + i, text.c_str());
  }
}

void MainWindow::AskAndOpen() {
  std::wstring name(32768, L'\0');
  OPENFILENAMEW question = FileQuestion(window_, kCaptureFilter, name);
  question.Flags |= OFN_FILEMUSTEXIST;
  if (GetOpenFileNameW(&question)) Open(name.c_str());
}

void MainWindow::ToggleFollow() {
  if (!document_.IsOpen()) return;
  follow_ = !follow_;
  if (follow_) {
    Reopen();
  } else {
    document_.Stop();
    was_busy_ = true;
    Say("");
    Work();
  }
}

void MainWindow::ReloadDecode() {
  wanted_row_ = rows_->Selected();
  document_.Refresh();
  was_busy_ = true;
  Say("");
  Work();
}

// Ends what takes long; else clears the filter.
void MainWindow::Escape() {
  if (was_busy_ || job_) {
    StopWork();
  } else if (GetWindowTextLengthW(filter_) > 0) {
    SetWindowTextW(filter_, L"");
    SetFocus(rows_->Handle());
  }
}

void MainWindow::StopWork() {
  if (job_) {
    Say(job_->Report(was_busy_ && job_->Percent() < 100));
    job_.reset();
    return;
  }
  if (!document_.IsOpen()) return;
  follow_ = false;
  const bool reading =
      document_.loader().state() == CaptureLoader::State::kReading;
  document_.Stop();
  if (reading)
    Say("Stopped; what was read is shown. F5 does not read on, "
        "open the capture again for all of it.");
}

std::optional<JobRows> MainWindow::SelectedRow() const {
  const auto row = rows_->Selected();
  if (!row) return {};
  return JobRows{model_.view(), *row, *row + 1};
}

std::optional<JobRows> MainWindow::AllRows() const {
  if (model_.Count() == 0) return {};
  return JobRows{model_.view(), 0, model_.Count()};
}

void MainWindow::SaveRow() { AskAndSave(SelectedRow()); }
void MainWindow::SaveAll() { AskAndSave(AllRows()); }
void MainWindow::PrintRow() { AskAndPrint(SelectedRow()); }
void MainWindow::PrintAll() { AskAndPrint(AllRows()); }

void MainWindow::AskAndSave(std::optional<JobRows> rows) {
  if (!rows) return Say("Select a row first; its decode can then be saved.");
  std::wstring name(32768, L'\0');
  OPENFILENAMEW question = FileQuestion(window_, kTextFilter, name);
  question.Flags |= OFN_OVERWRITEPROMPT;
  question.lpstrDefExt = L"txt";
  if (GetSaveFileNameW(&question)) SaveDecode(*rows, name.c_str());
}

void MainWindow::SaveDecode(const JobRows& rows,
                            const std::wstring& file_name) {
  Try([&] {
    job_ = std::make_unique<SaveJob>(rows, file_name);
    was_busy_ = true;
  });
}

void MainWindow::AskAndPrint(std::optional<JobRows> rows) {
  if (!rows) return Say("Select a row first; its decode can then be printed.");
  PRINTDLGW question{};
  question.lStructSize = sizeof question;
  question.hwndOwner = window_;
  question.Flags = PD_RETURNDC | PD_NOPAGENUMS | PD_NOSELECTION | PD_NOWARNING;
  if (PrintDlgW(&question)) {
    job_ = std::make_unique<PrintJob>(*rows, question.hDC);
    was_busy_ = true;
  } else if (CommDlgExtendedError() != 0) {
    Say("There is no printer; install one, or save the decode (Ctrl+S).");
  }
}

void MainWindow::Exit() { SendMessageW(window_, WM_CLOSE, 0, 0); }

const TreeLine* MainWindow::SelectedLine() {
  const auto line = tree_->SelectedLine();
  return line ? &tree_->Lines()[*line] : nullptr;
}

void MainWindow::CopyText(const std::wstring& text) {
  if (!OpenClipboard(window_)) {
    return Say("The clipboard is in use by another program; try again.");
  }
  EmptyClipboard();
  const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
  if (const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, bytes)) {
    std::copy_n(text.c_str(), text.size() + 1,
                static_cast<wchar_t*>(GlobalLock(block)));
    GlobalUnlock(block);
    SetClipboardData(CF_UNICODETEXT, block);
  }
  CloseClipboard();
}

// The line of the tree; of the list when the list has the focus; of an edit
// control what is selected there.
void MainWindow::CopyLine() {
  const HWND focus = GetFocus();
  if (focus == filter_ || focus == hex_->Handle()) {
    SendMessageW(focus, WM_COPY, 0, 0);
    return;
  }
  const auto row = rows_->Selected();
  if (focus == rows_->Handle() && row) {
    std::wstring text;
    for (int column = 0; column < kRowColumns; ++column) {
      if (column > 0) text += L'\t';
      text += WideFromUtf8(model_.Text(*row, static_cast<RowColumn>(column)));
    }
    return CopyText(text);
  }
  if (const TreeLine* line = SelectedLine()) {
    CopyText(WideFromCodePage1252(line->text));
  }
}

void MainWindow::CopyValue() {
  if (const TreeLine* line = SelectedLine()) {
    CopyText(WideFromCodePage1252(std::string(LineValue(line->text))));
  }
}

void MainWindow::CopySubtree() {
  if (const auto line = tree_->SelectedLine()) {
    CopyText(WideFromCodePage1252(SubtreeText(tree_->Lines(), *line)));
  }
}

void MainWindow::CopyBytes() {
  if (const auto bytes = tree_->SelectedBytes()) {
    CopyText(hex_->Digits(bytes->offset, bytes->length));
  }
}

void MainWindow::FocusFilter() {
  SetFocus(filter_);
  SendMessageW(filter_, EM_SETSEL, 0, -1);
}

void MainWindow::ApplyFilter() {
  const auto place = pending_row_ ? pending_row_ : displayed_row_;
  rows_->Mark({});
  model_.SetFilter(CodePage1252FromWide(TextOf(filter_)));
  ShowRows();
  const bool shown = place && model_.IndexOf(*place) < model_.ShownCount() &&
                     model_.PositionAt(model_.IndexOf(*place)) == *place;
  if (shown) rows_->Mark(place);
}

void MainWindow::Find() {
  const auto text = AskForText(window_, L"Find in Tree",
                               L"Text in a line of the decode:", find_text_);
  if (!text || text->empty()) return;
  find_text_ = *text;
  FindNext();
}

void MainWindow::FindNext() { FindAgain(false); }
void MainWindow::FindPrevious() { FindAgain(true); }

void MainWindow::FindAgain(bool backwards) {
  if (find_text_.empty()) return Find();
  const bool found =
      tree_->SelectNext(CodePage1252FromWide(find_text_), backwards);
  Say(found ? ""
            : "No line of this decode contains \"" + Utf8FromWide(find_text_) +
                  "\".");
}

void MainWindow::GoToRow() {
  const auto text =
      AskForText(window_, L"Go to Row", L"Number of the row:", L"");
  if (!text) return;
  wchar_t* end = nullptr;
  const unsigned long number = std::wcstoul(text->c_str(), &end, 10);
  if (*end != L'\0' || number < 1 || number > model_.Count()) {
    return Say("There is no row " + Utf8FromWide(*text) +
               "; rows go from 1 to " + std::to_string(model_.Count()) + ".");
  }
  rows_->Select(static_cast<std::uint32_t>(number) - 1);
}

void MainWindow::NextRow() { rows_->Move(+1); }
void MainWindow::PreviousRow() { rows_->Move(-1); }

void MainWindow::Jump() {
  const auto selected = rows_->Selected();
  if (!selected) return;
  if (model_.view() == View::kPdus) ShowMessages();
  const auto row = rows_->Selected();
  const auto partner = row ? model_.PartnerOf(*row) : std::nullopt;
  if (!partner) return Say("This row has no counterpart in the capture.");
  rows_->Select(*partner);
}

void MainWindow::ShowView(View view) {
  if (view == model_.view()) return ShowRows();
  const auto selected = rows_->Selected();
  std::optional<std::uint32_t> place;
  if (selected) place = model_.PositionInOtherView(*selected);
  model_.SetView(view);
  said_ = false;
  ShowNothing();
  if (place && model_.Count() > 0) {
    wanted_row_ = std::min(*place, model_.Count() - 1);
  }
  ShowRows();
  ShowDone();
}

void MainWindow::FocusConnections() {
  SetFocus(connections_->Handle());
  SendMessageW(connections_->Handle(), CB_SHOWDROPDOWN, TRUE, 0);
}

void MainWindow::ShowNotes() {
  std::string text;
  for (const std::string& note : document_.Notes()) text += note + "\n\n";
  if (text.empty()) text = "There is nothing to remark on this connection.";
  MessageBoxW(window_, WideFromUtf8(text).c_str(), L"Notes on the Connection",
              MB_OK);
}

void MainWindow::ToggleMessageData() {
  settings_.show_message_data = !settings_.show_message_data;
  pending_row_ = rows_->Selected();
  ShowPendingRow();
}

void MainWindow::ToggleSection(int section) {
  settings_.expand_mask ^= 1U << section;
  pending_row_ = rows_->Selected();
  ShowPendingRow();
}

void MainWindow::ChangeFont(int points) {
  settings_.font_points =
      std::clamp(settings_.font_points + points, kLeastPoints, kMostPoints);
  MakeFonts();
  rows_->SetColumns(rows_->GetColumns(), TextScale());
  Place();
}

void MainWindow::HandOverAs(bool clean_streams) {
  if (settings_.clean_streams == clean_streams) return;
  settings_.clean_streams = clean_streams;
  Reopen();
}

void MainWindow::ShowKeys() { ShowText(window_, IDD_KEYS); }

void MainWindow::ShowVersions() {
  document_.LoadModule();
  const std::string text =
      "capview 1.1\n" + ModuleVersionText(*document_.module());
  MessageBoxW(window_, WideFromUtf8(text).c_str(), L"Versions", MB_OK);
}

}  // namespace host
