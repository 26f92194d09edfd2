#ifndef TESTS_DECODE_TEST_H_
#define TESTS_DECODE_TEST_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "tests/bytes.h"
#include "tests/test_dictionary.h"
#include "tests/test_host.h"
#include "tracking/presentation_context_table.h"
#include "tree/decode_tree_writer.h"

namespace dicom::testing {

inline ByteArrayView ViewOf(const Bytes& bytes) {
  return {bytes.data(), bytes.Length()};
}

inline std::string TreeLine(int depth, std::uint32_t offset,
                            std::uint32_t length, const std::string& text) {
  return std::to_string(depth) + " [" + std::to_string(offset) + "+" +
         std::to_string(length) + "] " + text + "\n";
}

// "0000001Ah, 26", or with four digits.
inline std::string HexLength(int digits, std::uint32_t length) {
  char text[24];
  std::snprintf(text, sizeof(text), "%0*Xh, %d", digits,
                static_cast<unsigned>(length), static_cast<int>(length));
  return text;
}

// The lines of an element without VR, or of an item, up to its value's, which
// is "Value Field" and `value`.
inline std::string ElementLines(std::uint32_t offset, const std::string& tag,
                                const std::string& name, std::uint32_t length,
                                const std::string& value, int depth = 1) {
  return TreeLine(depth, offset, 8 + length, tag + " - " + name) +
         TreeLine(depth + 1, offset, 4, "Value Type: " + name) +
         TreeLine(depth + 1, offset + 4, 4,
                  "Value Length: " + HexLength(8, length)) +
         TreeLine(depth + 1, offset + 8, length, "Value Field" + value);
}

// The line in which a failed decode ends, and what threw.
inline std::string ThrewAt(std::uint32_t position, const std::string& text) {
  return TreeLine(0, position, 1,
                  "ERROR - Could not decode further at Position: " +
                      HexLength(1, position)) +
         "threw " + text;
}

// A host, a small dictionary and three accepted contexts: what a DIMSE decoder
// works with.
class DecodeTest : public ::testing::Test {
 protected:
  static constexpr std::uint8_t kImplicit = 1;
  static constexpr std::uint8_t kExplicit = 3;
  static constexpr std::uint8_t kExplicitBig = 5;
  static constexpr std::uint8_t kNotAccepted = 7;

  DecodeTest() {
    contexts_.AddPresentationContext(kImplicit, "1.2.840.10008.1.2");
    contexts_.AddPresentationContext(kExplicit, "1.2.840.10008.1.2.1");
    contexts_.AddPresentationContext(kExplicitBig, "1.2.840.10008.1.2.2");
  }
  ~DecodeTest() override { ClearTree(host_.Tree()); }

  // What `decode` writes with the writer that it is given, as lines
  // "depth [offset+length] text"; behind them "threw TEXT" if it threw.
  template <typename Decode>
  std::string TreeOf(Decode decode) {
    ClearTree(host_.Tree());
    std::string outcome;
    try {
      DecodeTreeWriter writer({host_.Window(), host_.Tree(), host_.Images()},
                              0);
      decode(writer);
    } catch (const std::exception& failure) {
      outcome = std::string("threw ") + failure.what();
    }
    return host_.TreeText() + outcome;
  }

  // The same of a decoder whose failures are another's to show.
  template <typename Decoder>
  static void Run(Decoder decoder) {
    try {
      decoder.Decode();
    } catch (const std::exception&) {
      decoder.ShowFailurePosition();
      throw;
    }
  }

  TestHost host_;
  PresentationContextTable contexts_;
  TestDictionary dictionary_{"1.2.840.10008.1.1;Verification SOP Class\n",
                             "0000,0000;Command Group Length;UL\n"
                             "0000,0002;Affected SOP Class UID;UI\n"
                             "0000,0100;Command Field;US\n"
                             "0000,0110;Message ID;US\n"
                             "0000,0800;Command Data Set Type;US\n"
                             "0008,0016;SOP Class UID;UI\n"
                             "0008,1140;Referenced Image Sequence;SQ\n"
                             "0010,0010;Patient's Name;PN\n"
                             "0028,0010;Rows;US\n"
                             "60xx,3000;Overlay Data;OW;retired\n"
                             "7FE0,0010;Pixel Data;OB\n"
                             "FFFE,E000;Item;XX\n"
                             "FFFE,E0DD;Sequence Delimitation Item;XX\n"};
};

}  // namespace dicom::testing

#endif  // TESTS_DECODE_TEST_H_
