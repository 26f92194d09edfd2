#include "host/timing/span_sweep.h"

#include <algorithm>
#include <tuple>

#include "host/dialogue/message_linker.h"

namespace host {
namespace {

// Nobody works so long on a request, or so much longer than on most others.
constexpr Microseconds kIdle = 10'000'000;
constexpr Microseconds kLeastIdle = 2'000'000;
constexpr Microseconds kRare = 10;

}  // namespace

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
  NameIdle();
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
  std::optional<std::uint32_t> answer;
  if (association_.accept)
    answer = association_.accept->place.pdu;
  else if (association_.reject)
    answer = association_.reject->place.pdu;
  if (answer) {
    Turn(EndOf(*answer), TimePart::kNegotiating, acceptor, {});
    spoke_ = acceptor;
    return;
  }
  if (request && association_.first_message == association_.end_message) {
    Turn(EndOfTalk(), TimePart::kNegotiating, acceptor, {});
  }
  spoke_.reset();
}

Microseconds SpanSweep::EndOfTalk() const {
  Microseconds end = end_;
  for (const Step& closing : Closings()) end = std::min(end, closing.time);
  for (std::uint32_t i = association_.first_message;
       i < association_.end_message; ++i) {
    end = std::max(end, timing_.Since(timing_.messages[i].last.time));
  }
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

std::vector<SpanSweep::Step> SpanSweep::Closings() const {
  std::vector<Step> steps;
  if (index_ + 1 != dialogue_.associations.size()) return steps;
  for (const std::uint32_t direction : {0u, 1u}) {
    const SideFacts& side = connection_.transport.sides[direction];
    for (const auto& mark : {side.fin, side.rst}) {
      if (!mark) continue;
      steps.push_back(
          {timing_.Since(connection_.transfer.TimeOf(mark->frame, mark->time)),
           direction, 1 - direction});
    }
  }
  return steps;
}

std::vector<SpanSweep::Step> SpanSweep::Steps() const {
  std::vector<Step> steps;
  const auto add = [&](const WirePlace& place, std::uint32_t next) {
    steps.push_back({EndOf(place.pdu), place.direction, next});
  };
  if (association_.reject) add(association_.reject->place, requestor_);
  if (association_.release_request) {
    const std::uint32_t asks = association_.release_request->direction;
    add(*association_.release_request, 1 - asks);
    if (association_.release_answer) add(*association_.release_answer, asks);
  }
  for (const Abort& abort : association_.aborts) {
    add(abort.place, 1 - abort.place.direction);
  }
  for (const Step& step : Closings()) steps.push_back(step);
  std::ranges::stable_sort(steps, {}, &Step::time);
  return steps;
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

bool SpanSweep::HasSubOperations(std::uint32_t request) const {
  const std::uint16_t field = dialogue_.messages[request].command_field;
  return field == kCMoveRq || field == kCGetRq;
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
  if (message.parent) moving_.insert(*message.parent);
  if (!message.IsComplete()) {
    left_off_ = event.message;
  } else if (message.IsRequest()) {
    if (answered_.erase(event.message) == 0) open_.insert(event.message);
  } else if (message.request && !IsPendingStatus(message.status)) {
    if (open_.erase(*message.request) == 0) answered_.insert(*message.request);
  } else if (message.request && HasSubOperations(*message.request)) {
    moving_.insert(*message.request);
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
    if (spans_.back().part == TimePart::kPreparing) {
      pauses_.push_back(spans_.size() - 1);
    }
  } else {
    Turn(time, TimePart::kIdle, requestor_, {});
  }
  spoke_.reset();
}

void SpanSweep::NameIdle() {
  if (pauses_.empty()) return;
  std::vector<Microseconds> lengths;
  for (const std::size_t i : pauses_) lengths.push_back(spans_[i].Length());
  const auto median =
      lengths.begin() + static_cast<std::ptrdiff_t>((lengths.size() - 1) / 2);
  std::ranges::nth_element(lengths, median);
  for (const std::size_t i : pauses_) {
    const Microseconds length = spans_[i].Length();
    if (length < kIdle && (length < kLeastIdle || length < kRare * *median)) {
      continue;
    }
    spans_[i].part = TimePart::kIdle;
    spans_[i].message.reset();
  }
}

void SpanSweep::Release() {
  spoke_.reset();
  std::optional<std::uint32_t> next;
  for (const Step& step : Steps()) {
    Turn(step.time, TimePart::kReleasing, next.value_or(step.direction), {});
    spoke_ = step.direction;
    next = step.next;
  }
  Turn(end_, TimePart::kReleasing, next.value_or(1 - requestor_), {});
}

void SpanSweep::Turn(Microseconds until, TimePart part, std::uint32_t direction,
                     std::optional<std::uint32_t> message) {
  if (spoke_ && *spoke_ != direction) {
    const TimePart way =
        message || part == TimePart::kIdle ? TimePart::kTransferring : part;
    Until(std::min(at_ + TripTo(direction), until), way, TimeOwner::kNetwork,
          message);
  }
  Until(until, part, OwnerOf(direction), message);
}

void SpanSweep::Until(Microseconds time, TimePart part, TimeOwner owner,
                      std::optional<std::uint32_t> message) {
  time = std::min(time, end_);
  if (time <= at_) return;
  const bool moves =
      part == TimePart::kThinking && message && moving_.contains(*message);
  spans_.push_back({at_, time, part, owner, message, moves});
  at_ = time;
}

TimeOwner SpanSweep::OwnerOf(std::uint32_t direction) const {
  return direction == requestor_ ? TimeOwner::kRequestor : TimeOwner::kAcceptor;
}

Microseconds SpanSweep::TripTo(std::uint32_t direction) const {
  return connection_.transfer.flows[direction].LeastTrip().value_or(0) / 1000;
}

}  // namespace host
