#ifndef HOST_TEXT_JSON_OBJECT_H_
#define HOST_TEXT_JSON_OBJECT_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/text/text_encoding.h"

namespace host {

// A JSON object whose "name": value pairs come once and in order. Written by
// hand: a library's numbers lose the zeros of "0.001951000", which a reader
// sees the clock's digits by, and its tree of values costs twice the time of a
// row.
class JsonObject {
 public:
  void Text(std::string_view name, std::string_view utf8) {
    Value(name, JsonString(utf8));
  }
  void Number(std::string_view name, std::uint64_t number) {
    Value(name, std::to_string(number));
  }
  void Value(std::string_view name, std::string_view json) {
    text_ += text_.size() == 1 ? "" : ",";
    text_ += '"';
    text_ += name;
    text_ += "\":";
    text_ += json;
  }
  void Texts(std::string_view name, const std::vector<std::string>& texts) {
    std::string list = "[";
    for (const std::string& text : texts) {
      list += (list.size() == 1 ? "" : ",") + JsonString(text);
    }
    Value(name, list + "]");
  }
  std::string Open() && { return std::move(text_); }
  std::string Close() && { return std::move(text_ += '}'); }

 private:
  std::string text_ = "{";
};

}  // namespace host

#endif  // HOST_TEXT_JSON_OBJECT_H_
