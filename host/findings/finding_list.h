#ifndef HOST_FINDINGS_FINDING_LIST_H_
#define HOST_FINDINGS_FINDING_LIST_H_

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/findings/finding.h"
#include "host/findings/scene.h"

namespace host {

// Takes what rules find. Equal ones become one as they come, so that 20,000
// rejections need the room of one.
class FindingList {
 public:
  // The rules look at this connection from now on.
  void BeginConnection(std::size_t index);
  // Makes a finding of the connection that is looked at. It may be completed
  // until the next one is added or Fold() is called.
  Finding& Add(std::string_view slug, std::string sentence);
  // Whether this connection has a fault or warning among the findings so far:
  // what comes later in it is probably its consequence.
  bool HasCause();
  // The first fault of this connection that explains how it ended, to which the
  // ending can be added as its consequence; null without one. A refused request
  // does not explain why another one was `left_open`.
  Finding* CauseOfEnding(bool left_open);
  // This connection is done with: its findings become part of the whole.
  void EndConnection();

  std::vector<Finding> TakeSorted();

 private:
  std::vector<Finding> current_;  // of the connection that is looked at
  std::size_t connection_ = 0;
  // None of current_ before these is a cause, or one of an ending without and
  // with an open request.
  std::size_t no_cause_until_ = 0;
  std::array<std::size_t, 2> no_cause_of_ending_until_{};
  std::vector<Finding> folded_;
  std::map<std::pair<std::string_view, std::string>, std::size_t> by_likeness_;
};

// Another one of the same finding shows there.
void AddPlace(const FindingPlace& place, Finding& finding);

// Where a finding shows.
void SetPlace(const WirePlace& place, Finding& finding);
void SetPlace(const DialogueMessage& message, Finding& finding);
void SetPlace(const Ending& ending, Finding& finding);
void SetFrame(const FrameMark& mark, Finding& finding);

}  // namespace host

#endif  // HOST_FINDINGS_FINDING_LIST_H_
