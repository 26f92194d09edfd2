#include "host/streams/tls_reader.h"

#include <algorithm>
#include <span>
#include <string>
#include <vector>

#include "host/capture/wire_bytes.h"

namespace host {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kRecordHeaderBytes = 5;
constexpr std::size_t kHelloBytes = 2048;  // of one, that are looked at
constexpr int kRecords = 64;               // of a stream, likewise

enum RecordType : std::uint8_t {
  kChangeCipherSpec = 20,
  kAlert = 21,
  kHandshake = 22,
  kApplicationData = 23,
};

struct RecordHeader {
  std::uint8_t type = 0;
  std::uint32_t length = 0;
};

// The header there; none when it is no header of TLS.
std::optional<RecordHeader> RecordAt(const StreamAssembler& stream,
                                     StreamPosition at) {
  const auto bytes = stream.Peek(at, kRecordHeaderBytes);
  WireReader in(bytes);
  RecordHeader header;
  header.type = in.Byte();
  const std::uint8_t major = in.Byte();
  in.Skip(1);
  header.length = in.Word16();
  if (!in.ok() || major != 3 || header.type < kChangeCipherSpec ||
      header.type > kApplicationData) {
    return {};
  }
  return header;
}

// The name in the extension that asks for a server by name.
std::string ServerName(Bytes extension) {
  WireReader in(extension);
  in.Skip(2);  // length of the list
  const std::uint8_t type = in.Byte();
  const Bytes name = in.Bytes(in.Word16());
  if (!in.ok() || type != 0) return {};
  return {name.begin(), name.end()};
}

// The highest version that the extension names, of those that are in use: a
// client sends a list, a server one.
std::uint16_t HighestVersion(Bytes extension, bool is_list) {
  WireReader in(extension);
  if (is_list) in.Skip(1);
  std::uint16_t highest = 0;
  while (in.rest().size() >= 2) {
    const std::uint16_t version = in.Word16();
    if (version >> 8 == 3) highest = std::max(highest, version);
  }
  return highest;
}

// A ClientHello or a ServerHello, which may be cut.
void ReadHello(Bytes bytes, TlsFacts& facts) {
  constexpr std::uint8_t kClientHello = 1, kServerHello = 2;
  constexpr std::uint16_t kServerName = 0, kSupportedVersions = 43;
  WireReader in(bytes);
  const std::uint8_t type = in.Byte();
  if (type != kClientHello && type != kServerHello) return;
  in.Skip(3);  // length
  facts.version = in.Word16();
  in.Skip(32);         // random
  in.Skip(in.Byte());  // session
  if (type == kClientHello) {
    in.Skip(in.Word16());  // ciphers
    in.Skip(in.Byte());    // compressions
  } else {
    in.Skip(3);  // the chosen ones
  }
  facts.hello = true;
  in.Skip(2);  // length of all extensions
  while (in.ok() && !in.rest().empty()) {
    const std::uint16_t extension = in.Word16();
    const Bytes value = in.Bytes(in.Word16());
    if (!in.ok()) break;
    if (extension == kServerName && type == kClientHello) {
      facts.server_name = ServerName(value);
    } else if (extension == kSupportedVersions) {
      const std::uint16_t highest = HighestVersion(value, type == kClientHello);
      if (highest != 0) facts.version = highest;
    }
  }
}

void NoteEncrypted(std::uint32_t length, std::uint32_t frame, TlsFacts& facts) {
  if (facts.encrypted_records++ == 0) facts.first_encrypted_frame = frame;
  facts.last_encrypted_bytes = length;
  facts.last_but_one_encrypted_frame = facts.last_encrypted_frame;
  facts.last_encrypted_frame = frame;
}

}  // namespace

std::optional<TlsFacts> ReadTls(const StreamAssembler& stream) {
  StreamPosition at = stream.begin();
  std::optional<RecordHeader> record = RecordAt(stream, at);
  if (!record || (record->type != kHandshake && record->type != kAlert)) {
    return {};
  }
  TlsFacts facts;
  bool is_encrypted = false;
  for (int i = 0; i < kRecords && record; ++i) {
    const StreamPosition body =
        at + static_cast<StreamPosition>(kRecordHeaderBytes);
    if (record->type == kHandshake && !facts.hello) {
      ReadHello(
          stream.Peek(body, std::min<std::size_t>(record->length, kHelloBytes)),
          facts);
    } else if (record->type == kChangeCipherSpec) {
      is_encrypted = true;
    } else if (record->type == kAlert && record->length == 2 && !is_encrypted) {
      const auto alert = stream.Peek(body, 2);
      if (alert.size() == 2) {
        facts.alert = TlsFacts::Alert{alert[0] == 2, alert[1]};
      }
    } else if (record->type == kApplicationData) {
      NoteEncrypted(record->length,
                    stream.Frames(body, body + record->length).last, facts);
    }
    at = body + record->length;
    record = RecordAt(stream, at);
  }
  return facts;
}

}  // namespace host
