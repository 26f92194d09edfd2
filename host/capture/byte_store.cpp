#include "host/capture/byte_store.h"

#include <algorithm>
#include <utility>

namespace host {
namespace {

constexpr std::size_t kAppendedInMemory = std::size_t{1} << 20;

// An offset is the number of its file and a place in it; the files are counted
// from 1, and 0 stands for what was appended.
constexpr int kPlaceBits = 48;

constexpr ByteStore::Offset PlaceOf(ByteStore::Offset offset) {
  return offset & ((ByteStore::Offset{1} << kPlaceBits) - 1);
}

}  // namespace

ByteStore::Offset ByteStore::AddFile(std::shared_ptr<FileBytes> file) {
  files_.push_back(std::move(file));
  return Offset{files_.size()} << kPlaceBits;
}

ByteStore::Offset ByteStore::Append(std::span<const std::uint8_t> bytes) {
  if (appended_.size() + bytes.size() > kAppendedInMemory) MoveOut();
  const Offset offset = moved_out_ + appended_.size();
  appended_.insert(appended_.end(), bytes.begin(), bytes.end());
  return offset;
}

void ByteStore::MoveOut() {
  if (temporary_ == nullptr) {
    auto file = SystemFile::MakeTemporary();
    temporary_ = file.get();
    moved_ = std::make_unique<FileBytes>(std::move(file));
  }
  temporary_->Write(moved_out_, appended_);
  moved_out_ += appended_.size();
  appended_.clear();
}

// Of thousands of files those that were not asked lately hold no memory. All
// but a few have been read in order to their end by then.
void ByteStore::KeepAwake(std::size_t file) const {
  if (awake_.front() == file) return;
  auto found = std::ranges::find(awake_, file);
  if (found == awake_.end()) {
    found = std::prev(found);
    if (*found != 0) files_[*found - 1]->RestAgain();
    *found = file;
  }
  std::rotate(awake_.begin(), found, std::next(found));
}

std::span<const std::uint8_t> ByteStore::At(Offset offset,
                                            std::size_t length) const {
  const Offset place = PlaceOf(offset);
  if (const auto file = static_cast<std::size_t>(offset >> kPlaceBits)) {
    KeepAwake(file);
    return files_[file - 1]->Again(place, length);
  }
  if (place < moved_out_) return moved_->Again(place, length);
  return std::span(appended_).subspan(
      static_cast<std::size_t>(place - moved_out_), length);
}

void ByteStore::Copy(Offset offset, std::span<std::uint8_t> to) const {
  std::ranges::copy(At(offset, to.size()), to.begin());
}

bool ByteStore::Equal(Offset offset,
                      std::span<const std::uint8_t> bytes) const {
  return std::ranges::equal(At(offset, bytes.size()), bytes);
}

}  // namespace host
