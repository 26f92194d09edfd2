#ifndef HOST_DATASET_TRANSFER_SYNTAX_H_
#define HOST_DATASET_TRANSFER_SYNTAX_H_

#include <cstdint>
#include <optional>
#include <string_view>

#include "host/dataset/byte_source.h"

namespace host {

// Of numbers and tags; texts have none.
enum class ByteOrder : std::uint8_t { kLittle, kBig };

// What a transfer syntax says of the elements; how images are compressed does
// not matter here.
struct Encoding {
  bool explicit_vr = false;
  ByteOrder order = ByteOrder::kLittle;
  bool deflated = false;

  bool operator==(const Encoding&) const = default;
};

// The four that there are.
constexpr Encoding kImplicitLittle{};
constexpr Encoding kExplicitLittle{true, ByteOrder::kLittle, false};
constexpr Encoding kExplicitBig{true, ByteOrder::kBig, false};
constexpr Encoding kDeflated{true, ByteOrder::kLittle, true};

std::string_view EncodingText(Encoding encoding);  // "explicit VR big endian"

// Of the transfer syntax with this UID, padded or not; nothing for one that is
// not in the registry, whose elements may be anything.
std::optional<Encoding> EncodingOf(std::string_view transfer_syntax);

// What the first elements look like. When nothing fits, or the bytes are too
// few to tell, it is not confident.
struct Judgement {
  Encoding encoding;
  bool confident = false;

  bool operator==(const Judgement&) const = default;
};
Judgement JudgeEncoding(ByteSource& source);

// How the encoding of a data set is known.
enum class EncodingOrigin : std::uint8_t {
  kNegotiated,
  kGuessed,      // from the bytes: there was no negotiation to be seen
  kContradicts,  // from the bytes, which are surely not what was negotiated
};
// What to read with, and how far to trust it.
struct ChosenEncoding {
  Encoding encoding;
  EncodingOrigin origin = EncodingOrigin::kNegotiated;
};

// The encoding to read a data set with. `transfer_syntax` is the UID that was
// negotiated for it; empty when the capture does not hold the negotiation.
ChosenEncoding ChooseEncoding(ByteSource& source,
                              std::string_view transfer_syntax);

}  // namespace host

#endif  // HOST_DATASET_TRANSFER_SYNTAX_H_
