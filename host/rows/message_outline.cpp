#include "host/rows/message_outline.h"

#include <algorithm>
#include <utility>

#include "host/objects/element_text.h"
#include "host/rows/tree_search.h"
#include "host/text/number_text.h"

namespace host {
namespace {

using Kind = DataSetEvent::Kind;

constexpr unsigned kEventsBetweenQuestions = 64;
constexpr std::size_t kMostLossesTold = 20;
// Deeper lines do not open: a person who goes there by hand is lost, and each
// line that can be opened costs memory for each level above it.
constexpr std::size_t kMostLevels = 100;

bool IsBegin(Kind kind) {
  return kind == Kind::kSequenceBegin || kind == Kind::kItemBegin ||
         kind == Kind::kFragmentsBegin;
}

// Ends and remarks have a line only to say what is wrong.
bool HasLine(const DataSetEvent& event) {
  return IsBegin(event.kind) || event.kind == Kind::kElement ||
         event.kind == Kind::kFragment ||
         event.problem != DataSetProblem::kNone;
}

}  // namespace

OutlineCursor::OutlineCursor(ByteSource& source, Encoding encoding,
                             std::uint64_t base)
    : reader_(source, encoding), base_(base) {}

std::optional<bool> OutlineCursor::Next(
    const std::function<bool()>& may_go_on) {
  unsigned events = 0;
  while (!is_over_) {
    const DataSetEvent& event = reader_.Next();
    level_ = reader_.depth();
    const bool left = base_level_ > 0 && level_ < base_level_;
    is_over_ = left || event.kind == Kind::kEnd;
    if (!left && HasLine(event)) return true;
    if (++events % kEventsBetweenQuestions == 0 && !may_go_on()) return {};
  }
  return false;
}

OutlineLine OutlineCursor::Line() {
  const DataSetEvent& event = reader_.event();
  OutlineLine line;
  line.text = ElementText(reader_);
  const std::string problem = reader_.ProblemSentence();
  const bool is_element = !line.text.empty();
  if (is_element && event.kind != Kind::kItemBegin) {
    line.text = "(" + TagText(event.tag) + ")" +
                (event.vr == Vr::kNone ? "" : " " + VrText(event.vr)) + " " +
                line.text;
  }
  if (!problem.empty()) line.text += (is_element ? "  ! " : "! ") + problem;
  const std::uint64_t header = event.value_at - event.header_at;
  line.bytes = {
      base_ + event.header_at,
      header + (event.length || !IsBegin(event.kind) ? event.available : 0)};
  line.opens = IsBegin(event.kind) && event.length != 0U &&
               reader_.depth() < kMostLevels;
  return line;
}

OutlineCursor OutlineCursor::Below() const {
  OutlineCursor below(*this);
  below.base_level_ = level_ + 1;
  return below;
}

MessageOutline::MessageOutline(const Dialogue& dialogue,
                               const DialogueMessage& message)
    : command_(CommandBytes(dialogue, message)), command_source_(command_) {
  top_.push_back({"command set, " + BytesText(command_.size()),
                  {0, command_.size()},
                  !command_.empty()});
  if (message.data_bytes == 0) return;
  data_ = std::make_unique<MessageData>(dialogue, message);
  data_size_ = data_->Readable().size();
  top_.push_back(
      {DataSetTitle(message, *data_), {command_.size(), data_size_}, true});
  AddLosses(dialogue, message);
  if (!data_->Problem().empty()) {
    top_.push_back(
        {"! Not all of the data set can be read: " + data_->Problem() + ".",
         {}});
  }
}

void MessageOutline::AddLosses(const Dialogue& dialogue,
                               const DialogueMessage& message) {
  const std::vector<DataRange> all = LostRanges(dialogue, message);
  for (const DataRange& lost : all) {
    if (top_.size() > kMostLossesTold) {
      top_.push_back({"! and more; " + NumberText(all.size()) +
                          " ranges were lost in all.",
                      {}});
      return;
    }
    top_.push_back({"! " + BytesText(lost.length) + " at " +
                        NumberText(lost.offset) +
                        " of what was sent were not captured and are read as "
                        "zero.",
                    {command_.size() + lost.offset, lost.length}});
  }
}

OutlineCursor MessageOutline::PartAt(std::size_t part) {
  if (part == kCommandSet) {
    return OutlineCursor(command_source_, kImplicitLittle, 0);
  }
  return OutlineCursor(data_->Readable(), data_->Chosen().encoding,
                       command_.size());
}

std::size_t MessageOutline::Copy(std::uint64_t offset,
                                 std::span<std::uint8_t> to) {
  std::size_t count = command_source_.Read(offset, to);
  if (data_ && count < to.size()) {
    const std::uint64_t from = offset + count - command_.size();
    count += data_->Readable().Read(from, to.subspan(count));
  }
  return count;
}

void MessageOutline::Walk(
    const std::function<bool()>& may_go_on,
    const std::function<bool(const OutlinePath&, OutlineCursor&)>& take) {
  for (std::size_t part = 0; part < Parts(); ++part) {
    OutlineCursor cursor = PartAt(part);
    OutlinePath path{static_cast<std::uint32_t>(part)};
    while (cursor.Next(may_go_on).value_or(false)) {
      const std::size_t size = cursor.level() + 2;
      // Of the lines that were passed, the last one on this level counts.
      const bool is_first = path.size() < size;
      path.resize(size);
      path.back() = is_first ? 0 : path.back() + 1;
      if (!take(path, cursor)) return;
    }
    if (!may_go_on()) return;
  }
}

std::optional<OutlinePath> MessageOutline::Find(
    std::string_view text, const OutlinePath& from, bool backwards,
    const std::function<bool()>& may_go_on) {
  std::optional<OutlinePath> round;  // the first, or the last one of all
  std::optional<OutlinePath> found;
  Walk(may_go_on, [&](const OutlinePath& path, OutlineCursor& cursor) {
    if (backwards && found && path >= from) return false;
    if (!ContainsText(cursor.Line().text, text)) return true;
    if (backwards || !round) round = path;
    if (backwards ? path < from : path > from) found = path;
    return backwards || !found;
  });
  return found ? found : round;
}

std::optional<OutlinePath> MessageOutline::LineAt(
    std::uint64_t byte, const std::function<bool()>& may_go_on) {
  std::optional<OutlinePath> found;
  Walk(may_go_on, [&](const OutlinePath& path, OutlineCursor& cursor) {
    if (cursor.Begin() > byte) return false;
    found = path;
    return true;
  });
  return found;
}

std::string MessageOutline::SubtreeText(
    const OutlinePath& path, const std::function<bool()>& may_go_on) {
  std::string text;
  if (path.size() == 1) text = top_[path.front()].text + "\r\n";
  std::size_t lines = 0;
  Walk(may_go_on, [&](const OutlinePath& at, OutlineCursor& cursor) {
    const bool is_below = at.size() >= path.size() &&
                          std::equal(path.begin(), path.end(), at.begin());
    if (!is_below) return lines == 0;
    text.append(2 * (at.size() - path.size()), ' ');
    text += cursor.Line().text + "\r\n";
    return ++lines < kMostSubtreeLines;
  });
  return text;
}

}  // namespace host
