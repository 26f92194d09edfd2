#include "host/page/markup.h"

#include <utility>

#include "host/text/text_encoding.h"

namespace host {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr int kArrowHead = 7;  // half as wide as it is long

// Control characters, those that turn the direction of a text, and the two
// that are none at all.
bool IsUnfit(std::string_view character) {
  if (character.size() == 1) {
    const auto byte = static_cast<unsigned char>(character[0]);
    return (byte < 0x20 && byte != '\n' && byte != '\t') || byte == 0x7F;
  }
  if (character.size() == 2) {  // U+0080 to U+009F
    return character[0] == '\xC2' &&
           static_cast<unsigned char>(character[1]) < 0xA0;
  }
  if (character.size() != 3) return false;
  const std::string_view head = character.substr(0, 2);
  const auto last = static_cast<unsigned char>(character[2]);
  if (head == "\xE2\x80") return last >= 0xAA && last <= 0xAE;
  if (head == "\xE2\x81") return last >= 0xA6 && last <= 0xA9;
  return head == "\xEF\xBF" && last >= 0xBE;
}

std::string_view EscapeOf(char character) {
  switch (character) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&#39;";
    default:
      return {};
  }
}

std::string Attribute(std::string_view name, int value) {
  return " " + std::string(name) + "=\"" + std::to_string(value) + "\"";
}

std::string ClassOf(std::string_view style_class) {
  if (style_class.empty()) return {};
  return " class=\"" + std::string(style_class) + "\"";
}

}  // namespace

std::string Markup(std::string_view utf8) {
  std::string text;
  text.reserve(utf8.size());
  while (!utf8.empty()) {
    const std::size_t length = Utf8CharacterLength(utf8);
    const std::string_view character = utf8.substr(0, length);
    const std::string_view escape = EscapeOf(utf8[0]);
    if (length == 0 || IsUnfit(character)) {
      text += kReplacement;
    } else {
      text += escape.empty() ? character : escape;
    }
    utf8.remove_prefix(length == 0 ? 1 : length);
  }
  return text;
}

std::string Shortened(std::string_view utf8, std::size_t most) {
  std::size_t end = 0;
  for (std::size_t count = 0; end < utf8.size(); ++count) {
    if (count == most) {
      return std::string(utf8.substr(0, end)) + "\xE2\x80\xA6";
    }
    const std::size_t length = Utf8CharacterLength(utf8.substr(end));
    end += length == 0 ? 1 : length;
  }
  return std::string(utf8);
}

std::string Element(std::string_view tag, std::string_view style_class,
                    std::string_view utf8) {
  const std::string name(tag);
  return "<" + name + ClassOf(style_class) + ">" + Markup(utf8) + "</" + name +
         ">\n";
}

Drawing::Drawing(int width, int height, std::string_view title)
    : text_("<svg role=\"img\" viewBox=\"0 0 " + std::to_string(width) + " " +
            std::to_string(height) + "\">\n" + Element("title", "", title)) {}

void Drawing::Line(Point from, Point to, std::string_view style_class) {
  text_ += "<line" + ClassOf(style_class) + Attribute("x1", from.x) +
           Attribute("y1", from.y) + Attribute("x2", to.x) +
           Attribute("y2", to.y) + "/>\n";
}

void Drawing::Arrow(Point from, Point to, std::string_view style_class) {
  Line(from, to, style_class);
  const int back = to.x - (from.x < to.x ? kArrowHead : -kArrowHead);
  text_ += "<path" + ClassOf(style_class) + " d=\"M" + std::to_string(to.x) +
           " " + std::to_string(to.y) + "L" + std::to_string(back) + " " +
           std::to_string(to.y - kArrowHead / 2) + "V" +
           std::to_string(to.y + kArrowHead / 2) + "Z\"/>\n";
}

void Drawing::Box(Point corner, int width, int height,
                  std::string_view style_class) {
  text_ += "<rect" + ClassOf(style_class) + Attribute("x", corner.x) +
           Attribute("y", corner.y) + Attribute("width", width) +
           Attribute("height", height) + "/>\n";
}

void Drawing::Text(Point at, std::string_view style_class,
                   std::string_view utf8) {
  text_ += "<text" + ClassOf(style_class) + Attribute("x", at.x) +
           Attribute("y", at.y) + ">" + Markup(utf8) + "</text>\n";
}

std::string Drawing::Close() && { return std::move(text_ += "</svg>\n"); }

}  // namespace host
