#ifndef HOST_STREAMS_EXTENT_LIST_H_
#define HOST_STREAMS_EXTENT_LIST_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "host/capture/byte_store.h"
#include "host/text/time_text.h"

namespace host {

// Where a byte stands in one direction of a connection: 0 is the first byte
// after the SYN. Without a captured SYN 0 is the first payload byte that was
// captured, and what comes before it has negative positions.
using StreamPosition = std::int64_t;

// A run of a stream's bytes as one segment brought it.
struct Extent {
  StreamPosition position = 0;
  ByteStore::Offset stored = 0;
  Nanoseconds time = 0;
  std::uint32_t length = 0;
  std::uint32_t frame = 0;  // 0: not from the capture

  StreamPosition end() const { return position + length; }
};

// Extents in the order of their positions, never overlapping. There is one for
// nearly every packet of a capture, so that they lie close together; most come
// in order, but none costs more than a few steps, in whatever order they come.
class ExtentList {
  using Leaves = std::map<StreamPosition, std::vector<Extent>>;

 public:
  // A place in the list, lost when something is inserted.
  class Cursor {
   public:
    bool AtEnd() const { return leaf_ == end_; }
    const Extent& operator*() const { return leaf_->second[index_]; }
    const Extent* operator->() const { return &**this; }
    Cursor& operator++() {
      if (++index_ == leaf_->second.size()) {
        ++leaf_;
        index_ = 0;
      }
      return *this;
    }

   private:
    friend class ExtentList;
    Leaves::const_iterator leaf_, end_;
    std::size_t index_ = 0;
  };

  // The extent that holds the byte at `position`, or else the first behind it.
  Cursor Find(StreamPosition position) const;
  // `extent` is not empty and overlaps none that is there.
  void Insert(const Extent& extent);

 private:
  // By the position of their first extent; none is empty.
  Leaves leaves_;
};

}  // namespace host

#endif  // HOST_STREAMS_EXTENT_LIST_H_
