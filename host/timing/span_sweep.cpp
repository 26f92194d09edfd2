#include "host/timing/span_sweep.h"

#include <algorithm>
#include <tuple>

#include "host/dialogue/message_linker.h"

namespace host {

SpanSweep::SpanSweep(const Connection& connection, const Dialogue& dialogue,
                     const ConnectionTiming& timing, std::uint32_t association)
    : connection_(connection),
      dialogue_(dialogue),
      timing_(timing),
      index_(association),
      association_(dialogue.associations[association]) {}

std::vector<TimeSpan> SpanSweep::Run(const AssociationTiming& times) {
  requestor_ = times.requestor;
  at_ = times.begin;
  end_ = times.end;
  if (index_ == 0) Connect();
  Negotiate();
  Converse(EndOfTalk());
  Release();
  return std::move(spans_);
}

Microseconds SpanSweep::BeginOf(std::uint32_t pdu) const {
  const DialoguePdu& one = dialogue_.pdus[pdu];
  const StreamAssembler* const stream = dialogue_.streams[one.direction];
  if (stream == nullptr) return EndOf(pdu);
  const FrameRange range = stream->Frames(one.position, one.position + 1);
  if (range.last == 0) return EndOf(pdu);
  return timing_.Since(connection_.transfer.TimeOf(range.last, range.time));
}

Microseconds SpanSweep::EndOf(std::uint32_t pdu) const {
  const DialoguePdu& one = dialogue_.pdus[pdu];
  if (one.last_frame == 0) return at_;
  return timing_.Since(connection_.transfer.TimeOf(one.last_frame, one.time));
}

void SpanSweep::Connect() {
  const TransferFacts& transfer = connection_.transfer;
  const TransportFacts& transport = connection_.transport;
  if (transfer.connected != 0) {
    return Until(timing_.Since(transfer.connected), TimePart::kConnecting,
                 TimeOwner::kNetwork);
  }
  if (!transport.opener) return;
  if (association_.first_pdu == association_.end_pdu) return;
  Until(BeginOf(association_.first_pdu), TimePart::kConnecting,
        TimeOwner::kNetwork);
}

void SpanSweep::Negotiate() {
  const auto& request = association_.request;
  if (request) {
    Until(EndOf(request->place.pdu), TimePart::kNegotiating,
          TimeOwner::kRequestor);
    spoke_ = requestor_;
  }
  const std::uint32_t acceptor = 1 - requestor_;
  if (association_.accept) {
    Turn(EndOf(association_.accept->place.pdu), TimePart::kNegotiating,
         acceptor, {});
  } else if (association_.reject) {
    Turn(EndOf(association_.reject->place.pdu), TimePart::kNegotiating,
         acceptor, {});
  } else if (request &&
             association_.first_message == association_.end_message) {
    Turn(EndOfTalk(), TimePart::kNegotiating, acceptor, {});
  }
  spoke_.reset();
}

Microseconds SpanSweep::EndOfTalk() const {
  Microseconds end = end_;
  if (const auto closing = FirstClosing()) end = std::min(end, closing->time);
  if (association_.reject) {
    end = std::min(end, EndOf(association_.reject->place.pdu));
  }
  if (association_.release_request) {
    end = std::min(end, BeginOf(association_.release_request->pdu));
  }
  for (const Abort& abort : association_.aborts) {
    end = std::min(end, BeginOf(abort.place.pdu));
  }
  return end;
}

std::optional<SpanSweep::Closing> SpanSweep::FirstClosing() const {
  if (index_ + 1 != dialogue_.associations.size()) return {};
  std::optional<Closing> first;
  for (const std::uint32_t direction : {0u, 1u}) {
    const SideFacts& side = connection_.transport.sides[direction];
    for (const auto& mark : {side.fin, side.rst}) {
      if (!mark) continue;
      const Microseconds time =
          timing_.Since(connection_.transfer.TimeOf(mark->frame, mark->time));
      if (!first || time < first->time) first = Closing{time, direction};
    }
  }
  if (!first) return {};
  for (std::uint32_t i = association_.first_message;
       i < association_.end_message; ++i) {
    first->time =
        std::max(first->time, timing_.Since(timing_.messages[i].last.time));
  }
  return first;
}

std::vector<SpanSweep::Event> SpanSweep::Events() const {
  std::vector<Event> events;
  events.reserve(2 * (association_.end_message - association_.first_message));
  for (std::uint32_t i = association_.first_message;
       i < association_.end_message; ++i) {
    const MessageTiming& message = timing_.messages[i];
    if (message.last.frame == 0) continue;  // nothing of it was captured
    events.push_back({timing_.Since(message.first.time), i, false});
    events.push_back({timing_.Since(message.last.time), i, true});
  }
  std::ranges::sort(events, {}, [](const Event& event) {
    return std::tuple(event.time, event.message, event.is_end);
  });
  return events;
}

void SpanSweep::Converse(Microseconds until) {
  for (const Event& event : Events()) {
    SpanUntil(std::min(event.time, until), &event);
    Take(event);
  }
  SpanUntil(until, nullptr);
}

void SpanSweep::Take(const Event& event) {
  const DialogueMessage& message = dialogue_.messages[event.message];
  if (!event.is_end) {
    under_way_.insert(event.message);
    left_off_.reset();
    return;
  }
  under_way_.erase(event.message);
  spoke_ = message.direction;
  if (!message.IsComplete()) {
    left_off_ = event.message;
  } else if (message.IsRequest()) {
    if (answered_.erase(event.message) == 0) open_.insert(event.message);
  } else if (message.request && !IsPendingStatus(message.status)) {
    if (open_.erase(*message.request) == 0) answered_.insert(*message.request);
  }
}

void SpanSweep::SpanUntil(Microseconds time, const Event* next) {
  if (time <= at_) return;
  if (!under_way_.empty()) {
    Until(time, TimePart::kTransferring, TimeOwner::kNetwork,
          *under_way_.rbegin());
  } else if (left_off_) {
    const std::uint32_t sender = dialogue_.messages[*left_off_].direction;
    Turn(time,
         sender == requestor_ ? TimePart::kPreparing : TimePart::kThinking,
         sender, left_off_);
  } else if (!open_.empty()) {
    const std::uint32_t request = *open_.rbegin();
    Turn(time, TimePart::kThinking, 1 - dialogue_.messages[request].direction,
         request);
  } else if (next != nullptr) {
    const DialogueMessage& message = dialogue_.messages[next->message];
    Turn(time, message.IsAnswer() ? TimePart::kThinking : TimePart::kPreparing,
         message.direction, next->message);
  } else {
    Until(time, TimePart::kIdle, TimeOwner::kRequestor);
  }
  spoke_.reset();
}

void SpanSweep::Release() {
  const std::uint32_t acceptor = 1 - requestor_;
  if (association_.release_request) {
    const WirePlace& request = *association_.release_request;
    Until(EndOf(request.pdu), TimePart::kReleasing, OwnerOf(request.direction));
    spoke_ = request.direction;
    if (association_.release_answer) {
      Turn(EndOf(association_.release_answer->pdu), TimePart::kReleasing,
           1 - request.direction, {});
      Until(end_, TimePart::kReleasing, OwnerOf(request.direction));
    }
    Turn(end_, TimePart::kReleasing, 1 - request.direction, {});
  } else if (!association_.aborts.empty()) {
    Until(end_, TimePart::kReleasing,
          OwnerOf(1 - association_.aborts.front().place.direction));
  } else if (const auto closing = FirstClosing();
             closing && !association_.reject) {
    Until(end_, TimePart::kReleasing, OwnerOf(1 - closing->direction));
  } else {
    Until(end_, TimePart::kReleasing,
          OwnerOf(association_.reject ? requestor_ : acceptor));
  }
}

void SpanSweep::Turn(Microseconds until, TimePart part, std::uint32_t direction,
                     std::optional<std::uint32_t> message) {
  if (spoke_ && *spoke_ != direction) {
    const TimePart way = message ? TimePart::kTransferring : part;
    Until(std::min(at_ + TripTo(direction), until), way, TimeOwner::kNetwork,
          message);
  }
  Until(until, part, OwnerOf(direction), message);
}

void SpanSweep::Until(Microseconds time, TimePart part, TimeOwner owner,
                      std::optional<std::uint32_t> message) {
  time = std::min(time, end_);
  if (time <= at_) return;
  spans_.push_back({at_, time, part, owner, message});
  at_ = time;
}

TimeOwner SpanSweep::OwnerOf(std::uint32_t direction) const {
  return direction == requestor_ ? TimeOwner::kRequestor : TimeOwner::kAcceptor;
}

Microseconds SpanSweep::TripTo(std::uint32_t direction) const {
  return connection_.transfer.flows[direction].LeastTrip().value_or(0) / 1000;
}

}  // namespace host
