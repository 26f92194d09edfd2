#ifndef HOST_CAPVIEW_MAIN_WINDOW_H_
#define HOST_CAPVIEW_MAIN_WINDOW_H_

#include <windows.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "host/capview/capture_document.h"
#include "host/capview/connection_chooser.h"
#include "host/capview/decode_job.h"
#include "host/capview/decode_tree_pane.h"
#include "host/capview/hex_pane.h"
#include "host/capview/pane_layout.h"
#include "host/capview/row_list.h"
#include "host/capview/row_model.h"
#include "host/capview/settings.h"
#include "host/capview/status_line.h"
#include "host/capview/ui_fonts.h"

namespace host {

// What the window is to begin with.
struct ViewRequest {
  std::wstring capture;
  std::optional<View> view;
  std::optional<std::uint32_t> row;  // counts from 0
  std::wstring find;                 // a text in the row's tree
};

// The window: connects the capture, the panes and the person's commands. What
// goes wrong becomes one sentence in the status line.
class MainWindow {
 public:
  // Throws Failure where there is no display.
  MainWindow(const std::wstring& module_path, std::wstring settings_path);
  ~MainWindow();
  MainWindow(const MainWindow&) = delete;
  MainWindow& operator=(const MainWindow&) = delete;

  HWND Handle() const { return window_; }
  void Show(int how);
  void Begin(const ViewRequest& request);
  void Open(const std::wstring& path);

  // A short slice of the work that is left; false when there is none.
  bool Work();
  // Whether the message was a key of ours and is done with.
  bool TakesKey(MSG& message) const;

  // The parts, for programs that drive the window.
  RowList& Rows() { return *rows_; }
  RowModel& Model() { return model_; }
  DecodeTreePane& Tree() { return *tree_; }
  HexPane& Hex() { return *hex_; }
  ConnectionChooser& Connections() { return *connections_; }
  StatusLine& Status() { return *status_; }
  void SaveDecode(const JobRows& rows, const std::wstring& file_name);

 private:
  using Command = void (MainWindow::*)();
  struct CommandEntry {
    int id;
    Command command;
  };
  static const CommandEntry kCommands[];

  static constexpr int kShareStep = 4;  // per cent

  // Window.
  static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wide,
                                    LPARAM data);
  LRESULT Handle(UINT message, WPARAM wide, LPARAM data);
  LRESULT HandleMouse(UINT message, LPARAM data, bool* done);
  void CreateParts();
  void MakeFonts();
  void Place();
  unsigned TextScale() const;
  PaneLayout Layout() const;
  void Drag(POINT point);
  int& ShareOf(Splitter splitter);
  void KeepPlace();
  void Close();
  LRESULT Notify(NMHDR* header);
  void ChangeDpi(const RECT& place);
  void DropFile(HDROP drop);

  // Commands.
  void Do(int id, int code);
  template <class Function>
  void Try(Function function);
  void OpenMenu(HMENU menu);
  void CheckMenu();
  void FillRecentMenu();
  void AskAndOpen();
  void ToggleFollow();
  void ReloadDecode();
  void Escape();
  void StopWork();
  void SaveRow();
  void SaveAll();
  void AskAndSave(std::optional<JobRows> rows);
  void PrintRow();
  void PrintAll();
  void AskAndPrint(std::optional<JobRows> rows);
  std::optional<JobRows> SelectedRow() const;
  std::optional<JobRows> AllRows() const;
  void Exit();
  void CopyLine();
  void CopyValue();
  void CopySubtree();
  void CopyBytes();
  void CopyText(const std::wstring& text);
  const TreeLine* SelectedLine();
  void FocusFilter();
  void ApplyFilter();
  void Find();
  void FindNext();
  void FindPrevious();
  void FindAgain(bool backwards);
  void GoToRow();
  void NextRow();
  void PreviousRow();
  void Jump();
  void ShowPdus() { ShowView(View::kPdus); }
  void ShowMessages() { ShowView(View::kMessages); }
  void ShowView(View view);
  void FocusConnections();
  void ShowNotes();
  void ToggleMessageData();
  void ToggleSection(int section);
  void ExpandAll() { tree_->ExpandAll(true); }
  void CollapseAll() { tree_->ExpandAll(false); }
  void LargerFont() { ChangeFont(+1); }
  void SmallerFont() { ChangeFont(-1); }
  void ChangeFont(int points);
  void TallerList() { MoveSplitter(Splitter::kBelowList, +kShareStep); }
  void ShorterList() { MoveSplitter(Splitter::kBelowList, -kShareStep); }
  void WiderTree() { MoveSplitter(Splitter::kBesideTree, +kShareStep); }
  void NarrowerTree() { MoveSplitter(Splitter::kBesideTree, -kShareStep); }
  void MoveSplitter(Splitter splitter, int by);
  void UseCleanStreams() { HandOverAs(true); }
  void UseCaptured() { HandOverAs(false); }
  void HandOverAs(bool clean_streams);
  void ShowKeys();
  void ShowVersions();

  // Capture and rows.
  void OpenCapture(const std::wstring& path, bool keep_place);
  void Reopen();
  void ShowNothing();
  void ChooseConnection(std::size_t connection);
  void LookAgain();
  void ShowProgress(bool more);
  void ShowRows();
  void TakePlaces();
  void ShowRow(std::uint32_t position);
  bool IsPendingRowThere() const;
  void ShowPendingRow();
  void ShowBytes();
  void ShowDone();
  std::string CaptureText() const;
  std::string FailedText() const;
  std::wstring EmptyListText() const;
  void Say(const std::string& sentence);

  Settings settings_;
  std::wstring settings_path_;
  CaptureDocument document_;
  RowModel model_;
  std::unique_ptr<DecodeJob> job_;

  HWND window_ = nullptr;
  HWND filter_ = nullptr;
  HACCEL keys_ = nullptr;
  std::unique_ptr<RowList> rows_;
  std::unique_ptr<DecodeTreePane> tree_;
  std::unique_ptr<HexPane> hex_;
  std::unique_ptr<ConnectionChooser> connections_;
  std::unique_ptr<StatusLine> status_;
  std::unique_ptr<UiFonts> fonts_;
  std::optional<Splitter> dragged_;

  bool working_ = false;
  bool follow_ = false;
  bool was_busy_ = false;
  bool said_ = false;  // a sentence that progress must not replace
  DWORD next_update_ = 0;
  // Where to go as soon as it is there.
  std::optional<std::size_t> wanted_connection_;
  std::optional<std::uint32_t> wanted_row_;
  std::optional<std::uint32_t> pending_row_;  // selected, not yet displayed
  std::optional<std::uint32_t> displayed_row_;
  std::wstring find_text_;
  bool find_when_shown_ = false;
};

}  // namespace host

#endif  // HOST_CAPVIEW_MAIN_WINDOW_H_
