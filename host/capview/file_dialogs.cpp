#include "host/capview/file_dialogs.h"

// After windows.h.
#include <commdlg.h>
#include <shlobj.h>

#include <cwchar>

#include "host/text/failure.h"

namespace host {
namespace {

constexpr std::size_t kLongestName = 32768;

constexpr wchar_t kCaptures[] =
    L"Captures (*.pcap*;*.cap;*.gz)\0"
    L"*.pcap*;*.cap;*.gz\0"
    L"All files\0*.*\0";
constexpr wchar_t kTexts[] = L"Texts (*.txt)\0*.txt\0All files\0*.*\0";

struct FileKind {
  const wchar_t* filter;
  const wchar_t* extension;  // of a name that was typed without one
  DWORD flags;
};

// All that the dialog answers, with what ends each name.
std::optional<std::wstring> AskForFile(HWND owner, const FileKind& kind,
                                       BOOL(WINAPI* ask)(OPENFILENAMEW*)) {
  std::wstring name(kLongestName, L'\0');
  OPENFILENAMEW question{};
  question.lStructSize = sizeof question;
  question.hwndOwner = owner;
  question.lpstrFilter = kind.filter;
  question.lpstrDefExt = kind.extension;
  question.lpstrFile = name.data();
  question.nMaxFile = static_cast<DWORD>(name.size());
  question.Flags =
      OFN_EXPLORER | OFN_NOCHANGEDIR | OFN_HIDEREADONLY | kind.flags;
  if (!ask(&question)) return {};
  return name;
}

}  // namespace

// Of several files the dialog answers the folder, then their names.
std::vector<std::filesystem::path> AskForCaptures(HWND owner) {
  const auto answer = AskForFile(
      owner, {kCaptures, nullptr, OFN_FILEMUSTEXIST | OFN_ALLOWMULTISELECT},
      GetOpenFileNameW);
  if (!answer) return {};
  const std::filesystem::path first(answer->c_str());
  std::vector<std::filesystem::path> names;
  for (std::size_t at = std::wcslen(answer->c_str()) + 1;
       at < answer->size() && (*answer)[at] != L'\0';
       at += names.back().filename().wstring().size() + 1) {
    names.push_back(first / &(*answer)[at]);
  }
  if (names.empty()) names.push_back(first);
  return names;
}

std::optional<std::wstring> AskForTextFile(HWND owner) {
  const auto answer = AskForFile(owner, {kTexts, L"txt", OFN_OVERWRITEPROMPT},
                                 GetSaveFileNameW);
  if (!answer) return {};
  return answer->c_str();
}

std::optional<std::wstring> AskForFolder(HWND owner, const wchar_t* text) {
  // The dialog with a button for new folders wants it.
  const bool has_ole = SUCCEEDED(OleInitialize(nullptr));
  wchar_t name[MAX_PATH] = L"";
  BROWSEINFOW question{};
  question.hwndOwner = owner;
  question.lpszTitle = text;
  question.ulFlags = BIF_RETURNONLYFSDIRS | BIF_NEWDIALOGSTYLE;
  const TaskMemory<ITEMIDLIST> chosen(SHBrowseForFolderW(&question));
  const bool is_chosen = chosen && SHGetPathFromIDListW(chosen.get(), name);
  if (has_ole) OleUninitialize();
  if (!is_chosen) return {};
  return name;
}

Printer AskForPrinter(HWND owner) {
  PRINTDLGW question{};
  question.lStructSize = sizeof question;
  question.hwndOwner = owner;
  question.Flags = PD_RETURNDC | PD_NOPAGENUMS | PD_NOSELECTION | PD_NOWARNING;
  const bool chosen = PrintDlgW(&question);
  // What the dialog tells beside the printer itself.
  const GlobalMemory mode(question.hDevMode);
  const GlobalMemory names(question.hDevNames);
  if (!chosen && CommDlgExtendedError() != 0) {
    throw Failure(
        "There is no printer: install one, or save the decode (Ctrl+S).");
  }
  return Printer(chosen ? question.hDC : nullptr);
}

}  // namespace host
