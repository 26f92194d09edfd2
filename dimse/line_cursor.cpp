#include "dimse/line_cursor.h"

#include "dimse/value_format.h"
#include "tracking/number_text.h"
#include "tracking/saturating_sum.h"

namespace dicom {

void LineCursor::ShowFailurePosition() {
  ShowHere("ERROR - Could not decode further at Position: " +
               HexAndDecimal(position_),
           LevelStep::kSection, 1);
}

void LineCursor::Show(const std::string& text, LevelStep step,
                      std::uint32_t length) {
  ShowHere(text, step, length);
  Advance(length);
}

void LineCursor::ShowHere(const std::string& text, LevelStep step,
                          std::uint32_t length) const {
  writer_.AddLine(text, step, position_, length);
}

void LineCursor::JumpTo(std::uint32_t position) {
  previous_position_ = position_;
  position_ = position;
}

std::uint32_t LineCursor::PositionAfter(std::uint32_t length) const {
  return SaturatingSum(position_, length);
}

std::uint8_t LineCursor::Byte(std::uint32_t distance) const {
  return bytes_.ByteAt(PositionAfter(distance));
}

std::uint16_t LineCursor::Word(std::uint32_t distance) const {
  return bytes_.WordAt(PositionAfter(distance), order_);
}

std::uint32_t LineCursor::Long(std::uint32_t distance) const {
  return bytes_.LongAt(PositionAfter(distance), order_);
}

// Deliberate: zero bytes are kept; the tree shows the text up to the first.
std::string LineCursor::Characters(std::uint32_t count,
                                   std::uint32_t distance) const {
  return std::string(bytes_.CharactersAt(PositionAfter(distance), count));
}

std::string LineCursor::Tag() const { return TagText(Word(), Word(2)); }

std::string LineCursor::Value(std::uint32_t length,
                              std::int32_t vr_code) const {
  return ValueText(bytes_, position_, length, order_, vr_code);
}

}  // namespace dicom
