#include "host/timing/timing_limits.h"

#include "host/text/number_text.h"
#include "host/text/time_text.h"

namespace host {
namespace {

const std::string& Address(const Connection& connection,
                           std::uint32_t direction) {
  return direction == 0 ? connection.first_endpoint
                        : connection.second_endpoint;
}

void AddClock(const TransferFacts& transfer, std::vector<std::string>& limits) {
  if (transfer.GoesBack()) {
    limits.push_back(
        "The clock of the capture goes back by up to " +
        Seconds(transfer.most_set_back, 6) +
        " s: until it has caught up, times count as not going on.");
  }
  if (transfer.first == transfer.last && transfer.last_frame != 0) {
    limits.push_back(
        "All packets have the same time: the capture holds no times to go by.");
  }
}

void AddSides(const Connection& connection, std::vector<std::string>& limits) {
  const auto& sides = connection.transport.sides;
  for (const std::uint32_t direction : {0u, 1u}) {
    const SideFacts& side = sides[direction];
    if (side.packets == 0) {
      limits.push_back("No packet of " + Address(connection, direction) +
                       " was captured: what it did, and what it was waited "
                       "for, cannot be told.");
    }
    if (side.lost_bytes != 0) {
      limits.push_back(BytesText(side.lost_bytes) + " of " +
                       Address(connection, direction) +
                       " are missing in the capture: what they would show is "
                       "counted to what stands around them.");
    }
  }
}

}  // namespace

std::vector<std::string> TimingLimits(const Connection& connection) {
  std::vector<std::string> limits;
  AddClock(connection.transfer, limits);
  AddSides(connection, limits);
  const auto& [zero, one] = connection.transport.sides;
  if (!zero.syn || !one.syn) {
    limits.push_back(
        "The handshake was not captured whole: how large the windows are, and "
        "whether they held the sender up, cannot be told.");
  }
  if (zero.offloaded_packets + one.offloaded_packets != 0) {
    limits.push_back(
        "Packets were captured before they were cut for the wire, or after "
        "they were joined: which of them were sent again or held back may "
        "differ on the wire.");
  }
  if (zero.cut_packets + one.cut_packets != 0) {
    limits.push_back(
        "Packets were not captured whole: messages in what was cut are not "
        "told apart, and their time counts to those around them.");
  }
  return limits;
}

}  // namespace host
