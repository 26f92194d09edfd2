#ifndef HOST_OBJECTS_MESSAGE_DATA_H_
#define HOST_OBJECTS_MESSAGE_DATA_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/dataset/byte_source.h"
#include "host/dataset/inflated_source.h"
#include "host/dataset/transfer_syntax.h"
#include "host/dialogue/dialogue.h"

namespace host {

// Bytes [offset, offset + length) of a data set.
struct DataRange {
  std::uint64_t offset = 0;
  std::uint64_t length = 0;

  bool operator==(const DataRange&) const = default;
};

// The data set of one message, ready to be read. Must not outlive the dialogue.
class MessageData {
 public:
  MessageData(const Dialogue& dialogue, const DialogueMessage& message);

  // As it was sent, lost bytes being zero.
  ByteSource& Sent() { return *sent_; }
  // What elements are read from: of a deflated data set what comes out of it.
  ByteSource& Readable();
  // Of the elements, and how it is known.
  const ChosenEncoding& Chosen() const { return chosen_; }
  // The transfer syntax that was negotiated, or where that is not known or not
  // what was sent, one that has the encoding.
  const std::string& TransferSyntax() const { return transfer_syntax_; }
  // "negotiated", "guessed", "not the negotiated one".
  std::string_view OriginText() const;
  // What keeps a deflated data set from being read to its end; or empty.
  std::string Problem() const;

 private:
  std::unique_ptr<ByteSource> sent_;
  ChosenEncoding chosen_;
  std::string transfer_syntax_;
  std::unique_ptr<InflatedSource> inflated_;
};

// The bytes of a message's data set that the capture has lost, in order, those
// beside each other as one. Linear in its pieces and their holes.
std::vector<DataRange> LostRanges(const Dialogue& dialogue,
                                  const DialogueMessage& message);

// The bytes of its command set, lost ones being zero. Throws Failure when they
// cannot be read back.
std::vector<std::uint8_t> CommandBytes(const Dialogue& dialogue,
                                       const DialogueMessage& message);

}  // namespace host

#endif  // HOST_OBJECTS_MESSAGE_DATA_H_
