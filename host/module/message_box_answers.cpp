#include "host/module/message_box_answers.h"

#include <utility>

namespace host {
namespace {

constexpr int kTextControl = 0xFFFF;  // a message box's static text

bool IsDialog(HWND window) {
  return GetClassLongW(window, GCW_ATOM) == 32770;  // the dialog box class
}

std::string WindowText(HWND window) {
  std::string text(static_cast<std::size_t>(GetWindowTextLengthA(window)) + 1,
                   '\0');
  text.resize(static_cast<std::size_t>(
      GetWindowTextA(window, text.data(), static_cast<int>(text.size()))));
  return text;
}

}  // namespace

MessageBoxAnswers* MessageBoxAnswers::current_ = nullptr;

MessageBoxAnswers::MessageBoxAnswers()
    : creation_hook_(SetWindowsHookExW(WH_CBT, OnWindowEvent, nullptr,
                                       GetCurrentThreadId())) {
  current_ = this;
}

MessageBoxAnswers::~MessageBoxAnswers() {
  UnhookWindowsHookEx(creation_hook_);
  if (message_hook_ != nullptr) UnhookWindowsHookEx(message_hook_);
  current_ = nullptr;
}

std::vector<MessageBoxText> MessageBoxAnswers::Take() {
  return std::exchange(boxes_, {});
}

LRESULT CALLBACK MessageBoxAnswers::OnWindowEvent(int code, WPARAM window,
                                                  LPARAM data) {
  if (code == HCBT_CREATEWND && current_->scopes_ > 0 &&
      current_->message_hook_ == nullptr &&
      IsDialog(reinterpret_cast<HWND>(window))) {
    current_->message_hook_ = SetWindowsHookExW(
        WH_CALLWNDPROCRET, OnMessageDone, nullptr, GetCurrentThreadId());
  }
  return CallNextHookEx(nullptr, code, window, data);
}

LRESULT CALLBACK MessageBoxAnswers::OnMessageDone(int code, WPARAM sender,
                                                  LPARAM data) {
  const auto& done = *reinterpret_cast<const CWPRETSTRUCT*>(data);
  if (code == HC_ACTION && done.message == WM_INITDIALOG &&
      IsDialog(done.hwnd)) {
    current_->Answer(done.hwnd);
  }
  return CallNextHookEx(nullptr, code, sender, data);
}

// A dialog that is ended while it is being initialised is never shown. Its
// texts are complete once the box has handled WM_INITDIALOG.
void MessageBoxAnswers::Answer(HWND box) {
  UnhookWindowsHookEx(std::exchange(message_hook_, nullptr));
  const HWND text = GetDlgItem(box, kTextControl);
  if (text == nullptr) return;  // a dialog of another kind
  boxes_.push_back({WindowText(box), WindowText(text)});
  EndDialog(box, IDOK);
}

}  // namespace host
