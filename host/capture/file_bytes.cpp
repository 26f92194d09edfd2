#include "host/capture/file_bytes.h"

#include <algorithm>
#include <utility>

#include "host/text/failure.h"
#include "host/text/number_text.h"

namespace host {
namespace {

// What is read at once: enough for few calls of the system, and little enough
// for the processor's cache. All windows begin small, since a file may be one
// of many in its capture, as a connection may, and grow while they are read on
// in order.
constexpr std::size_t kLeastAheadBytes = std::size_t{1} << 14;
constexpr std::size_t kAheadBytes = std::size_t{1} << 18;
constexpr std::size_t kLeastAgainBytes = std::size_t{1} << 12;
constexpr std::size_t kMostAgainBytes = std::size_t{1} << 17;

}  // namespace

FileBytes::FileBytes(std::unique_ptr<SystemFile> file)
    : file_(std::move(file)), known_size_(file_->Size()) {}

FileBytes::FileBytes(std::unique_ptr<ByteInflow> inflow,
                     std::shared_ptr<TemporaryRoom> room)
    : file_(SystemFile::MakeTemporary()),
      known_size_(0),
      inflow_(std::move(inflow)),
      room_(std::move(room)) {}

FileBytes::~FileBytes() {
  if (room_) room_->used -= known_size_;
}

void FileBytes::Rest() {
  ahead_ = {};
  RestAgain();
}

void FileBytes::RestAgain() { again_ = {}; }

void FileBytes::Pull(std::uint64_t end) {
  std::vector<std::uint8_t> piece;
  while (inflow_ && known_size_ < end) {
    piece.resize(kAheadBytes);
    piece.resize(inflow_->Read(piece));
    const std::uint64_t left = room_->most - room_->used;
    const bool too_much = piece.size() > left;
    if (too_much) piece.resize(static_cast<std::size_t>(left));
    file_->Write(known_size_, piece);
    known_size_ += piece.size();
    room_->used += piece.size();
    if (!too_much && !piece.empty()) continue;
    if (too_much) {
      limit_ = "since its bytes are kept in temporary files, which may hold " +
               BytesText(room_->most) + ": " + std::string(inflow_->advice()) +
               ", or let --max-temporary allow more.";
    }
    damage_ = inflow_->damage();
    inflow_.reset();
  }
}

void FileBytes::Fill(Window& window, std::uint64_t offset, std::size_t length) {
  if (window.room.size() < length) window.room.resize(length);
  window.size = 0;  // nothing, should the file fail
  window.begin = offset;
  window.size = file_->Read(offset, std::span(window.room).first(length));
  known_size_ = std::max(known_size_, window.end());
}

std::span<const std::uint8_t> FileBytes::ReadAhead(std::uint64_t offset,
                                                   std::size_t least) {
  Pull(offset + least);
  const std::size_t wanted =
      std::clamp(2 * ahead_.size, kLeastAheadBytes, kAheadBytes);
  Fill(ahead_, offset, std::max(least, wanted));
  return ahead_.bytes();
}

bool FileBytes::Reaches(std::uint64_t end) {
  Pull(end);
  if (end > known_size_) known_size_ = file_->Size();
  return end <= known_size_;
}

std::span<const std::uint8_t> FileBytes::Again(std::uint64_t offset,
                                               std::size_t length) {
  const Window* found = ahead_.Holds(offset, length) ? &ahead_ : nullptr;
  for (Window& window : again_) {
    if (found != nullptr || !window.Holds(offset, length)) continue;
    window.used = ++uses_;
    found = &window;
  }
  if (found == nullptr) found = &ReadAgain(offset, length);
  return found->bytes().subspan(static_cast<std::size_t>(offset - found->begin),
                                length);
}

FileBytes::Window& FileBytes::ReadAgain(std::uint64_t offset,
                                        std::size_t length) {
  Window* oldest = again_.data();
  std::size_t wanted = kLeastAgainBytes;
  for (Window& window : again_) {
    const bool goes_on = offset >= window.begin &&
                         offset <= window.end() + kLeastAgainBytes &&
                         window.size != 0;
    if (goes_on) wanted = std::min(2 * window.size, kMostAgainBytes);
    if (window.used < oldest->used) oldest = &window;
  }
  Fill(*oldest, offset, std::max(length, wanted));
  if (oldest->size < length) {
    throw Failure(
        "The capture file has become shorter while it was read: wait until "
        "nothing writes to it, and open it again.");
  }
  oldest->used = ++uses_;
  return *oldest;
}

}  // namespace host
