#ifndef HOST_CAPVIEW_ASK_DIALOG_H_
#define HOST_CAPVIEW_ASK_DIALOG_H_

#include <windows.h>

#include <optional>
#include <string>

namespace host {

// Asks for one line of text, which begins as `before`; empty when the person
// does not want to.
std::optional<std::wstring> AskForText(HWND owner, const wchar_t* title,
                                       const wchar_t* label,
                                       const std::wstring& before);

// Shows a dialog of the program's resources (IDD_...) that only tells
// something, until the person closes it.
void ShowText(HWND owner, int dialog);

}  // namespace host

#endif  // HOST_CAPVIEW_ASK_DIALOG_H_
