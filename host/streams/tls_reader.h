#ifndef HOST_STREAMS_TLS_READER_H_
#define HOST_STREAMS_TLS_READER_H_

#include <optional>

#include "host/streams/stream_assembler.h"
#include "host/streams/transport_facts.h"

namespace host {

// What a stream says in TLS, from its first records; none when it does not
// begin like TLS.
std::optional<TlsFacts> ReadTls(const StreamAssembler& stream);

}  // namespace host

#endif  // HOST_STREAMS_TLS_READER_H_
