#include "host/text/text_encoding.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

namespace host {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

// Code page 1252, bytes 80h to 9Fh; the others are their own code points.
constexpr std::array<std::uint16_t, 32> kUpperControls{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

unsigned CodePoint(unsigned char byte) {
  const bool upper_control = byte >= 0x80 && byte < 0xA0;
  return upper_control ? kUpperControls[byte - 0x80U] : byte;
}

bool IsControl(unsigned code_point) {
  return code_point < 0x20 || (code_point >= 0x7F && code_point < 0xA0);
}

void AppendEscaped(unsigned char byte, std::string& text) {
  switch (byte) {
    case '\r':
      text += "\\r";
      return;
    case '\n':
      text += "\\n";
      return;
    case '\t':
      text += "\\t";
      return;
    default:
      break;
  }
  std::array<char, 8> escaped{};
  std::snprintf(escaped.data(), escaped.size(), "\\x%02X", byte);
  text += escaped.data();
}

constexpr std::array<bool, 256> kIsPlain = [] {
  std::array<bool, 256> is_plain{};
  for (std::size_t i = 0x20; i < 0x7F; ++i) is_plain[i] = true;
  is_plain['"'] = is_plain['\\'] = false;
  return is_plain;
}();

// Moves the bytes at the beginning of `bytes` that stand for themselves in
// every text: most bytes of most texts, so at once.
void TakePlain(std::string_view& bytes, std::string& text) {
  const auto end = std::find_if_not(bytes.begin(), bytes.end(), [](char byte) {
    return kIsPlain[static_cast<unsigned char>(byte)];
  });
  const auto length = static_cast<std::size_t>(end - bytes.begin());
  text += bytes.substr(0, length);
  bytes.remove_prefix(length);
}

template <class AppendByte>
std::string Convert(std::string_view bytes, AppendByte append) {
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 8);
  for (TakePlain(bytes, text); !bytes.empty(); TakePlain(bytes, text)) {
    append(static_cast<unsigned char>(bytes.front()), text);
    bytes.remove_prefix(1);
  }
  return text;
}

void AppendJsonControl(unsigned char byte, std::string& text) {
  std::array<char, 8> escaped{};
  std::snprintf(escaped.data(), escaped.size(), "\\u%04x", byte);
  text += escaped.data();
}

}  // namespace

void AppendUtf8(char32_t character, std::string& text) {
  const auto append = [&text](char32_t byte) {
    text += static_cast<char>(byte);
  };
  if (character < 0x80) {
    append(character);
    return;
  }
  if (character < 0x800) {
    append(0xC0 | character >> 6);
  } else {
    if (character < 0x10000) {
      append(0xE0 | character >> 12);
    } else {
      append(0xF0 | character >> 18);
      append(0x80 | (character >> 12 & 0x3F));
    }
    append(0x80 | (character >> 6 & 0x3F));
  }
  append(0x80 | (character & 0x3F));
}

std::size_t Utf8CharacterLength(std::string_view text) {
  const auto byte = [text](std::size_t at) {
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
  };
  const auto continues = [&byte](std::size_t at, unsigned low, unsigned high) {
    return byte(at) >= low && byte(at) <= high;
  };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  if (first < 0xC2 || first > 0xF4) return 0;
  // Neither overlong forms nor surrogates nor code points above 10FFFFh.
  const unsigned low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
  const unsigned high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
  if (!continues(1, low, high)) return 0;
  if (first < 0xE0) return 2;
  if (!continues(2, 0x80, 0xBF)) return 0;
  if (first < 0xF0) return 3;
  return continues(3, 0x80, 0xBF) ? 4 : 0;
}

std::string Utf8FromCodePage1252(std::string_view bytes) {
  return Convert(bytes, [](unsigned char byte, std::string& text) {
    AppendUtf8(CodePoint(byte), text);
  });
}

std::string PrintableFromCodePage1252(std::string_view bytes) {
  return Convert(bytes, [](unsigned char byte, std::string& text) {
    if (IsControl(CodePoint(byte))) {
      AppendEscaped(byte, text);
    } else {
      AppendUtf8(CodePoint(byte), text);
    }
  });
}

std::string PrintableFromUtf8(std::string_view utf8) {
  std::string text;
  text.reserve(utf8.size());
  while (!utf8.empty()) {
    const std::size_t length = Utf8CharacterLength(utf8);
    const auto last = static_cast<unsigned char>(utf8[length > 1]);
    // The upper controls are C2h and their own number.
    const bool may_be_control = length == 1 || utf8.starts_with('\xC2');
    if (length == 0) {
      text += kReplacement;
    } else if (may_be_control && IsControl(last)) {
      AppendEscaped(last, text);
    } else {
      text += utf8.substr(0, length);
    }
    utf8.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return text;
}

std::string DumpFromCodePage1252(std::string_view bytes) {
  return Convert(bytes, [](unsigned char byte, std::string& text) {
    if (IsControl(CodePoint(byte)) && byte != '\r' && byte != '\n') {
      text += kReplacement;
    } else {
      AppendUtf8(CodePoint(byte), text);
    }
  });
}

std::string JsonString(std::string_view utf8) {
  std::string text = "\"";
  text.reserve(utf8.size() + utf8.size() / 8 + 2);
  for (TakePlain(utf8, text); !utf8.empty(); TakePlain(utf8, text)) {
    const std::size_t length = Utf8CharacterLength(utf8);
    const auto first = static_cast<unsigned char>(utf8.front());
    if (first == '"' || first == '\\') {
      text += '\\';
      text += utf8.front();
    } else if (first == '\r' || first == '\n' || first == '\t') {
      AppendEscaped(first, text);
    } else if (first < 0x20 || first == 0x7F) {
      AppendJsonControl(first, text);
    } else if (length == 0) {
      text += kReplacement;
    } else {
      text += utf8.substr(0, length);
    }
    utf8.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return text += '"';
}

std::size_t ColumnsOf(std::string_view utf8) {
  return static_cast<std::size_t>(
      std::count_if(utf8.begin(), utf8.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
      }));
}

}  // namespace host
