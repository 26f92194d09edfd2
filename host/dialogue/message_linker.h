#ifndef HOST_DIALOGUE_MESSAGE_LINKER_H_
#define HOST_DIALOGUE_MESSAGE_LINKER_H_

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "host/dialogue/dialogue.h"

namespace host {

// Reads the command sets of messages and finds out which messages of an
// association belong together. Remembers open requests only, of which there are
// as many as message IDs.
class MessageLinker {
 public:
  explicit MessageLinker(Dialogue& dialogue) : dialogue_(dialogue) {}

  // The command set of this message is complete; each message once.
  void Link(std::uint32_t message);
  // The association is over. `is_whole`: no bytes of it are missing, so that
  // answers that nobody has asked for are noted.
  void EndAssociation(bool is_whole);

 private:
  using MessagesById = std::map<std::uint16_t, std::uint32_t>;

  // Puts what the command set says into the message.
  void TakeCommand(const CommandSet& set, DialogueMessage& message);
  // Notes what a command set lacks, unless it is the capture that lost it.
  void CheckCommand(const CommandSet& set, std::uint32_t index);
  void LinkRequest(std::uint32_t index, DialogueMessage& message);
  void LinkAnswer(std::uint32_t index, DialogueMessage& message);
  void LinkPair(std::uint32_t request, std::uint32_t answer);
  // Counts the message at its context and gives it a SOP class if it names
  // none.
  void UseContext(DialogueMessage& message);
  void Note(IrregularityKind kind, std::uint32_t message,
            std::uint64_t expected, std::uint64_t found);
  void NoteAt(std::uint32_t message, Irregularity irregularity);
  std::string_view Keep(const std::string& text);

  Dialogue& dialogue_;
  std::set<std::string, std::less<>> texts_;  // that messages point to
  // Of each direction: requests without a final answer, answers without a
  // request, and the C-GET that is open.
  std::array<MessagesById, 2> open_;
  std::array<MessagesById, 2> unasked_;
  std::array<std::optional<std::uint32_t>, 2> get_;
};

// Whether an answer of this status is followed by another one.
bool IsPendingStatus(std::optional<std::uint16_t> status);

}  // namespace host

#endif  // HOST_DIALOGUE_MESSAGE_LINKER_H_
