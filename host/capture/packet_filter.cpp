#include "host/capture/packet_filter.h"

#include <pcap/pcap.h>

#include "host/capture/capture_error.h"

namespace host {
namespace {

// What libpcap calls frames of this type of capture files.
int LibraryLinkType(int link_type) {
  constexpr int kRawIp = 101;
  return link_type == kRawIp ? DLT_RAW : link_type;
}

}  // namespace

class PacketFilter::Program {
 public:
  Program(const std::string& expression, int link_type)
      : handle_(pcap_open_dead(LibraryLinkType(link_type),
                               static_cast<int>(kMostFrameBytes))) {
    if (handle_ != nullptr &&
        pcap_compile(handle_, &program_, expression.c_str(), 1,
                     PCAP_NETMASK_UNKNOWN) == 0) {
      return;
    }
    const std::string reason =
        handle_ == nullptr ? "no memory" : pcap_geterr(handle_);
    if (handle_ != nullptr) pcap_close(handle_);
    throw FilterError("The filter \"" + expression + "\" is not understood (" +
                      reason +
                      "): write it as for tcpdump, for example \"port 104\".");
  }
  ~Program() {
    pcap_freecode(&program_);
    pcap_close(handle_);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  bool Passes(const FrameRecord& frame) const {
    pcap_pkthdr header{};
    header.caplen = static_cast<bpf_u_int32>(frame.bytes.size());
    header.len = frame.wire_length;
    return pcap_offline_filter(&program_, &header, frame.bytes.data()) != 0;
  }

 private:
  pcap_t* handle_;
  bpf_program program_{};
};

PacketFilter::PacketFilter(const std::string& expression, int link_type)
    : expression_(expression) {
  if (!expression_.empty()) ProgramFor(link_type);
}

PacketFilter::~PacketFilter() = default;

const PacketFilter::Program& PacketFilter::ProgramFor(int link_type) {
  auto& program = programs_[link_type];
  if (!program) program = std::make_unique<Program>(expression_, link_type);
  return *program;
}

bool PacketFilter::Passes(const FrameRecord& frame) {
  return expression_.empty() || ProgramFor(frame.link_type).Passes(frame);
}

}  // namespace host
