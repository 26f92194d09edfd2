#include <algorithm>

#include "host/findings/rules.h"
#include "host/text/number_text.h"

namespace host {
namespace {

constexpr Nanoseconds kSecond = 1'000'000'000;

std::string AttemptsText(std::uint32_t syns) {
  return syns > 1 ? " (" + NumberText(syns) + " attempts)" : std::string();
}

Nanoseconds DurationOf(const SceneConnection& at) {
  return at.connection->last_time - at.connection->first_time;
}

bool HasPayload(const SceneConnection& at) {
  return at.Facts(0).payload_packets + at.Facts(1).payload_packets != 0;
}

// Behind the refusal of a server that took associations before.
std::string WorkedBefore(const Scene& scene, const SceneConnection& at,
                         const std::string& server) {
  const auto& accepted = scene.AcceptedAt(server);
  const auto before = std::ranges::find_if(
      accepted.rbegin(), accepted.rend(),
      [&at](const Scene::Accepted& one) { return one.connection < at.index; });
  if (before == accepted.rend()) return {};
  const Connection& last = *scene.connections()[before->connection].connection;
  const Nanoseconds since = at.connection->first_time - last.last_time;
  return " any more, " +
         (since < 0 ? "while " : DurationText(since) + " after ") +
         "the association of connection " +
         std::to_string(before->connection + 1) +
         (since < 0 ? " goes on" : " ended");
}

}  // namespace

void FindUnansweredConnection(const Scene& scene, const SceneConnection& at,
                              FindingList& list) {
  const SideFacts& client = at.Facts(at.client);
  const SideFacts& server = at.Facts(1 - at.client);
  if (client.syns == 0 || HasPayload(at)) return;
  const std::string& to = at.Address(1 - at.client);
  const std::string from = at.Address(at.client);
  if (server.syns == 0 && server.rst) {
    const std::string before = WorkedBefore(scene, at, to);
    Finding& found =
        list.Add("connection-refused",
                 "The server " + to + " refused the connection of " + from +
                     " (RST): nothing listens on that port" +
                     AttemptsText(client.syns) + before + ".");
    SetFrame(*server.rst, found);
    found.likeness = to;
    if (!before.empty()) {
      found.is_consequence = true;
      found.advice =
          "Its program has ended or is being started again: look at its log "
          "of the time before.";
    }
  } else if (server.packets == 0 && !client.acknowledged) {
    Finding& found = list.Add(
        "connection-no-answer",
        "The server " + to + " never answered the SYN of " + from +
            AttemptsText(client.syns) +
            ": the host is down, or something on the way drops the packets.");
    SetFrame(*client.syn, found);
    found.likeness = to;
  } else if (server.syns != 0 && !client.acknowledged && !client.rst) {
    Finding& found = list.Add(
        "handshake-incomplete",
        "The handshake of " + from + " with " + to +
            " was never completed: the server's answer (SYN, ACK" +
            AttemptsText(server.syns) + ") likely does not reach the client.");
    SetFrame(*server.syn, found);
    found.likeness = to;
  }
}

void FindSilentConnection(const Scene&, const SceneConnection& at,
                          FindingList& list) {
  if (HasPayload(at) || list.HasCause()) return;
  const SideFacts& client = at.Facts(at.client);
  const SideFacts& server = at.Facts(1 - at.client);
  if (client.syns == 0 || server.syns == 0 || !client.acknowledged) return;
  const Ending ending = ClosingOf(at);
  if (ending.kind == Ending::Kind::kNone) return;
  const bool by_client = ending.direction == at.client;
  const Nanoseconds waited = ending.time - client.syn->time;
  Finding& found = list.Add(
      "connected-without-pdu",
      "The client " + at.Address(at.client) + " connected to " +
          at.Address(1 - at.client) +
          " and nothing was sent: no A-ASSOCIATE-RQ; after " +
          DurationText(waited) + " the " + (by_client ? "client" : "server") +
          (ending.kind == Ending::Kind::kReset ? " reset the connection (RST)"
                                               : " closed it (FIN)") +
          TimeoutText(waited) + ".");
  SetPlace(ending, found);
  found.likeness = at.Address(1 - at.client);
}

void FindVanishedPeer(const Scene&, const SceneConnection& at,
                      FindingList& list) {
  constexpr std::uint32_t kRepeated = 3;
  for (const std::uint32_t direction : {0u, 1u}) {
    const SideFacts& sender = at.Facts(direction);
    const SideFacts& silent = at.Facts(1 - direction);
    if (sender.unheard_retransmissions < kRepeated || !silent.last) continue;
    Finding& found = list.Add(
        "peer-vanished",
        "The " + PeerText(at, 1 - direction, nullptr) +
            " fell silent after frame " +
            at.connection->names().Text(silent.last->frame) +
            ": the other side sent its data again " +
            CountText(sender.unheard_retransmissions, "time", "times") +
            " in " + DurationText(sender.last->time - silent.last->time) +
            " and got no answer; likely the host or the way to it is down.");
    found.first_frame = silent.last->frame;
    found.last_frame = sender.last->frame;
  }
}

// Few packets were lost, but they cost a good part of the time.
void FindSlowRecovery(const SceneConnection& at, std::uint32_t direction,
                      FindingList& list) {
  constexpr Nanoseconds kWorthTelling = kSecond / 20;
  const TransferFacts& transfer = at.connection->transfer;
  Nanoseconds time = 0;
  std::uint32_t frame = 0;
  for (const Wait& wait : transfer.waits) {
    if (wait.kind != WaitKind::kLossRecovery || wait.side != direction)
      continue;
    if (frame == 0) frame = wait.frame;
    time += wait.end - wait.begin;
  }
  if (time < kWorthTelling || time * 5 < DurationOf(at)) return;
  const FlowFacts& flow = transfer.flows[direction];
  Finding& found = list.Add(
      "retransmissions",
      CountText(flow.timed_out + flow.fast, "packet", "packets") + " of the " +
          PeerText(at, direction, nullptr) +
          " had to be sent again: until the other side had all, it "
          "took " +
          DurationText(time) + " of " + DurationText(DurationOf(at)) + ".");
  found.severity = Severity::kNote;
  found.first_frame = found.last_frame = frame;
}

void FindLostTime(const Scene&, const SceneConnection& at, FindingList& list) {
  const Nanoseconds whole = DurationOf(at);
  for (const std::uint32_t direction : {0u, 1u}) {
    const SideFacts& side = at.Facts(direction);
    if (side.zero_window_time >= kSecond / 2) {
      list.Add("zero-window",
               "The " + PeerText(at, direction, nullptr) +
                   " took no data for " + DurationText(side.zero_window_time) +
                   " (its window was closed in " +
                   CountText(side.zero_windows, "packet", "packets") +
                   "), and the other side had to wait.");
    }
    const bool many = side.retransmissions * 50 >= side.payload_packets;
    if (side.retransmissions < 3 || !many) {
      FindSlowRecovery(at, direction, list);
      continue;
    }
    Finding& found =
        list.Add("retransmissions",
                 NumberText(side.retransmissions) + " of " +
                     CountText(side.payload_packets, "packet", "packets") +
                     " with data of the " + PeerText(at, direction, nullptr) +
                     " were sent again; the waiting for it took " +
                     DurationText(side.retransmission_wait) + " of " +
                     DurationText(whole) + ".");
    // A little loss is the network's daily life; a third of the time is not.
    if (side.retransmission_wait < kSecond ||
        side.retransmission_wait * 3 < whole) {
      found.severity = Severity::kNote;
    }
  }
}

}  // namespace host
