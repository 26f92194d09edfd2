#ifndef HOST_CAPVIEW_FILE_DIALOGS_H_
#define HOST_CAPVIEW_FILE_DIALOGS_H_

#include <windows.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/capview/owned_handles.h"

namespace host {

// The system's own questions, over the window `owner`. Empty, or a null
// printer, when the person does not want to.

// The names of one or several captures that are there; none: see above.
std::vector<std::filesystem::path> AskForCaptures(HWND owner);
// The name of a text to be written; an old one may be replaced.
std::optional<std::wstring> AskForTextFile(HWND owner);
// A folder that is there; `text` says what for.
std::optional<std::wstring> AskForFolder(HWND owner, const wchar_t* text);
// Throws Failure when the system has no printer.
Printer AskForPrinter(HWND owner);

}  // namespace host

#endif  // HOST_CAPVIEW_FILE_DIALOGS_H_
