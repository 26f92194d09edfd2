#include "host/findings/finding_list.h"

#include <algorithm>
#include <tuple>

namespace host {
namespace {

// No association ends over how a text is written.
bool IsCause(const Finding& finding) {
  return finding.severity != Severity::kNote &&
         finding.kind->origin != Origin::kCapture &&
         !finding.kind->slug.starts_with("character-set-");
}

void Merge(Finding&& more, Finding& known) {
  known.count += more.count;
  AddPlace({more.connection, more.pdu, more.message}, known);
  for (const FindingPlace& place : more.others) AddPlace(place, known);
  if (known.connections.size() < Finding::kConnectionsKept &&
      known.connections.back() != more.connection) {
    known.connections.push_back(more.connection);
  }
}

}  // namespace

void FindingList::BeginConnection(std::size_t index) {
  connection_ = index;
  no_cause_until_ = 0;
  no_cause_of_ending_until_ = {};
}

Finding& FindingList::Add(std::string_view slug, std::string sentence) {
  Finding finding;
  finding.kind = &KindOf(slug);
  finding.severity = finding.kind->severity;
  finding.sentence = std::move(sentence);
  finding.connection = connection_;
  finding.connections = {connection_};
  current_.push_back(std::move(finding));
  return current_.back();
}

bool FindingList::HasCause() {
  while (no_cause_until_ < current_.size() &&
         !IsCause(current_[no_cause_until_])) {
    ++no_cause_until_;
  }
  return no_cause_until_ < current_.size();
}

Finding* FindingList::CauseOfEnding(bool left_open) {
  std::size_t& at = no_cause_of_ending_until_[left_open ? 1 : 0];
  for (; at < current_.size(); ++at) {
    Finding& finding = current_[at];
    if (IsCause(finding) && finding.severity == Severity::kFault &&
        !(left_open && finding.kind->slug.starts_with("status-"))) {
      return &finding;
    }
  }
  return nullptr;
}

void FindingList::EndConnection() {
  for (Finding& finding : current_) {
    if (finding.likeness.empty()) {
      folded_.push_back(std::move(finding));
      continue;
    }
    const auto [known, is_new] = by_likeness_.try_emplace(
        {finding.kind->slug, finding.likeness}, folded_.size());
    if (is_new) {
      folded_.push_back(std::move(finding));
    } else {
      Merge(std::move(finding), folded_[known->second]);
    }
  }
  current_.clear();
}

std::vector<Finding> FindingList::TakeSorted() {
  std::ranges::stable_sort(folded_, {}, [](const Finding& finding) {
    return std::tuple(finding.severity, finding.is_consequence, finding.kind,
                      finding.connection, finding.first_frame);
  });
  by_likeness_.clear();
  return std::exchange(folded_, {});
}

void AddPlace(const FindingPlace& place, Finding& finding) {
  const bool is_any = place.pdu || place.message;
  if (!is_any || finding.others.size() >= Finding::kPlacesKept) return;
  finding.others.push_back(place);
}

void SetPlace(const WirePlace& place, Finding& finding) {
  finding.pdu = place.pdu;
  finding.first_frame = place.first_frame;
  finding.last_frame = place.last_frame;
  finding.time = place.time;
}

void SetPlace(const DialogueMessage& message, Finding& finding) {
  finding.message = message.record;
  finding.first_frame = message.first_frame;
  finding.last_frame = message.last_frame;
  finding.time = message.last_time;
}

void SetPlace(const Ending& ending, Finding& finding) {
  SetFrame({ending.frame, ending.time}, finding);
  finding.pdu = ending.pdu;
}

void SetFrame(const FrameMark& mark, Finding& finding) {
  finding.first_frame = mark.frame;
  finding.last_frame = mark.frame;
  finding.time = mark.time;
}

}  // namespace host
