#ifndef DIMSE_LINE_CURSOR_H_
#define DIMSE_LINE_CURSOR_H_

#include <cstdint>
#include <string>

#include "tracking/byte_array_view.h"
#include "tree/decode_tree_writer.h"

namespace dicom {

// What the decoders of PDUs, command sets and data sets are built on: the bytes
// of the hex window, how far they are shown, and the writer of the lines. A
// decoder method then reads like the table of what it decodes: one field, one
// line, in wire order. The text of a line is made before the line, so a read
// that fails leaves the cursor at its field and no line behind.
//
// The bytes and the writer stay the caller's and outlive the cursor. Positions
// and lengths are in bytes and count from the first byte in the hex window.
class LineCursor {
 public:
  // Begins at `position` and ends where `bytes` do; `order` is the byte order
  // of the numbers.
  LineCursor(const ByteArrayView& bytes, std::uint32_t position,
             std::uint32_t order, DecodeTreeWriter& writer)
      : bytes_(bytes), position_(position), order_(order), writer_(writer) {}

  // The last line of a decode that an exception ended: where it stood.
  void ShowFailurePosition();

  // Writes a line for `length` bytes at the cursor and moves past them. Throws
  // WrongTreeDepth, unmoved.
  void Show(const std::string& text, LevelStep step, std::uint32_t length);
  // The same with the cursor staying, so that the next line describes the same
  // bytes or some of them.
  void ShowHere(const std::string& text, LevelStep step,
                std::uint32_t length) const;

  // Moves the cursor. Nothing is checked: the next read does that. An advance
  // saturates, so that past the end stays past the end.
  void Advance(std::uint32_t length) { JumpTo(PositionAfter(length)); }
  void JumpTo(std::uint32_t position);

  std::uint32_t Position() const { return position_; }
  // Where the last move began.
  std::uint32_t PreviousPosition() const { return previous_position_; }
  // The position `length` bytes behind the cursor, saturated.
  std::uint32_t PositionAfter(std::uint32_t length) const;
  // Whether the cursor has reached or passed the end.
  bool AtEnd() const { return position_ >= bytes_.Length(); }

  // The field `distance` bytes behind the cursor. Throw OutOfRange when it
  // reaches past the end.
  std::uint8_t Byte(std::uint32_t distance = 0) const;
  std::uint16_t Word(std::uint32_t distance = 0) const;
  std::uint32_t Long(std::uint32_t distance = 0) const;
  std::string Characters(std::uint32_t count, std::uint32_t distance = 0) const;
  // Group and element at the cursor, as all lines write a tag.
  std::string Tag() const;
  // The text of a value of `length` bytes at the cursor, by its VR code.
  std::string Value(std::uint32_t length, std::int32_t vr_code) const;

  const ByteArrayView& Bytes() const { return bytes_; }
  // From the cursor to the end.
  ByteArrayView Rest() const { return bytes_.Part(position_, bytes_.Length()); }
  DecodeTreeWriter& Writer() const { return writer_; }

  // The byte order of all numbers from now on.
  void SetOrder(std::uint32_t order) { order_ = order; }

 private:
  const ByteArrayView bytes_;
  std::uint32_t position_;
  std::uint32_t previous_position_ = 0;
  std::uint32_t order_;
  DecodeTreeWriter& writer_;
};

}  // namespace dicom

#endif  // DIMSE_LINE_CURSOR_H_
