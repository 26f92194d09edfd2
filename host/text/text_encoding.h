#ifndef HOST_TEXT_TEXT_ENCODING_H_
#define HOST_TEXT_TEXT_ENCODING_H_

#include <string>
#include <string_view>

namespace host {

// The module's texts are bytes of Windows code page 1252; everything that the
// host writes is UTF-8. The five bytes without a character (81h, 8Dh, 8Fh, 90h,
// 9Dh) become the control characters of the same number, as Windows does it.

// Every byte as its character, nothing lost.
std::string Utf8FromCodePage1252(std::string_view bytes);

// For one line on a terminal: line ends and tabs as \r, \n, \t, the other
// control characters as \x1B, so that no text can break the layout.
std::string PrintableFromCodePage1252(std::string_view bytes);

// The same of UTF-8; what is none becomes the replacement character.
std::string PrintableFromUtf8(std::string_view utf8);

// For the lines of a hex dump, whose columns must stay: a byte that would steer
// a terminal becomes the replacement character. Line ends stay.
std::string DumpFromCodePage1252(std::string_view bytes);

// A JSON string with its quotes; `utf8` is taken as it is but for the
// characters that JSON wants escaped and for invalid UTF-8, which becomes the
// replacement character.
std::string JsonString(std::string_view utf8);

// `character` is a code point.
void AppendUtf8(char32_t character, std::string& text);

// Length of the well-formed character at the beginning of `utf8`, which is not
// empty; 0 when there is none.
std::size_t Utf8CharacterLength(std::string_view utf8);

// Width in columns of UTF-8 text, one column a character.
std::size_t ColumnsOf(std::string_view utf8);

}  // namespace host

#endif  // HOST_TEXT_TEXT_ENCODING_H_
