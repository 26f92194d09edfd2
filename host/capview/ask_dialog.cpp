#include "host/capview/ask_dialog.h"

#include "host/capview/control.h"
#include "host/capview/resource.h"
#include "host/module/window_text.h"

namespace host {
namespace {

struct Question {
  const wchar_t* title;
  const wchar_t* label;
  std::wstring text;
};

void Show(HWND dialog, const Question& question) {
  SetWindowTextW(dialog, question.title);
  SetDlgItemTextW(dialog, IDC_ASK_LABEL, question.label);
  SetDlgItemTextW(dialog, IDC_ASK_TEXT, question.text.c_str());
}

INT_PTR CALLBACK OnAskMessage(HWND dialog, UINT message, WPARAM wide,
                              LPARAM data) {
  if (message == WM_INITDIALOG) {
    SetWindowLongPtrW(dialog, DWLP_USER, data);
    Show(dialog, *reinterpret_cast<const Question*>(data));
    return TRUE;
  }
  if (message != WM_COMMAND) return FALSE;
  if (LOWORD(wide) == IDOK) {
    reinterpret_cast<Question*>(GetWindowLongPtrW(dialog, DWLP_USER))->text =
        WideTextOf(GetDlgItem(dialog, IDC_ASK_TEXT));
  }
  if (LOWORD(wide) == IDOK || LOWORD(wide) == IDCANCEL) {
    EndDialog(dialog, LOWORD(wide));
  }
  return TRUE;
}

INT_PTR CALLBACK OnTextMessage(HWND dialog, UINT message, WPARAM wide, LPARAM) {
  if (message == WM_COMMAND) EndDialog(dialog, LOWORD(wide));
  return message == WM_INITDIALOG || message == WM_COMMAND;
}

}  // namespace

void ShowText(HWND owner, int dialog) {
  DialogBoxW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(dialog), owner,
             OnTextMessage);
}

std::optional<std::wstring> AskForText(HWND owner, const wchar_t* title,
                                       const wchar_t* label,
                                       const std::wstring& before) {
  Question question{title, label, before};
  if (DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_ASK),
                      owner, OnAskMessage,
                      reinterpret_cast<LPARAM>(&question)) != IDOK) {
    return {};
  }
  return question.text;
}

}  // namespace host
