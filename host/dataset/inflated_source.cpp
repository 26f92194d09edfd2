#include "host/dataset/inflated_source.h"

#include <algorithm>

#include "host/text/inflate_stream.h"
#include "host/text/number_text.h"

namespace host {
namespace {

constexpr std::size_t kPieceBytes = std::size_t{1} << 16;
constexpr std::size_t kInputBytes = std::size_t{1} << 14;
constexpr int kRawStream = -15;  // no header, the largest window

}  // namespace

struct InflatedSource::Stream : InflateStream {
  Stream()
      : InflateStream(kRawStream,
                      "There is not enough memory to inflate a data set; close "
                      "other programs and open the capture again.") {}
};

InflatedSource::InflatedSource(ByteSource& deflated)
    : deflated_(deflated),
      input_(kInputBytes),
      piece_(kPieceBytes),
      before_(kPieceBytes) {
  const std::uint64_t most = kMostBytes + kMostGrowth * deflated.size();
  Begin();
  while (NextPiece()) {
    size_ = std::min(piece_begin_ + piece_size_, most);
    if (size_ < most) continue;
    NoteProblem("is a bomb, which is not inflated further than to");
    return;
  }
}

InflatedSource::~InflatedSource() = default;

std::size_t InflatedSource::Read(std::uint64_t offset,
                                 std::span<std::uint8_t> to) {
  std::size_t done = 0;
  while (done < to.size() && offset + done < size_) {
    const std::uint64_t at = offset + done;
    if (at + before_size_ < piece_begin_) Begin();
    while (at >= piece_begin_ + piece_size_) {
      if (!NextPiece()) return done;
    }
    const bool is_before = at < piece_begin_;
    const std::size_t size = is_before ? before_size_ : piece_size_;
    const auto from = static_cast<std::size_t>(
        at - (is_before ? piece_begin_ - before_size_ : piece_begin_));
    const auto count = static_cast<std::size_t>(
        std::min<std::uint64_t>({size - from, to.size() - done, size_ - at}));
    const auto& piece = is_before ? before_ : piece_;
    std::copy_n(piece.begin() + static_cast<std::ptrdiff_t>(from), count,
                to.begin() + static_cast<std::ptrdiff_t>(done));
    done += count;
  }
  return done;
}

void InflatedSource::Begin() {
  stream_ = std::make_unique<Stream>();
  input_end_ = 0;
  piece_begin_ = 0;
  piece_size_ = 0;
  before_size_ = 0;
  ended_ = false;
}

// Inflates the piece behind the present one; false when there is none.
bool InflatedSource::NextPiece() {
  piece_begin_ += piece_size_;
  before_size_ = piece_size_;
  piece_.swap(before_);
  piece_size_ = 0;
  z_stream& state = stream_->state;
  state.next_out = piece_.data();
  state.avail_out = static_cast<uInt>(piece_.size());
  while (!ended_ && state.avail_out > 0) {
    if (state.avail_in == 0 && !FillInput()) {
      NoteProblem("ends too early, at");
      break;
    }
    const int result = inflate(&state, Z_NO_FLUSH);
    ended_ = result == Z_STREAM_END;
    if (result != Z_OK && !ended_) {
      NoteProblem("is damaged at");
      break;
    }
  }
  piece_size_ = piece_.size() - state.avail_out;
  return piece_size_ > 0;
}

bool InflatedSource::FillInput() {
  const std::size_t count = deflated_.Read(input_end_, input_);
  input_end_ += count;
  stream_->state.next_in = input_.data();
  stream_->state.avail_in = static_cast<uInt>(count);
  return count > 0;
}

void InflatedSource::NoteProblem(const char* what) {
  ended_ = true;
  problem_ = std::string("the deflated stream ") + what + " byte " +
             NumberText(input_end_ - stream_->state.avail_in);
}

}  // namespace host
