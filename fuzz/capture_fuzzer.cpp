// The reference host's way from a capture to the packets that it hands to the
// module. The first byte says what the input is: a capture file, or operations
// that make up a conversation and what the network and the capture did to it.
#include <array>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "host/capture/capture_reader.h"
#include "host/capture/wire_bytes.h"
#include "host/dialogue/dialogue_reader.h"
#include "host/findings/findings.h"
#include "host/findings/story.h"
#include "host/streams/capture_loader.h"
#include "host/streams/pdu_header.h"
#include "host/streams/tcp_connections.h"
#include "interface/host_interface.h"
#include "tests/clean_feed_walk.h"
#include "tests/memory_file.h"

namespace dicom::fuzz {
namespace {

using host::Connection;
using host::HandOver;
using host::TcpConnections;
using host::TcpFrame;
using testing::Bytes;
using testing::MemoryFile;

// Everything that was seen, in short.
class Digest {
 public:
  void See(const void* bytes, std::size_t count) {
    const auto* const next = static_cast<const std::uint8_t*>(bytes);
    for (std::size_t i = 0; i < count; ++i)
      value_ = (value_ ^ next[i]) * 0x100000001B3;
  }
  void See(std::uint64_t number) { See(&number, sizeof(number)); }
  void See(const std::string& text) { See(text.data(), text.size()); }
  std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = 0xCBF29CE484222325;
};

std::uint64_t DigestOf(const host::WireRecord& record) {
  Digest digest;
  digest.See(record.direction);
  digest.See(record.length);
  digest.See(record.first_frame);
  digest.See(record.last_frame);
  digest.See(static_cast<std::uint64_t>(record.time));
  digest.See(record.listed);
  digest.See(record.note);
  return digest.value();
}

testing::CapturedPacket PacketOf(const Connection& connection,
                                 std::uint32_t number) {
  testing::CapturedPacket packet = host::PacketOf(*connection.feed, number);
  Require(packet.tcp_bytes.size() <= DICOM_PACKET_BYTES,
          "a packet fits in its room");
  Require(packet.direction <= 1, "a packet has a direction");
  return packet;
}

// The length, header included, that the PDU at `at` says it has. Its header is
// there.
std::uint64_t PduBytes(const Bytes& stream, std::size_t at) {
  host::WireReader in(stream);
  in.Skip(at + 2);
  return std::uint64_t{6} + in.Word32();
}

// One connection while its capture grows: what was shown stays as it is.
class Watched {
 public:
  void Look(const Connection& connection) {
    const std::uint32_t count = connection.feed->PacketCount();
    Require(count >= packets_.size(), "no packet is withdrawn");
    while (packets_.size() < count) {
      packets_.push_back(DigestOfPacket(
          connection, static_cast<std::uint32_t>(packets_.size())));
    }
    Require(connection.pdus.size() >= pdus_.size(), "no PDU is withdrawn");
    for (std::size_t i = pdus_.size(); i < connection.pdus.size(); ++i) {
      pdus_.push_back(DigestOf(connection.pdus[i]));
    }
    Require(connection.messages.size() >= messages_, "nor a message");
    messages_ = connection.messages.size();
  }

  void LookAgain(const Connection& connection) {
    Look(connection);
    for (std::uint32_t i = 0; i < packets_.size(); ++i) {
      Require(DigestOfPacket(connection, i) == packets_[i],
              "a packet never changes");
    }
    for (std::size_t i = 0; i < pdus_.size(); ++i) {
      Require(DigestOf(connection.pdus[i]) == pdus_[i], "nor a PDU's record");
    }
  }

  const std::vector<std::uint64_t>& Packets() const { return packets_; }

 private:
  static std::uint64_t DigestOfPacket(const Connection& connection,
                                      std::uint32_t number) {
    const auto packet = PacketOf(connection, number);
    Digest digest;
    digest.See(packet.direction);
    digest.See(packet.tcp_bytes.data(), packet.tcp_bytes.size());
    return digest.value();
  }

  std::vector<std::uint64_t> packets_;
  std::vector<std::uint64_t> pdus_;
  std::size_t messages_ = 0;
};

// In each direction there are the listed PDUs, whole, one behind the other.
void CheckCleanFeed(const Connection& connection) {
  const testing::CleanFeedWalk walk(*connection.feed);
  Require(walk.problem.empty(), walk.problem.c_str());
  std::array<std::size_t, 2> cut{};
  for (const host::WireRecord& pdu : connection.pdus) {
    if (!pdu.listed) continue;
    const Bytes& stream = walk.streams[pdu.direction];
    std::size_t& at = cut[pdu.direction];
    Require(at + host::kPduHeaderBytes <= stream.size() &&
                pdu.length <= stream.size() - at,
            "a listed PDU is in the packets");
    Require(pdu.length == PduBytes(stream, at), "a PDU is as long as it says");
    at += static_cast<std::size_t>(pdu.length);
  }
  const std::size_t bytes[] = {walk.streams[0].size(), walk.streams[1].size()};
  Require(bytes[0] == cut[0] && bytes[1] == cut[1],
          "packets hold the listed PDUs and nothing else");
  // What was lost is filled up to a multiple of what was captured.
  Require(
      bytes[0] + bytes[1] <= 101 * connection.payload_bytes + 2 * (1u << 20),
      "bytes are bounded by what was captured");
}

void CheckRecords(const std::vector<host::WireRecord>& records,
                  std::uint32_t frames, Digest* digest) {
  for (const host::WireRecord& record : records) {
    Require(record.direction <= 1, "a record has a direction");
    Require(
        record.first_frame <= record.last_frame && record.last_frame <= frames,
        "frames are frames of the capture");
    digest->See(DigestOf(record));
  }
}

// What the dialogue refers to is there, and can be read.
void CheckDialogue(const host::Dialogue& dialogue, const Connection& connection,
                   Digest* digest) {
  Require(dialogue.pdus.size() == connection.pdus.size(),
          "each record has a PDU");
  for (const host::Association& association : dialogue.associations) {
    Require(association.end_pdu <= dialogue.pdus.size() &&
                association.end_message <= dialogue.messages.size(),
            "an association's parts are there");
    digest->See(association.contexts.size());
  }
  for (const host::DialogueMessage& message : dialogue.messages) {
    Require(message.association < dialogue.associations.size(),
            "a message has an association");
    Require(!message.record || *message.record < connection.messages.size(),
            "a message's record is there");
    Require(!message.request || *message.request < dialogue.messages.size(),
            "an answer's request is there");
    digest->See(dialogue.ReadCommand(message).error_comment);
    Bytes data(100);
    const auto source = dialogue.DataSetOf(message);
    Require(source->size() == message.data_bytes, "the data set is all there");
    digest->See(source->Read(message.data_bytes / 2, data));
    digest->See(std::string(message.sop_class));
  }
  for (const host::Irregularity& irregularity : dialogue.irregularities) {
    Require(irregularity.place.pdu < dialogue.pdus.size(),
            "an irregularity has a PDU");
    digest->See(irregularity.found);
    digest->See(irregularity.text);
  }
}

void CheckConnection(const Connection& connection, HandOver hand_over,
                     std::uint32_t frames, Digest* digest) {
  CheckRecords(connection.pdus, frames, digest);
  CheckRecords(connection.messages, frames, digest);
  if (hand_over == HandOver::kCleanStreams) CheckCleanFeed(connection);
  const host::Dialogue* const dialogue = host::DialogueOf(connection);
  Require((dialogue != nullptr) == (hand_over == HandOver::kCleanStreams),
          "clean streams have a dialogue");
  if (dialogue != nullptr) CheckDialogue(*dialogue, connection, digest);
  for (const std::string& note : connection.notes) {
    Require(note.ends_with('.'), "a note is a sentence");
    digest->See(note);
  }
  digest->See(connection.first_endpoint + connection.second_endpoint);
  digest->See(connection.payload_bytes);
}

// What is told of them: whole sentences, of what is there.
void CheckFindings(const std::vector<const Connection*>& connections,
                   Digest* digest) {
  const host::Scene scene(connections, {});
  for (const host::Finding& finding : host::FindAll(scene)) {
    Require(finding.sentence.ends_with('.'), "a finding is a sentence");
    Require(finding.connection < connections.size(),
            "a finding has a connection");
    const Connection& at = *connections[finding.connection];
    Require(finding.pdu.value_or(0) <= at.pdus.size() &&
                finding.message.value_or(0) <= at.messages.size(),
            "a finding's place is there");
    Require(finding.first_frame <= finding.last_frame,
            "a finding's frames are in order");
    digest->See(finding.sentence);
  }
  constexpr std::size_t kMostSteps = 40;
  for (const host::SceneConnection& at : scene.connections()) {
    const host::Story story = host::StoryOf(at, kMostSteps);
    Require(story.steps.size() <= kMostSteps, "a story has its limit");
    for (const host::StoryStep& step : story.steps) digest->See(step.text);
  }
}

// A frame that outlives its reader.
struct KeptFrame {
  TcpFrame frame;
  std::shared_ptr<Bytes> bytes;
  std::shared_ptr<std::vector<host::FramePart>> parts;

  explicit KeptFrame(const TcpFrame& seen)
      : frame(seen),
        bytes(std::make_shared<Bytes>(seen.tcp.begin(), seen.tcp.end())),
        parts(std::make_shared<std::vector<host::FramePart>>(
            seen.parts.begin(), seen.parts.end())) {
    frame.tcp = *bytes;
    frame.parts = *parts;
    std::uint32_t length = 0;
    for (const host::FramePart& part : *parts) length += part.length;
    Require(parts->empty() || length == bytes->size(),
            "parts are all of a segment");
  }
  bool operator==(const KeptFrame& other) const {
    return frame.number == other.frame.number &&
           frame.time == other.frame.time &&
           frame.source == other.frame.source &&
           frame.destination == other.frame.destination &&
           frame.wire_length == other.frame.wire_length &&
           *bytes == *other.bytes;
  }
};

void AddKept(const KeptFrame& kept, TcpConnections* connections) {
  TcpFrame frame = kept.frame;
  frame.stored = connections->store().Append(*kept.bytes);
  connections->Add(frame);
}

// Connects all frames; a new one shows what is settled after every `pace`th, 0:
// at the end only. `packets` receives what the first connection showed.
std::uint64_t Connect(const std::vector<KeptFrame>& frames, HandOver hand_over,
                      std::size_t pace, std::vector<std::uint64_t>* packets) {
  TcpConnections connections(hand_over, std::make_shared<host::ByteStore>(),
                             host::ReadDialogues());
  std::vector<Watched> watched;
  const auto look = [&](bool again) {
    watched.resize(connections.size());
    for (std::size_t i = 0; i < watched.size(); ++i) {
      again ? watched[i].LookAgain(connections.at(i))
            : watched[i].Look(connections.at(i));
    }
  };
  std::size_t added = 0;
  for (const KeptFrame& kept : frames) {
    AddKept(kept, &connections);
    if (pace == 0 || ++added % pace != 0) continue;
    connections.Update();
    look(false);
  }
  connections.Finish();
  look(true);
  Digest digest;
  std::vector<const Connection*> shown;
  for (std::size_t i = 0; i < connections.size(); ++i) {
    shown.push_back(&connections.at(i));
    CheckConnection(connections.at(i), hand_over,
                    frames.empty() ? 0 : frames.back().frame.number, &digest);
    for (std::uint64_t packet : watched[i].Packets()) digest.See(packet);
  }
  CheckFindings(shown, &digest);
  if (!watched.empty()) *packets = watched[0].Packets();
  return digest.value();
}

void ReadOn(host::CaptureReader* reader, std::vector<KeptFrame>* frames) {
  while (const TcpFrame* frame = reader->Next()) frames->emplace_back(*frame);
}

std::vector<KeptFrame> FramesOf(const Bytes& file_bytes) {
  std::vector<KeptFrame> frames;
  MemoryFile file;
  file.Append(file_bytes);
  try {
    host::CaptureReader reader(file.Path(), "");
    ReadOn(&reader, &frames);
  } catch (const host::CaptureError&) {
  }
  return frames;
}

// The same while the file grows piece by piece.
std::vector<KeptFrame> FollowedFramesOf(const Bytes& file_bytes,
                                        std::size_t piece) {
  std::vector<KeptFrame> frames;
  MemoryFile file;
  std::unique_ptr<host::CaptureReader> reader;
  for (std::size_t at = 0; at < file_bytes.size(); at += piece) {
    file.Append(file_bytes.Part(at, piece));
    try {
      if (reader == nullptr) {
        reader = std::make_unique<host::CaptureReader>(file.Path(), "");
      }
      ReadOn(reader.get(), &frames);
    } catch (const host::CaptureError&) {
    }
  }
  return frames;
}

constexpr std::size_t kFramesOfASlice = 32;  // as CaptureLoader looks

// The same in slices, as a window loads it.
std::vector<std::uint64_t> LoadedPacketsOf(const Bytes& file_bytes) {
  MemoryFile file;
  file.Append(file_bytes);
  Watched watched;
  try {
    host::CaptureLoader loader(file.Path(), {});
    while (loader.state() != host::CaptureLoader::State::kDone) {
      loader.Read([] { return true; });
      Require(loader.percent() <= 100, "the progress is a percentage");
      if (loader.connections().size() != 0)
        watched.Look(loader.connections().at(0));
    }
    if (loader.connections().size() != 0)
      watched.LookAgain(loader.connections().at(0));
  } catch (const host::CaptureError&) {
  }
  return watched.Packets();
}

std::uint64_t RunFile(FuzzInput& input) {
  const std::size_t pace = input.Byte() % 8;
  const std::size_t piece = 1 + input.Word() % 2048u;
  const Bytes bytes = input.Rest();
  const std::vector<KeptFrame> frames = FramesOf(bytes);
  // What is compressed is not read again when it has ended once.
  const bool is_gzip = !bytes.empty() && bytes[0] == 0x1F;
  Require(is_gzip || FollowedFramesOf(
                         bytes, std::max(piece, bytes.size() / 64)) == frames,
          "a file that grows shows the same frames");
  std::vector<std::uint64_t> packets;
  std::vector<std::uint64_t> slices;
  const std::uint64_t seen =
      Connect(frames, HandOver::kAsCaptured, pace, &packets) ^
      Connect(frames, HandOver::kCleanStreams, pace, &packets);
  Connect(frames, HandOver::kCleanStreams, kFramesOfASlice, &slices);
  Require(LoadedPacketsOf(bytes) == slices, "loading shows the same packets");
  return seen;
}

// Two files, which begin with the same bytes.
std::uint64_t RunFiles(FuzzInput& input) {
  const std::size_t length = input.Word();
  const Bytes both = input.Take(input.Word() % 1024u);
  MemoryFile first, second;
  first.Append(both + input.Take(length));
  second.Append(both + input.Rest());
  Digest digest;
  try {
    host::CaptureReader reader(
        std::vector<host::CaptureInput>{{first.Path()}, {second.Path()}}, "");
    std::map<std::uint32_t, std::uint32_t> newest;  // frame of each file
    while (const TcpFrame* frame = reader.Next()) {
      const auto [at, number] = reader.names()->PlaceOf(frame->number);
      Require(number > std::exchange(newest[at], number),
              "each file's frames stay in their order");
      digest.See(number);
    }
    for (const std::string& note : reader.Notes()) digest.See(note);
  } catch (const host::CaptureError& failure) {
    digest.See(std::string(failure.what()));
  }
  return digest.value();
}

// One segment on its way into the capture.
struct Segment {
  std::uint32_t direction = 0;
  std::uint8_t pair = 0;  // of ends
  std::uint32_t sequence = 0;
  std::uint32_t acknowledgement = 0;
  std::uint8_t flags = host::kAck;
  std::uint8_t header_words = 5;
  Bytes payload;
  std::uint32_t wire_payload = 0;
};

// Makes a conversation up. While only harmless operations come, it is also
// known what must be found in it.
class Conversation {
 public:
  explicit Conversation(FuzzInput& input) : input_(input) {}

  std::uint64_t Run() {
    const std::uint8_t kind = input_.Byte();
    const std::size_t pace = kind >> 1 & 7;
    next_ = {kind & 16 ? 0xFFFFFF00 : 1000, 5000};
    if (kind & 1) Open();
    harmless_ = (kind & 1) != 0;
    while (!input_.AtEnd() && segments_.size() < kMostSegments) Step();
    const std::vector<KeptFrame> frames = Frames();
    std::vector<std::uint64_t> at_once, followed;
    const std::uint64_t seen =
        Connect(frames, HandOver::kCleanStreams, 0, &at_once) ^
        Connect(frames, HandOver::kAsCaptured, pace, &followed);
    Connect(frames, HandOver::kCleanStreams, pace == 0 ? 1 : pace, &followed);
    if (harmless_) {
      Require(at_once == followed, "following shows the same packets");
      CheckPdus(frames);
    }
    return seen;
  }

 private:
  using Operation = void (Conversation::*)();
  static constexpr std::size_t kMostSegments = 600;
  static constexpr unsigned kMostSwaps = 30;  // a segment is not late for good

  void Step() {
    static constexpr Operation kOperations[16] = {
        &Conversation::SendPdu,      &Conversation::SendPdvs,
        &Conversation::SendPdvs,     &Conversation::SendBytes,
        &Conversation::Acknowledge,  &Conversation::Close,
        &Conversation::SetSize,      &Conversation::Swap,
        &Conversation::Repeat,       &Conversation::SendAgain,
        &Conversation::Drop,         &Conversation::Renumber,
        &Conversation::ChangeHeader, &Conversation::ChangePayload,
        &Conversation::LoseBytes,    &Conversation::OpenAnother};
    const std::uint8_t first = input_.Byte();
    flags_ = first >> 4;
    direction_ = flags_ & 1;
    (this->*kOperations[first & 15])();
  }

  // The peers.

  void Add(std::uint32_t direction, std::uint8_t flags, const Bytes& payload) {
    segments_.push_back({direction, pair_, next_[direction],
                         next_[1 - direction], flags, 5, payload,
                         payload.Length()});
    next_[direction] += payload.Length();
  }

  void Open() {
    for (std::uint32_t side : {0u, 1u}) {
      Add(side, side == 0 ? host::kSyn : host::kSyn | host::kAck, {});
      ++next_[side];
    }
    Add(0, host::kAck, {});
  }

  void Send(const Bytes& bytes) {
    for (std::size_t at = 0; at < bytes.size(); at += segment_bytes_) {
      Add(direction_, host::kAck, bytes.Part(at, segment_bytes_));
    }
    streams_[direction_] += bytes;
    if (flags_ & 2) Add(1 - direction_, host::kAck, {});
  }

  void SendBytes() { Send(input_.Take(input_.Byte())); }

  void SendPdu() {
    const std::uint8_t type = input_.Byte();
    Send(testing::Pdu(type, input_.Take(input_.Word())));
  }

  void SendPdvs() {
    Bytes pdvs;
    const std::uint8_t count = input_.Byte();
    for (std::uint8_t i = 0; i <= count % 4; ++i) {
      const std::uint8_t control = input_.Byte();
      pdvs += testing::Pdv(1, control, input_.Take(input_.Word() % 3000u));
    }
    Send(testing::PData(pdvs));
  }

  void Acknowledge() { Add(direction_, host::kAck, {}); }

  void Close() {
    harmless_ = false;  // what follows is behind the end
    const bool reset = (flags_ & 2) != 0;
    Add(direction_,
        static_cast<std::uint8_t>((reset ? host::kRst : host::kFin) |
                                  host::kAck),
        {});
    if (!reset) ++next_[direction_];
  }

  void SetSize() {
    segment_bytes_ = 1u + (flags_ & 8 ? input_.Word() : input_.Byte());
  }

  // The network and the capture, harmless.

  // A segment that was sent after the handshake.
  Segment* Earlier() {
    const std::size_t back = input_.Byte();
    return back + 4 < segments_.size() ? &segments_[segments_.size() - back - 1]
                                       : nullptr;
  }

  void Swap() {
    Segment* const segment = Earlier();
    if (segment == nullptr || segment == &segments_.back()) return;
    std::swap(segment[0], segment[1]);
    if (++swaps_ > kMostSwaps) harmless_ = false;
  }

  void Repeat() {
    if (const Segment* const segment = Earlier()) {
      const Segment copy = *segment;
      segments_.push_back(copy);
    }
  }

  // Other cuts of the same bytes.
  void SendAgain() {
    const Bytes& stream = streams_[direction_];
    const std::size_t at = input_.Word();
    const Bytes bytes =
        stream.Part(std::min(at, stream.size()), segment_bytes_);
    segments_.push_back(
        {direction_, pair_,
         next_[direction_] - stream.Length() +
             static_cast<std::uint32_t>(std::min(at, stream.size())),
         next_[1 - direction_], host::kAck, 5, bytes, bytes.Length()});
  }

  // And harmful.

  Segment* Victim() {
    harmless_ = false;
    if (segments_.empty()) return nullptr;
    return &segments_[segments_.size() - 1 - input_.Byte() % segments_.size()];
  }

  void Drop() {
    Segment* const segment = Victim();
    if (segment != nullptr)
      segments_.erase(segments_.begin() + (segment - segments_.data()));
  }

  void Renumber() {
    Segment* const segment = Victim();
    if (segment == nullptr) return;
    const auto by = static_cast<std::int8_t>(input_.Byte());
    (flags_ & 1 ? segment->sequence : segment->acknowledgement) +=
        static_cast<std::uint32_t>(by) << (flags_ >> 1) * 4;
  }

  void ChangeHeader() {
    Segment* const segment = Victim();
    if (segment == nullptr) return;
    (flags_ & 1 ? segment->flags : segment->header_words) = input_.Byte();
  }

  void ChangePayload() {
    Segment* const segment = Victim();
    if (segment == nullptr || segment->payload.empty()) return;
    const std::size_t at = input_.Word() % segment->payload.size();
    if (flags_ & 1) {
      segment->payload[at] = input_.Byte();
    } else {
      segment->payload.resize(at);  // the snap length
    }
    if (flags_ & 2) segment->wire_payload = input_.Byte() * 0x01010101u;
  }

  void LoseBytes() {
    harmless_ = false;
    next_[direction_] += std::uint32_t{input_.Word()} << (flags_ >> 1) * 2;
  }

  // Between other ends, or between the same again.
  void OpenAnother() {
    harmless_ = false;
    if (flags_ & 1) pair_ = static_cast<std::uint8_t>(flags_ >> 2);
    next_ = {input_.Word() * 0x10001u, 9000};
    streams_ = {};
    if (flags_ & 2) Open();
  }

  // The capture.

  static host::Endpoint EndOf(std::uint32_t side, std::uint8_t pair) {
    host::Endpoint end;
    end.address = {192, 0, 2, static_cast<std::uint8_t>(side + 1)};
    end.port = static_cast<std::uint16_t>(side == 0 ? 41000 + pair : 104);
    return end;
  }

  static Bytes TcpOf(const Segment& segment) {
    Bytes tcp = testing::TcpSegmentBytes(
        {segment.sequence, segment.acknowledgement, segment.flags, 5},
        segment.payload);
    tcp[12] = static_cast<std::uint8_t>(segment.header_words << 4);
    return tcp;
  }

  std::vector<KeptFrame> Frames() const {
    std::vector<KeptFrame> frames;
    for (const Segment& segment : segments_) {
      const Bytes tcp = TcpOf(segment);
      TcpFrame frame;
      frame.number = static_cast<std::uint32_t>(frames.size() + 1);
      frame.time = frame.number;
      frame.source = EndOf(segment.direction, segment.pair);
      frame.destination = EndOf(1 - segment.direction, segment.pair);
      frame.tcp = tcp;
      frame.wire_length =
          std::max(tcp.Length(), host::kTcpHeaderBytes + segment.wire_payload);
      frame.header = host::TcpHeader::Parse(tcp);
      frames.emplace_back(frame);
    }
    return frames;
  }

  // Nothing is missing, so each stream is cut where its length fields say.
  void CheckPdus(const std::vector<KeptFrame>& frames) const {
    TcpConnections connections(HandOver::kCleanStreams);
    for (const KeptFrame& kept : frames) AddKept(kept, &connections);
    connections.Finish();
    Require(connections.size() == 1, "it is one connection");
    std::array<std::vector<std::uint64_t>, 2> found;
    for (const host::WireRecord& pdu : connections.at(0).pdus) {
      found[pdu.direction].push_back(pdu.length);
    }
    for (std::uint32_t side : {0u, 1u}) {
      Require(found[side] == PduLengths(streams_[side]),
              "all PDUs are found, and no others");
    }
  }

  static std::vector<std::uint64_t> PduLengths(const Bytes& stream) {
    constexpr std::uint64_t kMostOfAnUnknownPdu = 6 + (1u << 20);
    std::vector<std::uint64_t> lengths;
    for (std::size_t at = 0; stream.size() - at >= 6;) {
      const std::uint64_t length = PduBytes(stream, at);
      const bool known = stream[at] >= 1 && stream[at] <= 7;
      if (!known && (lengths.empty() || length > kMostOfAnUnknownPdu)) break;
      if (length > stream.size() - at) break;
      lengths.push_back(length);
      at += static_cast<std::size_t>(length);
    }
    return lengths;
  }

  FuzzInput& input_;
  std::vector<Segment> segments_;
  std::array<std::uint32_t, 2> next_{};
  std::array<Bytes, 2> streams_;
  std::size_t segment_bytes_ = 1448;
  std::uint8_t pair_ = 0;
  unsigned flags_ = 0;
  std::uint32_t direction_ = 0;
  unsigned swaps_ = 0;
  bool harmless_ = true;
};

std::uint64_t Run(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  switch (input.Byte()) {
    case 0:
      return RunFile(input);
    case 2:
      return RunFiles(input);
    default:
      return Conversation(input).Run();
  }
}

}  // namespace
}  // namespace dicom::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  if (size > 1 << 14) return 0;
  const std::uint64_t seen = dicom::fuzz::Run(data, size);
  // Every eighth input runs twice, and must look the same.
  if (size % 8 == 0) {
    dicom::fuzz::Require(dicom::fuzz::Run(data, size) == seen,
                         "two runs are the same");
  }
  return 0;
}
