#include <windows.h>

#include <type_traits>
#include <utility>

#include "host/module/message_box_answers.h"
#include "host/module/window_text.h"

namespace host {
namespace {

constexpr int kTextControl = 0xFFFF;  // a message box's static text

bool IsDialog(HWND window) {
  return GetClassLongW(window, GCW_ATOM) == 32770;  // the dialog box class
}

struct Unhook {
  void operator()(HHOOK hook) const { UnhookWindowsHookEx(hook); }
};
using Hook = std::unique_ptr<std::remove_pointer_t<HHOOK>, Unhook>;

Hook HookThread(int kind, HOOKPROC procedure) {
  return Hook(
      SetWindowsHookExW(kind, procedure, nullptr, GetCurrentThreadId()));
}

}  // namespace

struct MessageBoxAnswers::Hooks {
  explicit Hooks(MessageBoxAnswers& of) : answers(of) { current = this; }
  ~Hooks() { current = nullptr; }
  Hooks(const Hooks&) = delete;
  Hooks& operator=(const Hooks&) = delete;

  static LRESULT CALLBACK OnWindowEvent(int code, WPARAM window, LPARAM data);
  static LRESULT CALLBACK OnMessageDone(int code, WPARAM sender, LPARAM data);
  void Answer(HWND box);

  static Hooks* current;  // procedures of hooks get no pointer of ours

  MessageBoxAnswers& answers;
  Hook creation = HookThread(WH_CBT, OnWindowEvent);
  // Sees every message of the thread, so it is there only from the creation of
  // a dialog to its initialisation.
  Hook message;
};

MessageBoxAnswers::Hooks* MessageBoxAnswers::Hooks::current = nullptr;

MessageBoxAnswers::MessageBoxAnswers()
    : hooks_(std::make_unique<Hooks>(*this)) {}

MessageBoxAnswers::~MessageBoxAnswers() = default;

std::vector<MessageBoxText> MessageBoxAnswers::Take() {
  return std::exchange(boxes_, {});
}

LRESULT CALLBACK MessageBoxAnswers::Hooks::OnWindowEvent(int code,
                                                         WPARAM window,
                                                         LPARAM data) {
  if (code == HCBT_CREATEWND && current->answers.scopes_ > 0 &&
      !current->message && IsDialog(reinterpret_cast<HWND>(window))) {
    current->message = HookThread(WH_CALLWNDPROCRET, OnMessageDone);
  }
  return CallNextHookEx(nullptr, code, window, data);
}

LRESULT CALLBACK MessageBoxAnswers::Hooks::OnMessageDone(int code,
                                                         WPARAM sender,
                                                         LPARAM data) {
  const auto& done = *reinterpret_cast<const CWPRETSTRUCT*>(data);
  if (code == HC_ACTION && done.message == WM_INITDIALOG &&
      IsDialog(done.hwnd)) {
    current->Answer(done.hwnd);
  }
  return CallNextHookEx(nullptr, code, sender, data);
}

// A dialog that is ended while it is being initialised is never shown. Its
// texts are complete once the box has handled WM_INITDIALOG.
void MessageBoxAnswers::Hooks::Answer(HWND box) {
  message.reset();
  const HWND text = GetDlgItem(box, kTextControl);
  if (text == nullptr) return;  // a dialog of another kind
  answers.boxes_.push_back({AnsiTextOf(box), AnsiTextOf(text)});
  EndDialog(box, IDOK);
}

}  // namespace host
