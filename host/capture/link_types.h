#ifndef HOST_CAPTURE_LINK_TYPES_H_
#define HOST_CAPTURE_LINK_TYPES_H_

namespace host {

// The link types by the numbers that capture files and libpcap give them.
enum LinkType : int {
  kNull = 0,
  kEthernet = 1,
  kRawIp = 12,
  kRawIpBsd = 14,
  kRawIpFile = 101,
  kLoop = 108,
  kLinuxCooked = 113,
  kIpv4 = 228,
  kIpv6 = 229,
  kLinuxCooked2 = 276,
};

// Whether frames of this link type can be read.
bool IsLinkTypeKnown(int link_type);

}  // namespace host

#endif  // HOST_CAPTURE_LINK_TYPES_H_
