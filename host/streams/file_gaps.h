#ifndef HOST_STREAMS_FILE_GAPS_H_
#define HOST_STREAMS_FILE_GAPS_H_

#include <string>
#include <vector>

#include "host/capture/frame_names.h"
#include "host/streams/tcp_connections.h"

namespace host {

// What is missing between the files of a capture, as one of a ring that was
// not given: a connection has bytes of two files, one of which ends before the
// other begins, and just between those bytes some are missing. One sentence for
// each such pair of files. For clean streams, when all is read.
std::vector<std::string> DescribeFileGaps(TcpConnections& connections,
                                          const FrameNames& names);

}  // namespace host

#endif  // HOST_STREAMS_FILE_GAPS_H_
