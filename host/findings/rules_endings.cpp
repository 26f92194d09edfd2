#include <algorithm>

#include "host/dialogue/outcome.h"
#include "host/findings/rules.h"
#include "host/text/number_text.h"

namespace host {
namespace {

constexpr Nanoseconds kSecond = 1'000'000'000;
// Who gives up sooner than this did not wait for an answer.
constexpr Nanoseconds kShortestWait = kSecond;

bool IsPending(std::uint16_t status) {
  return status == 0xFF00 || status == 0xFF01;
}

// A request without its last answer.
bool IsOpen(const Dialogue& dialogue, const DialogueMessage& message) {
  if (!message.IsRequest()) return false;
  if (!message.last_answer) return true;
  const auto& status = dialogue.messages[*message.last_answer].status;
  return status && IsPending(*status);
}

// How one association came to its end, and what that means.
class EndingRule {
 public:
  EndingRule(const SceneConnection& at, const Association& association,
             FindingList& list)
      : at_(at),
        dialogue_(*at.dialogue),
        association_(association),
        list_(list),
        ending_(EndingOf(at, association)) {}

  void Run() {
    if (ending_.kind == Ending::Kind::kRejected) return;
    FindOpenRequest();
    const bool is_last = &association_ == &dialogue_.associations.back();
    if (ending_.kind == Kind::kNone && !is_last) return;
    if (!list_.HasCause()) FindUnfinishedAnswer();
    if (Finding* const cause = list_.CauseOfEnding(open_ != nullptr)) {
      TellConsequence(*cause);
      return;
    }
    if (!association_.accept && !association_.request && open_ == nullptr &&
        ending_.kind != Ending::Kind::kAborted) {
      return;  // from its middle on, and nothing is missing
    }
    if (association_.request && !association_.accept) {
      Unaccepted();
    } else if (open_ != nullptr) {
      OpenRequest();
    } else {
      AllAnswered();
    }
  }

 private:
  using Kind = Ending::Kind;

  void FindOpenRequest() {
    for (std::uint32_t i = association_.first_message;
         i < association_.end_message; ++i) {
      const DialogueMessage& message = dialogue_.messages[i];
      if (!IsOpen(dialogue_, message)) continue;
      ++open_count_;
      if (open_ == nullptr) open_ = &message;
    }
  }

  // An answer whose data set was announced and never came whole.
  void FindUnfinishedAnswer() {
    if (association_.end_message == association_.first_message) return;
    const DialogueMessage& last =
        dialogue_.messages[association_.end_message - 1];
    if (!last.IsAnswer() || !last.command_complete || last.IsComplete() ||
        ending_.kind == Kind::kNone || at_.LacksBytes(last.direction)) {
      return;
    }
    Finding& found = list_.Add(
        "message-incomplete",
        "The " + Peer(last.direction) + " answered a " +
            CommandText(last.command_field) +
            " and announced a data set, of which " +
            (last.data_bytes == 0 ? "nothing" : BytesText(last.data_bytes)) +
            " came; then the " + ActorRole() + " " +
            EndingText(ending_, association_) + ".");
    SetPlace(last, found);
    EndsHere(found);
  }

  // There is a cause already: what the ending was is told behind it.
  void TellConsequence(Finding& cause) {
    if (ending_.kind == Kind::kReleased || ending_.kind == Kind::kNone) return;
    const std::string what = Actor() + " " + EndingText(ending_, association_) +
                             " in frame " +
                             at_.connection->names().Text(ending_.frame) + ".";
    cause.evidence.push_back("Then the " + what);
    if (open_ != nullptr) {
      cause.evidence.push_back(
          "The " + CommandText(open_->command_field) + " of frame " +
          at_.connection->names().Text(open_->first_frame) +
          " was never answered.");
    }
  }

  void Unaccepted() {
    const AssociationSide& request = *association_.request;
    const std::uint32_t acceptor = 1 - request.place.direction;
    if (at_.LacksBytes(acceptor)) return;
    if (ending_.kind == Kind::kAborted && ending_.direction == acceptor) {
      AbortFinding(" instead of accepting or rejecting it");
      return;
    }
    if (ending_.kind == Kind::kNone) return CaptureEnds();
    const Nanoseconds waited = ending_.time - request.place.time;
    Finding& found = list_.Add(
        "associate-unanswered",
        "The " + Peer(acceptor) + " never answered the A-ASSOCIATE-RQ of the " +
            Peer(request.place.direction) + ": after " + DurationText(waited) +
            " the " + ActorRole() + " " + EndingText(ending_, association_) +
            TimeoutText(waited) +
            (ActorIs(acceptor) && waited < kShortestWait
                 ? "; one that expects TLS does so, or one that does not "
                   "allow this address."
                 : "."));
    SetPlace(request.place, found);
    EndsHere(found);
    found.likeness = at_.Address(acceptor) + (ActorIs(acceptor) ? "a" : "r");
  }

  // Somebody waits for an answer, or was still sending.
  void OpenRequest() {
    const std::uint32_t sender = open_->direction;
    if (at_.LacksBytes(1 - sender) || at_.LacksBytes(sender)) return;
    if (ending_.kind == Kind::kNone) return CaptureEnds();
    const bool whole = open_->IsComplete();
    const Nanoseconds waited = ending_.time - open_->last_time;
    const bool gave_up = ending_.direction == sender;
    if (gave_up && !whole && ending_.kind != Kind::kAborted) {
      Incomplete();
    } else if (ending_.kind == Kind::kAborted &&
               (!gave_up || !whole || waited < kShortestWait)) {
      AbortFinding(whole ? (gave_up ? " without waiting for the answer to its "
                                    : " instead of answering the ") +
                               RequestText()
                         : (gave_up ? " in the middle of the data set of its "
                                    : " while it received the ") +
                               RequestText());
    } else {
      Unanswered(waited);
    }
  }

  void Incomplete() {
    Finding& found =
        list_.Add("message-incomplete",
                  "The " + Actor() + " " + EndingText(ending_, association_) +
                      " in the middle of the data set of a " + RequestText() +
                      ": " + BytesText(open_->data_bytes) +
                      " of it came, the last fragment is missing.");
    SetPlace(*open_, found);
    EndsHere(found);
  }

  void Unanswered(Nanoseconds waited) {
    const std::uint32_t answerer = 1 - open_->direction;
    std::string sentence = "The " + Peer(answerer);
    if (open_->answers != 0) {
      sentence +=
          " sent " +
          CountText(open_->answers, "pending answer", "pending answers") +
          " but never the last one to the " + RequestText();
    } else {
      sentence += " never answered the " + RequestText();
    }
    sentence += " of the " + Peer(open_->direction) + ": after " +
                DurationText(waited) + " the " + ActorRole() + " " +
                EndingText(ending_, association_) + TimeoutText(waited);
    if (open_count_ > 1) {
      sentence +=
          "; " +
          CountText(open_count_ - 1, "more request was", "more requests were") +
          " open";
    }
    Finding& found = list_.Add("request-unanswered", sentence + ".");
    SetPlace(*open_, found);
    EndsHere(found);
    found.advice = "Look at the log of the " + Peer(answerer) +
                   " at this time: what became of the request?";
    if (ending_.kind == Kind::kReleased) found.severity = Severity::kWarning;
    found.likeness = at_.Address(answerer) + CommandText(open_->command_field) +
                     EndingText(ending_, association_);
  }

  void AllAnswered() {
    switch (ending_.kind) {
      case Kind::kReleased:
      case Kind::kRejected:
        return;
      case Kind::kAborted:
        return AbortFinding(AfterWhat());
      case Kind::kNone:
        return CaptureEnds();
      case Kind::kReset:
      case Kind::kClosed:
        break;
    }
    if (association_.release_request) return ReleaseUnanswered();
    if (at_.LacksBytes(0) || at_.LacksBytes(1)) return;
    const auto requestor = association_.RequestorDirection();
    if (!requestor) return;
    const bool by_requestor = ending_.direction == *requestor;
    std::string sentence =
        "The " + Actor() + " " + EndingText(ending_, association_) +
        " without releasing the association" + Idle() + AnsweredText();
    Finding& found = list_.Add(
        by_requestor ? "never-released" : "connection-dropped", sentence + ".");
    SetPlace(ending_, found);
    found.likeness = at_.Address(1 - at_.client);
    if (by_requestor && ending_.kind == Kind::kReset && !Idle().empty()) {
      found.advice = std::string(found.kind->advice) +
                     " A firewall that ends idle connections looks the same: "
                     "capture at both ends.";
    }
  }

  void ReleaseUnanswered() {
    const std::uint32_t asked = association_.release_request->direction;
    if (at_.LacksBytes(1 - asked)) return;
    // Who closes behind a release has understood it.
    const Nanoseconds waited =
        ending_.time - association_.release_request->time;
    Finding& found = list_.Add(
        "release-unanswered",
        "The " + Peer(1 - asked) + " never answered the A-RELEASE-RQ: after " +
            DurationText(waited) + " the " + ActorRole() + " " +
            EndingText(ending_, association_) + TimeoutText(waited) + ".");
    SetPlace(*association_.release_request, found);
    EndsHere(found);
    found.likeness = at_.Address(1 - asked);
  }

  void AbortFinding(const std::string& when) {
    const auto requestor = association_.RequestorDirection();
    const bool by_requestor = requestor == ending_.direction;
    if (association_.release_request &&
        ending_.direction == association_.release_request->direction) {
      return ReleaseUnanswered();
    }
    Finding& found = list_.Add(
        by_requestor ? "abort-by-requestor" : "abort-by-acceptor",
        "The " + Actor() + ToolkitOf(association_, ending_.direction) + " " +
            EndingText(ending_, association_) + when + ".");
    SetPlace(ending_, found);
    found.likeness = ActorRole() + at_.Address(1 - at_.client) + when +
                     EndingText(ending_, association_);
  }

  // The finding is about what was missing when it ended.
  void EndsHere(Finding& found) const {
    found.last_frame = std::max(found.last_frame, ending_.frame);
    found.time = ending_.time;
  }

  // What an abort came after, when all is answered.
  std::string AfterWhat() const {
    if (association_.first_message == association_.end_message) {
      return " before any request was sent" + Silence(", ");
    }
    return " instead of a release" + Silence(", ") +
           "; all requests were answered";
  }
  std::string Silence(const std::string& before) const {
    if (ending_.silence < 5 * kSecond) return {};
    return before + "after " + DurationText(ending_.silence) + " of silence" +
           TimeoutText(ending_.silence) + " of idle associations";
  }
  std::string Idle() const {
    if (ending_.silence < 5 * kSecond) return {};
    return ", after " + DurationText(ending_.silence) + " of silence" +
           TimeoutText(ending_.silence);
  }
  std::string AnsweredText() const {
    return association_.first_message == association_.end_message
               ? "; nothing was asked in it"
               : "; all requests had been answered";
  }

  void CaptureEnds() {
    // A stream that is not there says nothing of its end.
    if (at_.Facts(0).packets == 0 || at_.Facts(1).packets == 0) return;
    Finding& found = list_.Add(
        "capture-ends-early",
        "The capture ends while the association of the " +
            Peer(association_.RequestorDirection().value_or(at_.client)) +
            " is open" +
            (open_ != nullptr
                 ? " and a " + RequestText() + " is not answered yet"
                 : "") +
            ": what came then is not known.");
    if (const auto& last = at_.Facts(0).last) SetFrame(*last, found);
    found.likeness = "open";
  }

  std::string RequestText() const {
    std::string text = CommandText(open_->command_field);
    if (!open_->sop_class.empty()) {
      text += " (" + UidText(open_->sop_class) + ")";
    }
    if (open_->message_id) {
      text += " with message ID " + std::to_string(*open_->message_id);
    }
    return text;
  }
  std::string Peer(std::uint32_t direction) const {
    return PeerText(at_, direction, &association_);
  }
  std::string Actor() const { return Peer(ending_.direction); }
  bool ActorIs(std::uint32_t direction) const {
    return ending_.direction == direction;
  }
  std::string ActorRole() const {
    const auto requestor = association_.RequestorDirection();
    if (!requestor) return ActorIs(at_.client) ? "client" : "server";
    return ActorIs(*requestor) ? "requestor" : "acceptor";
  }

  const SceneConnection& at_;
  const Dialogue& dialogue_;
  const Association& association_;
  FindingList& list_;
  const Ending ending_;
  const DialogueMessage* open_ = nullptr;  // the first open request
  std::uint32_t open_count_ = 0;
};

}  // namespace

void FindEndings(const Scene&, const SceneConnection& at, FindingList& list) {
  if (at.dialogue == nullptr) return;
  for (const Association& association : at.dialogue->associations) {
    EndingRule(at, association, list).Run();
  }
}

}  // namespace host
