#include "host/capture/byte_inflow.h"

#include <algorithm>

#include "host/text/inflate_stream.h"

namespace host {
namespace {

constexpr std::size_t kInputBytes = std::size_t{1} << 16;
constexpr int kGzipOnly = 16 + 15;  // with the largest window

}  // namespace

std::span<const std::uint8_t> FileInflow::Peek(std::size_t count) {
  while (peeked_.size() < count) {
    const std::size_t had = peeked_.size();
    peeked_.resize(count);
    const std::size_t more = file_->ReadNext(std::span(peeked_).subspan(had));
    peeked_.resize(had + more);
    if (more == 0) break;
  }
  return peeked_;
}

std::size_t FileInflow::Read(std::span<std::uint8_t> to) {
  if (peeked_.empty()) return file_->ReadNext(to);
  const std::size_t count = std::min(to.size(), peeked_.size());
  std::copy_n(peeked_.begin(), count, to.begin());
  peeked_.erase(peeked_.begin(),
                peeked_.begin() + static_cast<std::ptrdiff_t>(count));
  return count;
}

std::string_view FileInflow::advice() const {
  return "save what the pipe brings to a file first";
}

struct GzipInflow::Stream : InflateStream {
  Stream()
      : InflateStream(kGzipOnly,
                      "There is not enough memory to decompress the capture: "
                      "close other programs.") {}
};

bool GzipInflow::IsGzip(std::span<const std::uint8_t> first_bytes) {
  return first_bytes.size() >= 2 && first_bytes[0] == 0x1F &&
         first_bytes[1] == 0x8B;
}

GzipInflow::GzipInflow(std::unique_ptr<ByteInflow> compressed)
    : compressed_(std::move(compressed)),
      input_(kInputBytes),
      stream_(std::make_unique<Stream>()) {}

GzipInflow::~GzipInflow() = default;

std::string_view GzipInflow::advice() const {
  return "decompress it into a file first, with gunzip -c";
}

bool GzipInflow::Feed() {
  z_stream& state = stream_->state;
  if (state.avail_in != 0) return true;
  const std::size_t count = compressed_->Read(input_);
  state.next_in = input_.data();
  state.avail_in = static_cast<uInt>(count);
  return count != 0;
}

std::size_t GzipInflow::Read(std::span<std::uint8_t> to) {
  z_stream& state = stream_->state;
  state.next_out = to.data();
  state.avail_out = static_cast<uInt>(to.size());
  while (!over_ && state.avail_out == to.size()) {
    if (!Feed()) {
      over_ = true;
      if (!between_members_) damage_ = "its compressed bytes break off";
      break;
    }
    // Behind the last member there may be zeros, as on a tape.
    if (between_members_ && *state.next_in != 0x1F) {
      over_ = true;
      if (*state.next_in != 0) {
        damage_ = "what follows its compressed bytes is not compressed";
      }
      break;
    }
    between_members_ = false;
    const int answer = inflate(&state, Z_NO_FLUSH);
    if (answer == Z_STREAM_END) {
      between_members_ = true;
      inflateReset(&state);
    } else if (answer != Z_OK) {
      over_ = true;
      damage_ = "its compressed bytes are damaged";
    }
  }
  return to.size() - state.avail_out;
}

}  // namespace host
