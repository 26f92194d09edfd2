#include "host/dialogue/association_check.h"

#include <algorithm>
#include <array>
#include <deque>
#include <map>
#include <utility>

#include "host/dialogue/message_linker.h"
#include "host/dialogue/message_reader.h"
#include "host/streams/pdu_header.h"

namespace host {
namespace {

// So much later than a request an answer to the one before it may stand in the
// capture, although it was sent first: mirror ports and merged captures mix the
// two directions.
constexpr Nanoseconds kMixing = 10'000'000;

class AssociationChecker {
 public:
  AssociationChecker(const Association& association, Dialogue& dialogue)
      : association_(association),
        dialogue_(dialogue),
        requestor_(*association.RequestorDirection()) {}

  void CheckPduLengths() {
    const std::array<std::optional<std::uint32_t>, 2> announced = {
        SideOf(0).max_pdu_bytes, SideOf(1).max_pdu_bytes};
    for (std::uint32_t i = association_.first_pdu; i < association_.end_pdu;
         ++i) {
      const DialoguePdu& pdu = dialogue_.pdus[i];
      const std::uint32_t most = announced[1 - pdu.direction].value_or(0);
      if (pdu.type != kPDataTf || most == 0 || pdu.length <= most) continue;
      Irregularity irregularity;
      irregularity.kind = IrregularityKind::kPduAboveMaximum;
      irregularity.place = dialogue_.PlaceOfPdu(i);
      irregularity.expected = most;
      irregularity.found = pdu.length;
      Note(std::move(irregularity));
    }
  }

  void CheckMessages() {
    for (std::uint32_t i = association_.first_message;
         i < association_.end_message; ++i) {
      const DialogueMessage& message = dialogue_.messages[i];
      CheckContext(i, message);
      if (!message.IsRequest()) continue;
      CheckRole(i, message);
      if (message.message_id) CheckOpen(i, message);
    }
  }

 private:
  const AssociationSide& SideOf(std::uint32_t direction) const {
    return direction == requestor_ ? *association_.request
                                   : *association_.accept;
  }

  void CheckContext(std::uint32_t index, const DialogueMessage& message) {
    const PresentationContext* const context =
        association_.FindContext(message.context);
    if (context == nullptr || !context->IsAccepted()) {
      const bool is_known = context != nullptr && context->proposed;
      return NoteMessage(is_known ? IrregularityKind::kRefusedContext
                                  : IrregularityKind::kUnknownContext,
                         index, 0, message.context);
    }
    // Only C-STORE has to name the context's own class: others may use the
    // context of the class that stands for theirs.
    if (message.command_field == kCStoreRq &&
        message.sop_class != context->abstract_syntax) {
      NoteMessage(IrregularityKind::kWrongSopClass, index, message.context, 0,
                  std::string(message.sop_class));
    }
  }

  // Without a selection the requestor is the SCU, who asks; events go the other
  // way.
  void CheckRole(std::uint32_t index, const DialogueMessage& message) {
    const bool from_requestor = message.direction == requestor_;
    const bool is_event = message.command_field == kNEventReportRq;
    const bool acts_as_scu = from_requestor != is_event;
    if (acts_as_scu) return;  // what is agreed without a word
    const PresentationContext* const context =
        association_.FindContext(message.context);
    if (context == nullptr) return;
    const RoleSelection* const role =
        association_.GrantedRole(context->abstract_syntax);
    if (role != nullptr && role->scp) return;
    NoteMessage(IrregularityKind::kRoleNotNegotiated, index, 0, 0,
                context->abstract_syntax);
  }

  // How many operations `direction` may have open; 0: any number. Of the two
  // numbers of the accept the larger one, since implementations differ in which
  // is whose.
  std::uint32_t Window() const {
    const auto& window = association_.accept->window;
    if (!window) return 1;
    if (window->invoked == 0 || window->performed == 0) return 0;
    return std::max(window->invoked, window->performed);
  }

  // When the request was answered for good; empty: never.
  std::optional<Nanoseconds> ClosedAt(std::uint32_t index) const {
    const DialogueMessage& request = dialogue_.messages[index];
    if (!request.last_answer) return {};
    const DialogueMessage& answer = dialogue_.messages[*request.last_answer];
    if (IsPendingStatus(answer.status)) return {};
    return answer.first_time;
  }

  void CheckOpen(std::uint32_t index, const DialogueMessage& message) {
    std::map<std::uint16_t, std::uint32_t>& open = open_[message.direction];
    std::erase_if(open, [&](const auto& one) {
      const auto closed = ClosedAt(one.second);
      return closed && *closed < message.first_time + kMixing;
    });
    const auto same = open.find(*message.message_id);
    if (same != open.end()) {
      NoteMessage(IrregularityKind::kMessageIdInUse, index, 0,
                  *message.message_id);
    }
    const std::uint32_t window = Window();
    // One more is told once, not for each message that follows.
    if (window != 0 && open.size() == window && same == open.end()) {
      NoteMessage(IrregularityKind::kWindowExceeded, index, window,
                  open.size() + 1);
    }
    if (open.size() <= kMostOpen) open[*message.message_id] = index;
  }

  void NoteMessage(IrregularityKind kind, std::uint32_t message,
                   std::uint64_t expected, std::uint64_t found,
                   std::string text = {}) {
    Irregularity irregularity;
    irregularity.kind = kind;
    irregularity.place =
        dialogue_.PlaceOfPdu(dialogue_.messages[message].pieces.front().pdu);
    irregularity.expected = expected;
    irregularity.found = found;
    irregularity.text = std::move(text);
    irregularity.message = message;
    Note(std::move(irregularity));
  }

  void Note(Irregularity irregularity) {
    irregularity.association = static_cast<std::uint32_t>(
        &association_ - dialogue_.associations.data());
    NoteIrregularity(std::move(irregularity), dialogue_);
  }

  // Requests that are looked at for being open, so that a peer that never gets
  // an answer costs no more than others.
  static constexpr std::size_t kMostOpen = 64;

  const Association& association_;
  Dialogue& dialogue_;
  const std::uint32_t requestor_;
  std::array<std::map<std::uint16_t, std::uint32_t>, 2> open_;
};

}  // namespace

void CheckAssociation(const Association& association, Dialogue& dialogue) {
  AssociationChecker checker(association, dialogue);
  checker.CheckPduLengths();
  checker.CheckMessages();
}

}  // namespace host
