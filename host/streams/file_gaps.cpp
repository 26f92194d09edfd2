#include "host/streams/file_gaps.h"

#include <cstdint>
#include <map>
#include <utility>

#include "host/text/number_text.h"

namespace host {
namespace {

struct Loss {
  std::uint64_t bytes = 0;
  std::uint64_t connections = 0;
};

}  // namespace

std::vector<std::string> DescribeFileGaps(TcpConnections& connections,
                                          const FrameNames& names) {
  if (!names.HasSeveralFiles()) return {};
  std::map<std::pair<std::uint32_t, std::uint32_t>, Loss> losses;
  for (std::size_t i = 0; i < connections.size(); ++i) {
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint64_t> own;
    for (const StreamGap& gap : connections.at(i).gaps) {
      const std::uint32_t before = names.PlaceOf(gap.frame_before).file;
      const std::uint32_t behind = names.PlaceOf(gap.frame_behind).file;
      if (!names.EndsBefore(before, behind)) continue;
      own[{before, behind}] += gap.bytes;
    }
    for (const auto& [files, bytes] : own) {
      losses[files].bytes += bytes;
      ++losses[files].connections;
    }
  }
  std::vector<std::string> sentences;
  for (const auto& [files, loss] : losses) {
    sentences.push_back(
        "Between " + names.file(files.first) + " and " +
        names.file(files.second) + " packets are missing: " +
        CountText(loss.connections, "connection lacks", "connections lack") +
        " " + BytesText(loss.bytes) +
        " there; give the files between them as well, if there are any.");
  }
  return sentences;
}

}  // namespace host
