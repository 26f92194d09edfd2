#include "port/message_box.h"

#include <utility>

namespace port {
namespace {

MessageBoxListener& Listener() {
  static auto* const listener = new MessageBoxListener;
  return *listener;
}

}  // namespace

void OnMessageBox(MessageBoxListener listener) {
  Listener() = std::move(listener);
}

}  // namespace port

int WINAPI MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT) {
  if (port::Listener()) port::Listener()(owner, text, caption);
  return IDOK;
}

BOOL WINAPI MessageBeep(UINT) { return TRUE; }
