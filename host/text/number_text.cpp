#include "host/text/number_text.h"

namespace host {

std::string NumberText(std::uint64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3;) {
    at -= 3;
    text.insert(at, 1, ',');
  }
  return text;
}

std::string CountText(std::uint64_t count, std::string_view one,
                      std::string_view many) {
  return NumberText(count).append(" ").append(count == 1 ? one : many);
}

std::string BytesText(std::uint64_t count) {
  return CountText(count, "byte", "bytes");
}

}  // namespace host
