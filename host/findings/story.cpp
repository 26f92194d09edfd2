#include "host/findings/story.h"

#include <algorithm>
#include <limits>
#include <map>

#include "host/dialogue/outcome.h"
#include "host/text/number_text.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

std::string SizeText(std::uint64_t bytes) {
  if (bytes < 10'000) return BytesText(bytes);
  const bool mega = bytes >= 10'000'000;
  const std::uint64_t unit = mega ? 1'000'000 : 1'000;
  return NumberText((bytes + unit / 2) / unit) + (mega ? " MB" : " kB");
}

// Requests that are told in one line: the same, with the same outcome.
struct Run {
  std::uint64_t count = 0;
  std::string what;     // "C-STORE CT Image Storage"
  std::string outcome;  // "0000h", "no answer"
  std::uint64_t answers = 0;
  std::uint64_t bytes = 0;  // of data sets, both ways
  FrameMark begin;
  Nanoseconds end = 0;  // since the connection's first packet
};

class StoryTeller {
 public:
  explicit StoryTeller(const SceneConnection& at) : at_(at) {}

  Story Tell() {
    TellBeginning();
    if (at_.dialogue != nullptr) {
      CountCancels();
      for (const Association& association : at_.dialogue->associations) {
        TellAssociation(association);
      }
    }
    TellEnd();
    TellClock();
    std::ranges::stable_sort(story_.steps, {}, &StoryStep::frame);
    return std::move(story_);
  }

 private:
  // `shape` stands for the text among stories of the same shape.
  void Add(const FrameMark& mark, std::string text, const std::string& shape) {
    story_.steps.push_back({at_.Since(mark), mark.frame, std::move(text)});
    story_.shape += shape + '\n';
  }
  void Add(const FrameMark& mark, const std::string& text) {
    Add(mark, text, text);
  }
  void Add(const WirePlace& place, const std::string& text) {
    Add(MarkOf(place), text);
  }

  void TellBeginning() {
    const SideFacts& client = at_.Facts(at_.client);
    const SideFacts& server = at_.Facts(1 - at_.client);
    story_.shape = at_.Address(1 - at_.client) + '\n';
    if (client.syn && server.syns == 0) {
      Add(*client.syn, CountText(client.syns, "attempt", "attempts") +
                           " to connect" +
                           (server.packets == 0 ? ": no answer" : ""));
    }
    const bool spoke = client.first_payload || server.first_payload;
    if (!spoke && server.syns != 0) {
      Add(*server.syn, "connected, and nothing was sent");
    }
    for (const std::uint32_t direction : {at_.client, 1 - at_.client}) {
      const SideFacts& facts = at_.Facts(direction);
      const std::string side = direction == at_.client ? "client" : "server";
      if (facts.tls && facts.first_payload) {
        Add(*facts.first_payload,
            "the " + side + " speaks TLS" +
                (facts.tls->server_name.empty()
                     ? ""
                     : ", server name " +
                           PrintableFromUtf8(facts.tls->server_name)));
      } else if (!at_.connection->carries_dicom && facts.first_payload) {
        Add(*facts.first_payload,
            "the " + side + " sends something that is no DICOM");
      }
    }
  }

  void CountCancels() {
    for (const DialogueMessage& message : at_.dialogue->messages) {
      if (message.command_field == kCCancelRq && message.request) {
        ++cancels_[*message.request];
      }
    }
  }

  void TellAssociation(const Association& association) {
    TellNegotiation(association);
    for (std::uint32_t i = association.first_message;
         i < association.end_message; ++i) {
      TellMessage(i);
    }
    FlushRuns();
    for (const Abort& abort : association.aborts) {
      const std::string reason = AbortReasonText(abort.source, abort.reason);
      Add(abort.place, Side(association, abort.place.direction) +
                           " aborts (by " + AborterText(abort.source) +
                           (reason.empty() ? ")" : ": " + reason + ")"));
    }
    if (association.release_request) {
      Add(*association.release_request,
          association.release_answer
              ? "released"
              : Side(association, association.release_request->direction) +
                    " asks for the release: no answer");
    }
  }

  void TellNegotiation(const Association& association) {
    if (association.request) {
      const AssociationSide& request = *association.request;
      Add(request.place,
          PrintableFromCodePage1252(request.calling_ae_title) + " asks " +
              PrintableFromCodePage1252(request.called_ae_title) +
              " for an association, " + ContextsText(association) +
              ToolkitOf(association, request.place.direction) +
              (association.accept || association.reject ||
                       !association.aborts.empty()
                   ? ""
                   : ": no answer"));
    }
    if (association.accept) {
      Add(association.accept->place,
          AcceptText(association) +
              ToolkitOf(association, association.accept->place.direction));
    }
    if (association.reject) {
      const Rejection& reject = *association.reject;
      Add(reject.place,
          "rejected: " + RejectReasonText(reject.source, reject.reason) + " (" +
              RejectResultText(reject.result) + ")");
    }
  }

  std::string ContextsText(const Association& association) const {
    const std::size_t proposed = Proposed(association);
    if (proposed == 0 && !IsRead(*at_.dialogue, association.request->place)) {
      return "contexts not captured";
    }
    return CountText(proposed, "context", "contexts");
  }

  static std::size_t Proposed(const Association& association) {
    return static_cast<std::size_t>(std::ranges::count(
        association.contexts, true, &PresentationContext::proposed));
  }

  static std::string AcceptText(const Association& association) {
    const std::size_t proposed = Proposed(association);
    std::size_t accepted = 0;
    std::map<std::string, bool> classes;  // whether one was accepted
    for (const PresentationContext& context : association.contexts) {
      if (!context.proposed) continue;
      accepted += context.IsAccepted() ? 1 : 0;
      classes[context.abstract_syntax] |= context.IsAccepted();
    }
    std::string text = "accepted";
    if (proposed == 0) return text;
    text += accepted == proposed
                ? ", all contexts"
                : ", " + NumberText(accepted) + " of " +
                      CountText(proposed, "context", "contexts");
    std::size_t refused = 0;
    std::string first;
    for (const auto& [sop_class, taken] : classes) {
      if (taken) continue;
      if (refused++ == 0) first = UidText(sop_class);
    }
    if (refused == 0) return text;
    text += "; not " + first;
    if (refused > 1) text += " and " + NumberText(refused - 1) + " more";
    return text;
  }

  void TellMessage(std::uint32_t index) {
    const Dialogue& dialogue = *at_.dialogue;
    const DialogueMessage& message = dialogue.messages[index];
    if (!message.IsRequest()) return;
    const DialogueMessage* const answer =
        message.last_answer ? &dialogue.messages[*message.last_answer]
                            : nullptr;
    Run run;
    run.count = 1;
    run.what = CommandText(message.command_field);
    if (!message.sop_class.empty()) {
      run.what += " " + UidText(message.sop_class);
    }
    run.outcome = OutcomeOf(message, answer);
    if (cancels_.contains(index)) run.outcome += ", cancelled";
    run.answers = message.answers;
    run.bytes = message.data_bytes;
    run.begin = BeginOf(dialogue, message);
    run.end = at_.Since(EndOf(answer != nullptr ? *answer : message));
    // Sub-operations of a C-GET have a run of their own inside of it.
    Run& current = message.parent ? inner_ : outer_;
    if (!message.parent) FlushRun(inner_, "  ");
    if (current.count != 0 && current.what == run.what &&
        current.outcome == run.outcome) {
      ++current.count;
      current.answers += run.answers;
      current.bytes += run.bytes;
      current.end = std::max(current.end, run.end);
      return;
    }
    FlushRun(current, message.parent ? "  " : "");
    current = std::move(run);
  }

  static std::string OutcomeOf(const DialogueMessage& message,
                               const DialogueMessage* answer) {
    if (answer == nullptr) {
      return message.IsComplete() ? "no answer" : "not sent to its end";
    }
    if (!answer->status) return "answered";
    std::string text = StatusWithText(*answer->status, answer->command_field,
                                      answer->sop_class);
    if (*answer->status == 0) text = "0000h";
    if (*answer->status == 0xFF00 || *answer->status == 0xFF01) {
      text += ", no last answer";
    }
    return text;
  }

  void FlushRun(Run& run, const std::string& indent) {
    if (run.count == 0) return;
    std::string text = indent;
    if (run.count > 1) text += NumberText(run.count) + " x ";
    text += run.what + ": " + (run.count > 1 ? "all " : "") + run.outcome;
    const std::string shape = text;
    if (run.answers > run.count) {
      text += ", " + CountText(run.answers, "answer", "answers");
    }
    if (run.bytes != 0) text += ", " + SizeText(run.bytes);
    if (run.answers != 0)
      text += ", " + DurationText(run.end - at_.Since(run.begin));
    Add(run.begin, text, shape);
    run = {};
  }

  void FlushRuns() {
    FlushRun(outer_, "");
    FlushRun(inner_, "  ");
  }

  void TellEnd() {
    const Ending ending = ClosingOf(at_);
    const SideFacts& server = at_.Facts(1 - at_.client);
    if (ending.kind == Ending::Kind::kNone) {
      if (at_.Facts(at_.client).acknowledged) {
        Add(FrameMark{std::numeric_limits<std::uint32_t>::max(),
                      at_.connection->last_time},
            "the capture ends, the connection is open");
      }
      return;
    }
    const FrameMark mark{ending.frame, ending.time};
    const std::string side =
        ending.direction == at_.client ? "the client" : "the server";
    if (ending.kind == Ending::Kind::kReset) {
      Add(mark, server.syns == 0 && at_.Facts(at_.client).syn
                    ? side + " refuses (RST)"
                    : side + " resets the connection (RST)");
    } else {
      Add(mark, side + " closes (FIN)");
    }
  }

  void TellClock() {
    const TransferFacts& transfer = at_.connection->transfer;
    if (!transfer.GoesBack()) return;
    Add({transfer.set_back_frame, at_.connection->last_time},
        "the clock of the capture goes back by " +
            DurationText(transfer.most_set_back),
        "the clock goes back");
  }

  static std::string Side(const Association& association,
                          std::uint32_t direction) {
    const auto requestor = association.RequestorDirection();
    if (!requestor)
      return direction == 0 ? "the first side" : "the second side";
    return direction == *requestor ? "the requestor" : "the acceptor";
  }

  const SceneConnection& at_;
  Story story_;
  Run outer_;
  Run inner_;
  std::map<std::uint32_t, std::uint32_t> cancels_;  // by request
};

}  // namespace

Story StoryOf(const SceneConnection& at, std::size_t most) {
  Story story = StoryTeller(at).Tell();
  auto& steps = story.steps;
  if (steps.size() <= most || most < 3) return story;
  const std::size_t left_out = steps.size() - most + 1;
  const auto first = steps.begin() + static_cast<std::ptrdiff_t>(most * 2 / 3);
  first->text = "... " + CountText(left_out, "more step", "more steps");
  steps.erase(first + 1, first + static_cast<std::ptrdiff_t>(left_out));
  return story;
}

}  // namespace host
