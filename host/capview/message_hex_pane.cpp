#include "host/capview/message_hex_pane.h"

#include <algorithm>
#include <vector>

#include "host/rows/hex_layout.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

constexpr std::uint64_t kPieceBytes = 1U << 14;
constexpr std::uint64_t kBytesBefore = 1U << 10;  // in sight by scrolling up
constexpr std::uint64_t kMostCopied = 1U << 20;

}  // namespace

MessageHexPane::MessageHexPane(HWND parent, int id) : hex_(parent, id) {
  hex_.OnByte([this](std::uint32_t byte) {
    if (on_byte_) on_byte_(begin_ + byte);
  });
}

void MessageHexPane::Show(MessageOutline* outline) {
  outline_ = outline;
  begin_ = end_ = 0;
  hex_.ShowBytes({}, 0);
  if (outline_ != nullptr) ShowFrom(0);
}

void MessageHexPane::ShowFrom(std::uint64_t begin) {
  std::vector<std::uint8_t> bytes(kPieceBytes);
  begin_ = begin - begin % kDumpBytesPerLine;
  bytes.resize(outline_->Copy(begin_, bytes));
  end_ = begin_ + bytes.size();
  hex_.ShowBytes(bytes, begin_);
}

void MessageHexPane::Mark(const std::optional<DataRange>& bytes) {
  if (!bytes || bytes->length == 0 || bytes->offset >= outline_->size()) {
    return hex_.Highlight({});
  }
  if (bytes->offset < begin_ || bytes->offset >= end_) {
    ShowFrom(bytes->offset - std::min(bytes->offset, kBytesBefore));
  }
  hex_.Highlight(ByteRange{0,
                           static_cast<std::uint32_t>(bytes->offset - begin_),
                           static_cast<std::uint32_t>(
                               std::min(bytes->length, end_ - bytes->offset))});
}

std::wstring MessageHexPane::Digits(const DataRange& bytes) const {
  std::vector<std::uint8_t> values(
      static_cast<std::size_t>(std::min(bytes.length, kMostCopied)));
  values.resize(outline_->Copy(bytes.offset, values));
  return WideFromUtf8(HexDigits(values));
}

}  // namespace host
