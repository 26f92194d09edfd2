#include "upper_layer/code_text.h"

#include "dimse/value_format.h"

namespace dicom {

std::string CodeText(std::uint8_t code, CodeRows rows,
                     const std::string& other) {
  for (const CodeRow& row : rows) {
    if (row.first <= code && code <= row.last) {
      return ByteDecimal(code) + row.text;
    }
  }
  return other;
}

}  // namespace dicom
