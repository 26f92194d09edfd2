#ifndef HOST_ROWS_MESSAGE_OUTLINE_H_
#define HOST_ROWS_MESSAGE_OUTLINE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/dataset/data_set_reader.h"
#include "host/dialogue/dialogue.h"
#include "host/objects/message_data.h"

namespace host {

// A line of a message's outline.
struct OutlineLine {
  std::string text;    // UTF-8
  DataRange bytes;     // of the message's, as MessageOutline counts them
  bool opens = false;  // lines may stand below it
};

// The way to a line from the top: which line it is on each level, from 0.
using OutlinePath = std::vector<std::uint32_t>;

// Goes through the lines of one part of a message, or through those below one
// of its lines, in the order in which they are shown fully expanded. Costs time
// linear in what is read, and less than 100 bytes a level. A copy goes on by
// itself from the same place. Must not outlive the outline. All but level()
// throw Failure when the bytes of the capture cannot be read back.
class OutlineCursor {
 public:
  // Before the first line. Positions begin at `base`.
  OutlineCursor(ByteSource& source, Encoding encoding, std::uint64_t base);

  // To the next line; false behind the last one. `may_go_on` is asked now and
  // then between two lines: once it says no, the answer is empty, and the next
  // call goes on.
  std::optional<bool> Next(const std::function<bool()>& may_go_on);
  // Of the line, 0 for the first ones.
  std::size_t level() const { return level_ - base_level_; }
  // The line that it is at.
  OutlineLine Line();
  // Without its text: where it begins.
  std::uint64_t Begin() const { return base_ + reader_.event().header_at; }
  // For the lines below the one that it is at, whose level is then 0.
  OutlineCursor Below() const;

 private:
  DataSetReader reader_;
  const std::uint64_t base_;
  std::size_t base_level_ = 0;
  std::size_t level_ = 0;
  bool is_over_ = false;
};

// A message as a tree of lines that is read only where it is looked at: the
// command set and the data set, with one line for each element and item, whose
// problems stand in its line. Bytes are counted through both parts, the command
// set first; those of a deflated data set are the ones that come out of it.
class MessageOutline {
 public:
  // The dialogue must outlive it. Throws Failure when the bytes of the capture
  // cannot be read back.
  MessageOutline(const Dialogue& dialogue, const DialogueMessage& message);
  MessageOutline(const MessageOutline&) = delete;
  MessageOutline& operator=(const MessageOutline&) = delete;

  static constexpr std::size_t kCommandSet = 0;
  static constexpr std::size_t kDataSet = 1;

  // The top lines: a part each, which opens, then what is wrong with the whole.
  const std::vector<OutlineLine>& Top() const { return top_; }
  // The first of the top lines that are parts.
  std::size_t Parts() const { return data_ ? 2 : 1; }
  OutlineCursor PartAt(std::size_t part);

  // Of both parts together.
  std::uint64_t size() const { return command_.size() + data_size_; }
  // Copies bytes from `offset` on; answers how many there are, as ByteSource.
  std::size_t Copy(std::uint64_t offset, std::span<std::uint8_t> to);

  // The next line that contains the text, in capitals or not, behind or before
  // the path, going round at the end; an empty path stands before the first.
  // Parts are not searched themselves. Empty when there is none, or when it may
  // not go on any more.
  std::optional<OutlinePath> Find(std::string_view text,
                                  const OutlinePath& from, bool backwards,
                                  const std::function<bool()>& may_go_on);
  // The innermost line that begins at the byte or last before it.
  std::optional<OutlinePath> LineAt(std::uint64_t byte,
                                    const std::function<bool()>& may_go_on);
  // The line at the path and all below it, two blanks a level, with CR LF; the
  // first kMostSubtreeLines of them, as far as it may go on.
  std::string SubtreeText(const OutlinePath& path,
                          const std::function<bool()>& may_go_on);

  static constexpr std::size_t kMostSubtreeLines = 100000;

 private:
  // Calls `take` with each line until it answers false, or it may not go on.
  void Walk(
      const std::function<bool()>& may_go_on,
      const std::function<bool(const OutlinePath&, OutlineCursor&)>& take);
  void AddLosses(const Dialogue& dialogue, const DialogueMessage& message);

  std::vector<std::uint8_t> command_;
  MemorySource command_source_;
  std::unique_ptr<MessageData> data_;  // null without a data set
  std::uint64_t data_size_ = 0;
  std::vector<OutlineLine> top_;
};

}  // namespace host

#endif  // HOST_ROWS_MESSAGE_OUTLINE_H_
