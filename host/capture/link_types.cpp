#include "host/capture/link_types.h"

#include <algorithm>
#include <iterator>

namespace host {

bool IsLinkTypeKnown(int link_type) {
  constexpr int kKnown[] = {kNull,      kEthernet,    kRawIp,       kRawIpBsd,
                            kRawIpFile, kLoop,        kLinuxCooked, kIpv4,
                            kIpv6,      kLinuxCooked2};
  return std::ranges::find(kKnown, link_type) != std::end(kKnown);
}

}  // namespace host
