#ifndef HOST_TEXT_WIDE_TEXT_H_
#define HOST_TEXT_WIDE_TEXT_H_

#include <string>
#include <string_view>

namespace host {

// Between Windows' UTF-16 and the UTF-8 that the host keeps texts in.
std::wstring WideFromUtf8(std::string_view utf8);
std::string Utf8FromWide(std::wstring_view wide);

// A file name of the command line as Windows wants it. A name that begins with
// one slash is left alone on Windows; under Wine it is the Unix file.
std::wstring FileName(std::string_view utf8);

// The system's sentence for a Win32 error code, without a full stop.
std::string SystemErrorText(unsigned long error);

}  // namespace host

#endif  // HOST_TEXT_WIDE_TEXT_H_
