#ifndef HOST_CAPDUMP_FINDINGS_REPORT_H_
#define HOST_CAPDUMP_FINDINGS_REPORT_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/capdump/report.h"
#include "host/findings/finding.h"
#include "host/findings/scene.h"

namespace host {

// What is shown before any list: what is wrong, and what happened. Each hands
// on its text in few pieces.

// Which connections are told about, by their index.
using IsWantedConnection = std::function<bool(const SceneConnection&)>;

// The position in the module's list of the record `index`; none when it has no
// row there.
std::optional<std::size_t> RowOf(const std::vector<WireRecord>& records,
                                 std::optional<std::uint32_t> index);

// At most `most` findings, and how many more there are; each with its side,
// cause, place and advice, the evidence too if asked for. One line says so when
// nothing is wrong.
struct FindingsShown {
  std::size_t most = 10;
  bool evidence = false;
  std::optional<std::size_t> connection;  // the only one that is told of
};
void WriteFindings(const Scene& scene, const std::vector<Finding>& findings,
                   const FindingsShown& shown, const Sink& sink);

// The story of each connection that is wanted, those that something was found
// in before others, should they be too many; stories of one shape are told
// once.
void WriteStories(const Scene& scene, const IsWantedConnection& is_wanted,
                  const std::vector<Finding>& findings, const Sink& sink);

// Tells stories one by one, of connections that end while others go on. One of
// a shape that was told before is a line that names the connection of that
// story.
class StoryTeller {
 public:
  void Tell(const SceneConnection& at, const Sink& sink);

 private:
  std::map<std::string, std::size_t> told_;  // index of the first, by shape
};

// One object a finding, a line each.
void WriteFindingsJson(const Scene& scene, const std::vector<Finding>& findings,
                       const Sink& sink);

}  // namespace host

#endif  // HOST_CAPDUMP_FINDINGS_REPORT_H_
