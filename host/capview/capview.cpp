// capview: shows the DICOM traffic of a capture file in a window.
//
//   capview [--module DLL] [--settings INI] [--pdus | --messages]
//           [--row N] [--find TEXT] [CAPTURE...]

#include <windows.h>
// After windows.h.
#include <commctrl.h>
#include <shellapi.h>

#include <string>

#include "host/capview/main_window.h"
#include "host/capview/owned_handles.h"
#include "host/capview/settings.h"
#include "host/module/module_library.h"
#include "host/text/failure.h"
#include "host/text/file_name.h"
#include "host/text/number_text.h"
#include "host/text/wide_text.h"

constexpr int kNoDisplay = 3;  // run.sh knows it

namespace host {
namespace {

struct Arguments {
  std::wstring module = ModuleBesideProgram();
  std::wstring settings = SettingsPath();
  StartRequest request;
};

std::wstring NameFrom(const wchar_t* argument) {
  return PathFromUtf8(Utf8FromWide(argument));
}

// An option with a value; false when it is none of ours.
bool TakeOption(const std::wstring& name, const wchar_t* value,
                Arguments& arguments) {
  if (name == L"--module") {
    arguments.module = NameFrom(value);
  } else if (name == L"--settings") {
    arguments.settings = NameFrom(value);
  } else if (name == L"--row") {
    arguments.request.row = IndexFromText(Utf8FromWide(value));
  } else if (name == L"--find") {
    arguments.request.find = value;
  } else {
    return false;
  }
  return true;
}

Arguments ReadArguments() {
  Arguments arguments;
  int count = 0;
  const LocalMemory<wchar_t*> block(
      CommandLineToArgvW(GetCommandLineW(), &count));
  const wchar_t* const* const texts = block.get();
  for (int i = 1; i < count; ++i) {
    const std::wstring text = texts[i];
    if (text == L"--pdus" || text == L"--messages") {
      arguments.request.list =
          text == L"--pdus" ? ListKind::kPdus : ListKind::kMessages;
    } else if (i + 1 < count && TakeOption(text, texts[i + 1], arguments)) {
      ++i;
    } else {
      arguments.request.captures.emplace_back(NameFrom(texts[i]));
    }
  }
  return arguments;
}

// Messages first, so that the window stays painted; reading in between.
int Run(MainWindow& window) {
  while (true) {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      if (message.message == WM_QUIT) return static_cast<int>(message.wParam);
      if (window.TakesKey(message)) continue;
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
    if (!window.Work()) WaitMessage();
  }
}

int Main(int show) {
  INITCOMMONCONTROLSEX controls{sizeof controls,
                                ICC_LISTVIEW_CLASSES | ICC_TREEVIEW_CLASSES |
                                    ICC_BAR_CLASSES | ICC_TAB_CLASSES |
                                    ICC_PROGRESS_CLASS | ICC_STANDARD_CLASSES};
  InitCommonControlsEx(&controls);
  const Arguments arguments = ReadArguments();
  MainWindow window(arguments.module, arguments.settings);
  window.Show(show);
  window.Begin(arguments.request);
  return Run(window);
}

}  // namespace
}  // namespace host

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t*, int show) {
  try {
    return host::Main(show);
  } catch (const host::Failure&) {
    return kNoDisplay;  // there is nowhere to say so
  }
}
