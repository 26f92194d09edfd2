#ifndef HOST_FINDINGS_FINDING_H_
#define HOST_FINDINGS_FINDING_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/text/time_text.h"

namespace host {

enum class Severity : std::uint8_t {
  kFault,    // what was to be done was not done
  kWarning,  // it was done, or cannot be judged, and something is wrong
  kNote,     // nothing is wrong, but somebody who searches wants to know it
};
std::string_view SeverityText(Severity severity);  // "fault"

// Whom it is about.
enum class Origin : std::uint8_t { kPeer, kNetwork, kCapture };
std::string_view OriginText(Origin origin);  // "peer"

// One thing that can be found.
struct FindingKind {
  std::string_view slug;  // stays as it is: scripts go by it
  Severity severity;      // as a rule; a finding may say otherwise
  Origin origin;
  std::string_view advice;  // what to check or do, in whole sentences
};

// In the order in which causes stand before their consequences.
std::span<const FindingKind> FindingKinds();
// `slug` is one of the table's.
const FindingKind& KindOf(std::string_view slug);

// Where in a capture something shows: indices of its connections, and of
// Connection::pdus and Connection::messages.
struct FindingPlace {
  std::size_t connection = 0;
  std::optional<std::uint32_t> pdu;
  std::optional<std::uint32_t> message;
};

// Something that was found, or several equal ones. All texts are UTF-8.
struct Finding {
  const FindingKind* kind = nullptr;
  Severity severity = Severity::kNote;
  std::string sentence;  // the side, the cause, the numbers
  std::string advice;    // better than the kind's, where something is known
  std::vector<std::string> evidence;  // a sentence each
  std::size_t connection = 0;         // index in the capture: of the first
  // Of the first: where it shows. Indices of Connection::pdus and of
  // Connection::messages; frames from 1, or 0.
  std::optional<std::uint32_t> pdu;
  std::optional<std::uint32_t> message;
  std::uint32_t first_frame = 0;
  std::uint32_t last_frame = 0;
  // The ID of the presentation context that it is about.
  std::optional<std::uint8_t> context;
  // Where the others show, of which the first are kept.
  static constexpr std::size_t kPlacesKept = 1000;
  std::vector<FindingPlace> others;
  // How many there are, and in which connections, of which the first are kept.
  static constexpr std::size_t kConnectionsKept = 100;
  std::uint64_t count = 1;
  std::vector<std::size_t> connections;
  // Findings of one slug with the same text here are one; it stands for what a
  // person would call the same, as peer and reason. Empty: never.
  std::string likeness;
  // When it showed, if that can be said to the packet.
  std::optional<Nanoseconds> time;
  // It is probably there because of what another connection shows: it stands
  // behind all others of its severity.
  bool is_consequence = false;
};

// What to check or do.
inline std::string_view AdviceOf(const Finding& finding) {
  return finding.advice.empty() ? finding.kind->advice
                                : std::string_view(finding.advice);
}

}  // namespace host

#endif  // HOST_FINDINGS_FINDING_H_
