#ifndef HOST_CAPTURE_PACKET_FILTER_H_
#define HOST_CAPTURE_PACKET_FILTER_H_

#include <map>
#include <memory>
#include <string>

#include "host/capture/frame_records.h"

namespace host {

// A filter in tcpdump's language, by libpcap.
class PacketFilter {
 public:
  // An empty expression lets all frames pass. Throws FilterError when it is
  // wrong for frames of this link type.
  PacketFilter(const std::string& expression, int link_type);
  ~PacketFilter();

  // Throws FilterError when the expression is wrong for this frame's link type.
  bool Passes(const FrameRecord& frame);

 private:
  class Program;

  const Program& ProgramFor(int link_type);

  std::string expression_;
  std::map<int, std::unique_ptr<Program>> programs_;  // by link type
};

}  // namespace host

#endif  // HOST_CAPTURE_PACKET_FILTER_H_
