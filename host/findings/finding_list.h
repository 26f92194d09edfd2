#ifndef HOST_FINDINGS_FINDING_LIST_H_
#define HOST_FINDINGS_FINDING_LIST_H_

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
  bool HasCause() { return Cause() != nullptr; }
  // The first of those, to which a consequence can be added; null without one.
  Finding* Cause();
  // This connection is done with: its findings become part of the whole.
  void EndConnection();

  std::vector<Finding> TakeSorted();

 private:
  std::vector<Finding> current_;  // of the connection that is looked at
  std::size_t connection_ = 0;
  std::size_t no_cause_until_ = 0;  // none of current_ before it is a cause
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
