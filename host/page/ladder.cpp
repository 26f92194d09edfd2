#include "host/page/ladder.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "host/dialogue/outcome.h"
#include "host/rows/negotiation_text.h"
#include "host/text/number_text.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

// Requests of one kind behind each other.
struct Run {
  std::uint64_t count = 0;
  std::string what;  // "C-STORE CT Image Storage"
  std::uint32_t direction = 0;
  std::uint64_t bytes = 0;  // of their data sets
  FrameMark begin;
  FrameMark end;  // of the last request
  std::uint32_t first_frame = 0;
  std::uint32_t last_frame = 0;

  std::uint64_t answers = 0;   // pending ones too
  std::uint64_t answered = 0;  // requests
  std::uint64_t failed = 0;
  std::uint64_t warnings = 0;
  std::uint64_t cut_off = 0;  // requests that did not come to their end
  std::string status;         // of the first that failed, else of the last
  FrameMark answers_begin;    // the first one's
  FrameMark answers_end;
  std::uint32_t first_answer_frame = 0;
};

void TakeAnswer(const Dialogue& dialogue, const DialogueMessage& answer,
                Run& run) {
  if (run.answered++ == 0) {
    run.answers_begin = BeginOf(dialogue, answer);
    run.first_answer_frame = answer.first_frame;
  }
  if (answer.last_frame > run.answers_end.frame) {
    run.answers_end = EndOf(answer);
  }
  if (!answer.status) return;
  const StatusClass status_class =
      ExplainStatus(*answer.status, answer.command_field, answer.sop_class)
          .status_class;
  const bool is_failure = status_class == StatusClass::kFailure;
  if (run.failed == 0) {
    run.status =
        StatusWithText(*answer.status, answer.command_field, answer.sop_class);
  }
  run.failed += is_failure ? 1 : 0;
  run.warnings += status_class == StatusClass::kWarning ? 1 : 0;
}

std::string AnswersText(const Run& run) {
  if (run.count == 1) {
    return (run.answers > 1
                ? CountText(run.answers, "answer", "answers") + ", the last "
                : std::string()) +
           (run.status.empty() ? "answer without a status" : run.status);
  }
  std::string text = CountText(run.answers, "answer", "answers") + ", " +
                     NumberText(run.failed) + " failed";
  if (run.failed != 0) text += " (first " + run.status + ")";
  if (run.warnings != 0) {
    text += ", " + CountText(run.warnings, "warning", "warnings");
  }
  return text;
}

class LadderMaker {
 public:
  explicit LadderMaker(const SceneConnection& at) : at_(at) {}

  std::vector<Rung> Make() {
    AddBeginning();
    if (at_.dialogue != nullptr) {
      for (std::uint32_t i = 0; i < at_.dialogue->associations.size(); ++i) {
        AddAssociation(i);
      }
    }
    AddEnd();
    AddClock();
    std::ranges::stable_sort(rungs_, {}, &Rung::begin_frame);
    return std::move(rungs_);
  }

 private:
  Rung& Add(const FrameMark& mark, std::uint32_t direction, std::string text,
            Severity severity = Severity::kNote) {
    Rung& rung = rungs_.emplace_back();
    rung.begin = rung.end = at_.Since(mark);
    rung.begin_frame = mark.frame;
    rung.from_client = direction == at_.client;
    rung.text = std::move(text);
    rung.severity = severity;
    return rung;
  }
  void Add(const WirePlace& place, std::string text,
           Severity severity = Severity::kNote) {
    Rung& rung = Add(MarkOf(place), place.direction, std::move(text), severity);
    rung.first_frame = place.first_frame;
    rung.last_frame = place.last_frame;
  }

  void AddBeginning() {
    const SideFacts& client = at_.Facts(at_.client);
    const SideFacts& server = at_.Facts(1 - at_.client);
    if (client.syn && server.syns == 0) {
      Rung& rung = Add(*client.syn, at_.client,
                       CountText(client.syns, "attempt to connect (SYN)",
                                 "attempts to connect (SYN)") +
                           (server.packets == 0 ? ": no answer" : ""),
                       Severity::kFault);
      rung.first_frame = rung.last_frame = client.syn->frame;
    }
    for (const std::uint32_t direction : {at_.client, 1 - at_.client}) {
      const SideFacts& facts = at_.Facts(direction);
      if (!facts.first_payload) continue;
      if (!facts.tls && at_.connection->carries_dicom) continue;
      Rung& rung =
          Add(*facts.first_payload, direction,
              facts.tls ? "speaks TLS" : "sends something that is no DICOM");
      rung.first_frame = rung.last_frame = facts.first_payload->frame;
    }
  }

  void AddAssociation(std::uint32_t index) {
    const Association& association = at_.dialogue->associations[index];
    AddNegotiation(association, index);
    for (std::uint32_t i = association.first_message;
         i < association.end_message; ++i) {
      TakeMessage(at_.dialogue->messages[i]);
    }
    Flush(outer_);
    Flush(inner_);
    for (const Abort& abort : association.aborts) {
      const std::string reason = AbortReasonText(abort.source, abort.reason);
      Add(abort.place,
          "A-ABORT by " + AbortSourceText(abort.source) +
              (reason.empty() ? "" : ": " + reason),
          Severity::kFault);
    }
    if (association.release_request) {
      Add(*association.release_request, "A-RELEASE-RQ");
    }
    if (association.release_answer) {
      Add(*association.release_answer, "A-RELEASE-RP");
    }
  }

  void AddNegotiation(const Association& association, std::uint32_t index) {
    if (association.request) {
      const AssociationSide& request = *association.request;
      Add(request.place,
          "A-ASSOCIATE-RQ: " +
              PrintableFromCodePage1252(request.calling_ae_title) + " asks " +
              PrintableFromCodePage1252(request.called_ae_title));
    }
    if (association.accept) {
      Add(association.accept->place,
          "A-ASSOCIATE-AC: " + AssociationOutcome(*at_.dialogue, index));
    }
    if (association.reject) {
      const Rejection& reject = *association.reject;
      Add(reject.place,
          "A-ASSOCIATE-RJ: " + RejectReasonText(reject.source, reject.reason) +
              " (" + RejectResultText(reject.result) + ")",
          Severity::kFault);
    }
  }

  void TakeMessage(const DialogueMessage& message) {
    if (message.has_command_field && message.command_field == kCCancelRq) {
      Rung& rung =
          Add(BeginOf(*at_.dialogue, message), message.direction, "C-CANCEL");
      rung.first_frame = message.first_frame;
      rung.last_frame = message.last_frame;
    }
    if (!message.IsRequest()) return;
    std::string what = CommandText(message.command_field);
    if (!message.sop_class.empty()) what += " " + UidText(message.sop_class);
    // Sub-operations of a C-GET stand between it and its answer.
    Run& run = message.parent ? inner_ : outer_;
    if (run.count == 0 || run.what != what ||
        run.direction != message.direction ||
        (!message.parent && inner_.count != 0)) {
      if (!message.parent) Flush(inner_);
      Flush(run);
      run.what = std::move(what);
      run.direction = message.direction;
      run.begin = BeginOf(*at_.dialogue, message);
      run.first_frame = message.first_frame;
    }
    ++run.count;
    run.bytes += message.data_bytes;
    run.end = EndOf(message);
    run.last_frame = message.last_frame;
    run.answers += message.answers;
    if (message.last_answer) {
      TakeAnswer(*at_.dialogue, at_.dialogue->messages[*message.last_answer],
                 run);
    } else if (!message.IsComplete()) {
      ++run.cut_off;
    }
  }

  void Flush(Run& run) {
    if (run.count == 0) return;
    AddRequests(run);
    if (run.answered != 0) AddAnswers(run);
    const std::uint64_t unanswered = run.count - run.answered - run.cut_off;
    if (unanswered != 0) {
      Add(run.end, run.direction,
          (run.count == 1 ? "" : NumberText(unanswered) + " of them ") +
              std::string(run.count == 1 ? "no answer" : "without an answer"),
          Severity::kWarning)
          .is_sent = false;
    }
    run = {};
  }

  void AddRequests(const Run& run) {
    std::string text;
    if (run.count > 1) text += NumberText(run.count) + " x ";
    text += run.what;
    if (run.bytes != 0) text += ", " + BytesText(run.bytes);
    const Nanoseconds duration = at_.Since(run.end) - at_.Since(run.begin);
    if (duration >= kWorthTelling) text += " in " + DurationText(duration);
    if (run.cut_off != 0) {
      text += run.count == 1
                  ? ", not sent to its end"
                  : ", " + NumberText(run.cut_off) + " not sent to the end";
    }
    Rung& rung = Add(run.begin, run.direction, std::move(text),
                     run.cut_off != 0 ? Severity::kWarning : Severity::kNote);
    rung.end = at_.Since(run.end);
    rung.first_frame = run.first_frame;
    rung.last_frame = run.last_frame;
  }

  // The answers to many stand where they ended, that to one where it began.
  void AddAnswers(const Run& run) {
    const Severity severity = run.failed != 0     ? Severity::kFault
                              : run.warnings != 0 ? Severity::kWarning
                                                  : Severity::kNote;
    const bool is_one = run.answers == 1;
    Rung& rung = Add(is_one ? run.answers_begin : run.answers_end,
                     1 - run.direction, AnswersText(run), severity);
    rung.end = at_.Since(run.answers_end);
    rung.first_frame = run.first_answer_frame;
    rung.last_frame = run.answers_end.frame;
  }

  void AddClock() {
    const TransferFacts& transfer = at_.connection->transfer;
    if (!transfer.GoesBack()) return;
    Add({transfer.set_back_frame, at_.connection->last_time}, at_.client,
        "the clock of the capture goes back by " +
            DurationText(transfer.most_set_back))
        .is_sent = false;
  }

  void AddEnd() {
    const Ending ending = ClosingOf(at_);
    if (ending.kind == Ending::Kind::kNone) return;
    const bool is_reset = ending.kind == Ending::Kind::kReset;
    Rung& rung = Add({ending.frame, ending.time}, ending.direction,
                     is_reset ? "resets the connection (RST)" : "closes (FIN)",
                     is_reset ? Severity::kWarning : Severity::kNote);
    rung.first_frame = rung.last_frame = ending.frame;
  }

  static constexpr Nanoseconds kWorthTelling = 10'000'000;

  const SceneConnection& at_;
  std::vector<Rung> rungs_;
  Run outer_;
  Run inner_;
};

}  // namespace

std::vector<Rung> LadderOf(const SceneConnection& at, std::size_t most) {
  std::vector<Rung> rungs = LadderMaker(at).Make();
  if (rungs.size() <= most || most < 3) return rungs;
  const std::size_t left_out = rungs.size() - most + 1;
  const auto first = rungs.begin() + static_cast<std::ptrdiff_t>(most * 2 / 3);
  const auto end = first + static_cast<std::ptrdiff_t>(left_out);
  Rung middle;
  middle.begin = first->begin;
  middle.end = std::max_element(first, end, [](const Rung& a, const Rung& b) {
                 return a.end < b.end;
               })->end;
  middle.is_sent = false;
  middle.text =
      CountText(left_out, "more step", "more steps") + " left out here";
  *first = std::move(middle);
  rungs.erase(first + 1, end);
  return rungs;
}

}  // namespace host
