#ifndef HOST_DATASET_DATA_SET_READER_H_
#define HOST_DATASET_DATA_SET_READER_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/dataset/byte_source.h"
#include "host/dataset/byte_window.h"
#include "host/dataset/character_set.h"
#include "host/dataset/registry.h"
#include "host/dataset/tag.h"
#include "host/dataset/transfer_syntax.h"
#include "host/dataset/vr.h"

namespace host {

// How the VR of an element is known.
enum class VrOrigin : std::uint8_t {
  kExplicit,           // it was sent
  kDictionary,         // the registry's
  kPrivateDictionary,  // the registry's, by the private creator
  kGuessed,            // nobody says it
};

// What is wrong at an event. Reading goes on as each says.
enum class DataSetProblem : std::uint8_t {
  kNone,
  kPastEnd,          // longer than what surrounds it, with which it ends
  kRest,             // too few bytes for another element, passed over
  kNoVr,             // no letters of a VR: read as implicit VR
  kNoVrShort,        // the same, but read with a length of 16 bits
  kNotAnElement,     // nothing that can be one: the rest of the item is passed
  kNotAnItem,        // no item where one must be: the sequence ends here
  kStrayDelimiter,   // an item's or delimiter's tag out of place, passed over
  kNoDelimiter,      // ended by what surrounds it, or by another item
  kUndefinedLength,  // a VR that must not have one: read as a sequence
  kExplicitInUnknown,  // UN whose items are explicit VR: read as that
  kTooDeep,            // more levels than are read: nothing more is
  kOddLength,          // read as it is
  kOrder,              // its tag is not above the one before it: read as it is
};

// One thing that the reader comes by. Beginnings and ends come in pairs, ends
// also when the bytes do not have them.
struct DataSetEvent {
  enum class Kind : std::uint8_t {
    kElement,
    kSequenceBegin,
    kSequenceEnd,
    kItemBegin,
    kItemEnd,
    kFragmentsBegin,  // encapsulated: its fragments follow
    kFragment,        // the first is the basic offset table
    kFragmentsEnd,
    kRemark,  // bytes that are nothing; only `problem` says what
    kEnd,     // of the data set, then for ever
  };

  Kind kind = Kind::kEnd;
  DataSetProblem problem = DataSetProblem::kNone;
  Tag tag;  // of the element; for items and fragments of their sequence
  Vr vr = Vr::kNone;
  VrOrigin vr_origin = VrOrigin::kExplicit;
  // What to read the value as: the registry's VR for UN, SQ for a UN of items.
  Vr value_vr = Vr::kNone;
  ByteOrder order = ByteOrder::kLittle;  // of the value
  std::size_t item = 0;  // of an item or fragment, counted from 0
  std::uint64_t header_at = 0;
  std::uint64_t value_at = 0;
  std::optional<std::uint64_t> length;  // as sent; none when undefined
  std::uint64_t available =
      0;  // bytes of the value that are there, when defined
  std::optional<ElementEntry> entry;  // what the registry says of the tag
  std::string_view creator;  // of a private element; valid until Next()
};

// Reads a data set from front to back, whatever is in it, and hands over one
// event after another. Time is linear in the bytes; memory is that of one
// window and, for each level of nesting, less than 100 bytes. A copy reads on
// by itself from the same place; its event is there with its first Next().
class DataSetReader {
 public:
  // Sequences nested deeper are not read.
  static constexpr std::size_t kMostLevels = std::size_t{1} << 20;
  // The most private creators that are kept; behind them, none is known.
  static constexpr std::size_t kMostCreators = std::size_t{1} << 16;

  // `source` has to outlive it. Deflated data sets come through an
  // InflatedSource, and positions count in what that gives.
  DataSetReader(ByteSource& source, Encoding encoding);

  // The next event; valid until the next call, as event() is.
  const DataSetEvent& Next();
  const DataSetEvent& event() const { return event_; }

  // Items and sequences around the event, 0 for the data set's own elements.
  std::size_t depth() const { return around_; }
  // The event's place, "0040,0275[1].0040,0007": items count from 1. In deep
  // nesting the middle is left out.
  std::string PathText() const;
  // The event's problem as a sentence with its place; empty when it has none.
  std::string ProblemSentence() const;

  // The first bytes of the event's value, at most `most` and
  // ByteWindow::kBytes; valid until the next call.
  std::span<const std::uint8_t> Value(std::size_t most);
  // What is declared for the texts at the event.
  std::shared_ptr<const CharacterSet> characters() const;

 private:
  // What is being read: the data set itself, an item, a sequence, or the
  // fragments of an encapsulated value.
  struct Frame {
    enum class Kind : std::uint8_t { kItem, kSequence, kFragments };

    Kind kind = Kind::kItem;  // the data set itself is one
    bool defined = true;      // its own length says where it ends
    bool pixels_are_signed = false;
    bool of_unknown = false;  // a UN, whose items' encoding is to be seen
    Encoding encoding;
    Tag tag;                     // as in events
    std::int64_t last_tag = -1;  // the number of the last one in this item
    std::size_t item = 0;   // the next one of a sequence; an item's own number
    std::uint64_t end = 0;  // where it ends at the latest
    std::shared_ptr<const CharacterSet> characters;
  };

  using Bytes = std::span<const std::uint8_t>;

  // The next event in an item: an element or a delimiter. Each of these fills
  // in the event and moves behind what it has read.
  void ReadElement();
  // An item's or a delimiter's tag where an element may be.
  void ReadDelimiter(Tag tag);
  // VR and length of the element. False when it is none, with the event made.
  bool ReadExplicitHeader(Bytes header);
  void ReadImplicitHeader(Bytes header);
  // The same where no letters of a VR stand, by what follows the element.
  bool ReadHeaderWithoutVr(Bytes header);
  // Whether the item ends behind a value of `length` bytes, or goes on with an
  // element as those in explicit VR are.
  bool IsFollowed(std::uint32_t length);
  // The element's VR, of which nothing was sent.
  void TakeVrOfRegistry();
  // What the registries say of the tag, private ones by their creator.
  void LookUp();
  // The length as sent, held to what surrounds the element.
  void TakeLength(std::uint32_t length);
  // Of a value whose end is told by a delimiter.
  void BeginUndefined();
  void BeginSequence();
  // Whether a value of defined length is read as a sequence.
  bool IsEntered();
  // What the element says of those that follow it.
  void TakeContext();
  // A private creator reserves its block until its item ends.
  void KeepCreator();

  // The next event in a sequence or between fragments.
  void ReadItem();
  void BeginItem(Frame& sequence, std::uint32_t length);
  // Before the first item of a UN: implicit VR, unless it can only be explicit.
  void SeeEncodingOfUnknown(Frame& sequence);
  void TakeFragment(Frame& fragments, std::uint32_t length);

  // Goes one level down, and up again with the event of its end.
  void Begin(DataSetEvent::Kind event, Frame::Kind kind);
  void Close(DataSetProblem problem);
  void CloseAtDelimiter();
  // To the end of what surrounds it, as nothing in it can be read.
  void PassOver(DataSetProblem problem);
  void PassDelimiter(Tag tag);
  // Of the event, which keeps the worst: that stands first in DataSetProblem.
  void Note(DataSetProblem problem);

  ByteWindow window_;
  std::uint64_t position_ = 0;  // of what is read next
  std::vector<Frame> frames_;   // the data set first, the innermost last
  std::size_t around_ = 0;      // frames around the event but the data set's
  // By the depth of their item, group and block.
  std::map<std::pair<std::size_t, std::uint32_t>, std::string> creators_;
  bool cut_ = false;  // the last thing read was longer than what surrounds it
  DataSetEvent event_;
};

}  // namespace host

#endif  // HOST_DATASET_DATA_SET_READER_H_
