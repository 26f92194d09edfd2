#include "host/findings/scene.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

#include "host/dialogue/outcome.h"
#include "host/streams/pdu_header.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

constexpr Nanoseconds kSecond = 1'000'000'000;
constexpr Nanoseconds kMillisecond = 1'000'000;

// Ports that are registered for DICOM, or that its tools use unasked.
constexpr std::uint16_t kDicomPorts[] = {104, 2761, 2762, 4242, 11112};

std::uint32_t PortOf(const std::string& endpoint) {
  std::uint32_t port = 0;
  const std::size_t colon = endpoint.rfind(':');
  for (const char digit : std::string_view(endpoint).substr(colon + 1)) {
    port = port * 10 + static_cast<std::uint32_t>(digit - '0');
  }
  return port;
}

bool BeginsWithPdu(const SideFacts& facts) {
  return BeginsLikePdu(facts.first_bytes);
}

std::uint32_t ClientOf(const Connection& connection, const Dialogue* dialogue) {
  if (connection.transport.opener) return *connection.transport.opener;
  if (dialogue != nullptr) {
    for (const Association& association : dialogue->associations) {
      if (const auto direction = association.RequestorDirection()) {
        return *direction;
      }
    }
  }
  return PortOf(connection.first_endpoint) >= PortOf(connection.second_endpoint)
             ? 0
             : 1;
}

Ending EarlierOf(const Ending& ending, Ending::Kind kind,
                 std::uint32_t direction,
                 const std::optional<FrameMark>& mark) {
  if (!mark) return ending;
  if (ending.kind != Ending::Kind::kNone && ending.frame <= mark->frame) {
    return ending;
  }
  return {kind, direction, mark->frame, {}, mark->time, 0};
}

Ending AtPlace(Ending::Kind kind, const WirePlace& place,
               const Dialogue& dialogue) {
  Ending ending{kind,      place.direction, place.last_frame,
                place.pdu, place.time,      0};
  if (place.pdu > 0 && place.pdu <= dialogue.pdus.size()) {
    ending.silence = place.time - dialogue.pdus[place.pdu - 1].time;
  }
  return ending;
}

}  // namespace

const std::string& SceneConnection::Address(std::uint32_t direction) const {
  return direction == 0 ? connection->first_endpoint
                        : connection->second_endpoint;
}

bool SceneConnection::LacksBytes(std::uint32_t direction) const {
  const SideFacts& facts = Facts(direction);
  return facts.lost_bytes != 0 || facts.cut_bytes != 0 || facts.packets == 0;
}

Scene::Scene(const std::vector<const Connection*>& connections,
             CaptureCondition condition)
    : condition_(std::move(condition)) {
  connections_.reserve(connections.size());
  for (const Connection* connection : connections) {
    SceneConnection at;
    at.index = connection->index;
    at.connection = connection;
    at.dialogue = DialogueOf(*connection);
    at.client = ClientOf(*connection, at.dialogue);
    connections_.push_back(at);
    end_ = std::max(end_, connection->last_time);
  }
  FindServers();
}

void Scene::FindServers() {
  std::set<std::string> servers;
  bool any_dicom = false;
  for (const SceneConnection& at : connections_) {
    const SideFacts& client = at.Facts(at.client);
    if (client.syn && at.Facts(1 - at.client).syns == 0) {
      failed_.emplace(client.syn->time, at.index);
    }
    if (!at.connection->carries_dicom) continue;
    any_dicom = true;
    servers.insert(at.Address(1 - at.client));
    if (at.dialogue == nullptr) continue;
    for (const Association& association : at.dialogue->associations) {
      if (!association.accept || !association.request) continue;
      auto& accepted = accepted_[at.Address(1 - at.client)];
      if (accepted.size() < kAcceptedKept) {
        accepted.push_back({at.index, &association});
      }
    }
  }
  for (SceneConnection& at : connections_) {
    const std::string& server = at.Address(1 - at.client);
    at.concerns_dicom =
        at.connection->carries_dicom || !any_dicom ||
        BeginsWithPdu(at.Facts(0)) || BeginsWithPdu(at.Facts(1)) ||
        servers.contains(server) ||
        std::ranges::find(kDicomPorts, PortOf(server)) != std::end(kDicomPorts);
  }
}

const SceneConnection* Scene::Find(std::size_t index) const {
  const auto found = std::ranges::lower_bound(connections_, index, {},
                                              &SceneConnection::index);
  const bool is_there = found != connections_.end() && found->index == index;
  return is_there ? &*found : nullptr;
}

const FrameNames& Scene::names() const {
  static const FrameNames kNumbers;
  return connections_.empty() ? kNumbers
                              : connections_.front().connection->names();
}

const std::vector<Scene::Accepted>& Scene::AcceptedAt(
    const std::string& address) const {
  static const std::vector<Accepted> kNobody;
  const auto found = accepted_.find(address);
  return found == accepted_.end() ? kNobody : found->second;
}

const SceneConnection* Scene::FailedBetween(Nanoseconds from,
                                            Nanoseconds to) const {
  const auto found = failed_.lower_bound(from);
  if (found == failed_.end() || found->first > to) return nullptr;
  return Find(found->second);
}

std::string PeerText(const SceneConnection& at, std::uint32_t direction,
                     const Association* association) {
  const std::string& address = at.Address(direction);
  const auto requestor =
      association == nullptr ? std::nullopt : association->RequestorDirection();
  if (!requestor) {
    return (direction == at.client ? "client " : "server ") + address;
  }
  const bool asks = direction == *requestor;
  std::string text = asks ? "requestor " : "acceptor ";
  std::string title;
  if (association->request) {
    title =
        PrintableFromCodePage1252(asks ? association->request->calling_ae_title
                                       : association->request->called_ae_title);
  }
  return title.empty() ? text + address : text + title + " (" + address + ")";
}

FrameMark BeginOf(const Dialogue& dialogue, const DialogueMessage& message) {
  const std::uint32_t frame =
      message.pieces.empty()
          ? message.first_frame
          : dialogue.pdus[message.pieces.front().pdu].last_frame;
  return {frame, message.first_time};
}

FrameMark EndOf(const DialogueMessage& message) {
  return {message.last_frame, message.last_time};
}

FrameMark MarkOf(const WirePlace& place) {
  return {place.last_frame, place.time};
}

bool FollowsLoss(const Dialogue& dialogue, const WirePlace& place) {
  if (place.pdu >= dialogue.pdus.size()) return false;
  const DialoguePdu& pdu = dialogue.pdus[place.pdu];
  return pdu.has_lost_bytes || pdu.follows_lost_bytes;
}

bool IsRead(const Dialogue& dialogue, const WirePlace& place) {
  return place.pdu >= dialogue.pdus.size() ||
         !dialogue.pdus[place.pdu].has_lost_bytes;
}

Ending ClosingOf(const SceneConnection& at) {
  Ending ending;
  for (const std::uint32_t direction : {0u, 1u}) {
    const SideFacts& facts = at.Facts(direction);
    ending = EarlierOf(ending, Ending::Kind::kClosed, direction, facts.fin);
    ending = EarlierOf(ending, Ending::Kind::kReset, direction, facts.rst);
  }
  if (ending.kind == Ending::Kind::kNone) return ending;
  Nanoseconds last = 0;
  for (const std::uint32_t direction : {0u, 1u}) {
    const auto& payload = at.Facts(direction).last_payload;
    if (payload && payload->time <= ending.time) {
      last = std::max(last, payload->time);
    }
  }
  if (last != 0 && last < ending.time) ending.silence = ending.time - last;
  return ending;
}

Ending EndingOf(const SceneConnection& at, const Association& association) {
  using enum Ending::Kind;
  const Dialogue& dialogue = *at.dialogue;
  if (association.reject) {
    return AtPlace(kRejected, association.reject->place, dialogue);
  }
  const Abort* const abort =
      association.aborts.empty() ? nullptr : &association.aborts.front();
  if (association.release_request && association.release_answer &&
      (abort == nullptr ||
       association.release_answer->pdu < abort->place.pdu)) {
    return AtPlace(kReleased, *association.release_request, dialogue);
  }
  if (abort != nullptr) return AtPlace(kAborted, abort->place, dialogue);
  const bool is_last = &association == &dialogue.associations.back();
  return is_last ? ClosingOf(at) : Ending{};
}

std::string AborterText(std::uint8_t source) {
  const std::string text = AbortSourceText(source);
  if (source == 0) return text + ", its application";
  return source == 2 ? text + ", its protocol layer" : text;
}

std::string EndingText(const Ending& ending, const Association& association) {
  switch (ending.kind) {
    case Ending::Kind::kReleased:
      return "released the association";
    case Ending::Kind::kRejected:
      return "rejected the association";
    case Ending::Kind::kAborted: {
      const Abort& abort = association.aborts.front();
      const std::string reason = AbortReasonText(abort.source, abort.reason);
      return "aborted the association (by " + AborterText(abort.source) +
             (reason.empty() ? ")" : ": " + reason + ")");
    }
    case Ending::Kind::kReset:
      return "reset the connection (RST)";
    case Ending::Kind::kClosed:
      return "closed the connection (FIN)";
    case Ending::Kind::kNone:
      break;
  }
  return {};
}

std::string CommandText(std::uint16_t command_field) {
  std::string text = CommandFieldText(command_field);
  for (const std::string_view end : {"-RQ", "-RSP"}) {
    if (text.ends_with(end)) text.resize(text.size() - end.size());
  }
  return text;
}

std::string OneCommandText(const std::string& command) {
  return (command.starts_with('N') ? "an " : "a ") + command;
}

std::string SubOperationsText(const Dialogue& dialogue, std::uint32_t request) {
  const DialogueMessage& message = dialogue.messages[request];
  std::string text =
      "the pending answers of " + CommandText(message.command_field);
  if (message.command_field != kCMoveRq) return text;
  const std::string title =
      PrintableFromCodePage1252(dialogue.ReadCommand(message).move_destination);
  return text + ": the destination" + (title.empty() ? "" : " " + title) +
         " may be slow as well";
}

std::string DurationText(Nanoseconds duration) {
  char text[32];
  if (duration >= 100 * kSecond) {
    std::snprintf(text, sizeof text, "%d s",
                  static_cast<int>((duration + kSecond / 2) / kSecond));
  } else if (duration >= kSecond) {
    std::snprintf(text, sizeof text, "%.3g s",
                  static_cast<double>(duration) / kSecond);
  } else if (duration >= 10 * kMillisecond) {
    std::snprintf(
        text, sizeof text, "%d ms",
        static_cast<int>((duration + kMillisecond / 2) / kMillisecond));
  } else {
    std::snprintf(text, sizeof text, "%.1f ms",
                  static_cast<double>(duration) / kMillisecond);
  }
  return text;
}

std::string TimeoutText(Nanoseconds duration) {
  constexpr int kRound[] = {5,   10,  15,  20,  30,  45,   60,   90,  120,
                            180, 240, 300, 600, 900, 1200, 1800, 3600};
  for (const int seconds : kRound) {
    const Nanoseconds exact = seconds * kSecond;
    const Nanoseconds slack = std::max(kSecond / 4, exact / 50);
    if (duration >= exact - slack / 4 && duration <= exact + slack) {
      return ", likely a time-out of " + std::to_string(seconds) + " s";
    }
  }
  return {};
}

std::string ToolkitOf(const Association& association, std::uint32_t direction) {
  const auto requestor = association.RequestorDirection();
  if (!requestor) return {};
  const auto& side =
      direction == *requestor ? association.request : association.accept;
  if (!side) return {};
  const std::string toolkit =
      ToolkitText(side->implementation_class_uid, side->implementation_version);
  return toolkit.empty() ? toolkit : ", " + toolkit;
}

}  // namespace host
