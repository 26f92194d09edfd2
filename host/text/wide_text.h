#ifndef HOST_TEXT_WIDE_TEXT_H_
#define HOST_TEXT_WIDE_TEXT_H_

#include <string>
#include <string_view>

namespace host {

// Between the UTF-8 that the host keeps texts in and Windows, whose functions
// for files, windows and errors take UTF-16. What is malformed becomes the
// replacement character; nothing throws.
std::wstring WideFromUtf8(std::string_view utf8);
std::string Utf8FromWide(std::wstring_view wide);
// As the module has its texts; what the code page does not know becomes the
// nearest character that it knows, or a question mark.
std::string CodePage1252FromWide(std::wstring_view wide);

}  // namespace host

#endif  // HOST_TEXT_WIDE_TEXT_H_
