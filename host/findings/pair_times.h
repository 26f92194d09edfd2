#ifndef HOST_FINDINGS_PAIR_TIMES_H_
#define HOST_FINDINGS_PAIR_TIMES_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "host/findings/finding.h"
#include "host/findings/scene.h"
#include "host/timing/connection_timing.h"

namespace host {

// Answers of one command by one side, in the order of the wire.
using Latencies = std::vector<Nanoseconds>;

// All associations between one client's host and one server.
struct PairTimes {
  const SceneConnection* first = nullptr;
  const Association* association = nullptr;  // the first
  std::vector<std::size_t> connections;
  std::uint64_t associations = 0;
  std::uint64_t with_one_object = 0;
  TimeSums sums;
  Microseconds whole = 0;
  // Of the acceptors' thinking, and the first connection and request.
  Microseconds sub_operations = 0;
  const SceneConnection* moving = nullptr;
  std::uint32_t moved_by = 0;
  std::array<HeldBack, 2> held_back;  // by the requestor, by the acceptor
  // Bytes that the requestor and the acceptor sent, and how long the other
  // side's window kept them from it.
  std::array<std::uint64_t, 2> bytes{};
  std::array<Nanoseconds, 2> limited{};
  std::array<std::uint32_t, 2> largest_window{};
  Nanoseconds trip = 0;  // the first that is known
  std::map<std::pair<std::uint16_t, TimeOwner>, Latencies> latencies;
  // An association in which answers of one command came slower and slower.
  struct Growth {
    const Association* association = nullptr;
    const SceneConnection* at = nullptr;
    std::uint16_t command = 0;
    std::uint32_t direction = 0;
    std::size_t answers = 0;
    Nanoseconds from = 0;
    Nanoseconds to = 0;
  };
  std::optional<Growth> growth;

  Microseconds Busy() const { return whole - sums.Of(TimePart::kIdle); }
};

// Of the connections that concern DICOM and have associations, in the order of
// their first ones. Linear in their messages, PDUs and waits.
std::vector<PairTimes> TimesByPair(const Scene& scene);

}  // namespace host

#endif  // HOST_FINDINGS_PAIR_TIMES_H_
