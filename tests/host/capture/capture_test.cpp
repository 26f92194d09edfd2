#include <gtest/gtest.h>
#include <zlib.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>

#include "host/capture/capture_reader.h"
#include "host/streams/capture_loader.h"
#include "tests/wire_builder.h"

namespace host {
namespace {

using dicom::testing::Little32;

Bytes RawIpFrame(const Segment& s) {
  const Bytes tcp = s.Tcp();
  const auto source = static_cast<std::uint8_t>(1 + s.direction);
  const auto destination = static_cast<std::uint8_t>(2 - s.direction);
  return Bytes{0x45, 0} + Big16(20 + tcp.Length()) +
         Bytes{0,   0, 0, 0,      64,  6, 0, 0,
               192, 0, 2, source, 192, 0, 2, destination} +
         tcp;
}

// A capture file of raw IP frames, one second apart from 1,700,000,000 on. Its
// name is its own, since tests may run beside others.
class CaptureFile {
 public:
  static constexpr std::uint32_t kFirstSecond = 1'700'000'000;

  explicit CaptureFile(const std::u8string& name = u8"host test.pcap")
      : path_(std::filesystem::temp_directory_path() /
              std::to_string(std::random_device()())) {
    path_ += name;
  }
  ~CaptureFile() { std::filesystem::remove(path_); }

  static Bytes Pcap(const std::vector<Segment>& segments,
                    std::uint32_t second = kFirstSecond) {
    Bytes file = Little32(0xA1B2C3D4) + Bytes{2, 0, 4, 0} + Bytes(8, 0) +
                 Little32(262144) + Little32(101);
    for (const Segment& s : segments) {
      const Bytes frame = RawIpFrame(s);
      const Bytes size = Little32(frame.Length());
      file += Little32(second++) + Little32(5) + size + size + frame;
    }
    return file;
  }

  static Bytes Pcapng(const std::vector<Segment>& segments,
                      std::uint32_t second = kFirstSecond) {
    Bytes file = Block(0x0A0D0D0A, Little32(0x1A2B3C4D) + Bytes{1, 0, 0, 0} +
                                       Bytes(8, 0xFF)) +
                 Block(1, Bytes{101, 0, 0, 0} + Little32(262144));
    std::uint64_t time = std::uint64_t{second} * 1'000'000 + 5;
    for (const Segment& s : segments) {
      Bytes frame = RawIpFrame(s);
      const Bytes size = Little32(frame.Length());
      frame.resize((frame.size() + 3) / 4 * 4);
      file += Block(6, Little32(0) +
                           Little32(static_cast<std::uint32_t>(time >> 32)) +
                           Little32(static_cast<std::uint32_t>(time)) + size +
                           size + frame);
      time += 1'000'000;
    }
    return file;
  }

  void Write(const Bytes& bytes) const {
    std::ofstream(path_, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
  }
  const std::filesystem::path& path() const { return path_; }

 private:
  static Bytes Block(std::uint32_t type, const Bytes& body) {
    const Bytes size = Little32(12 + body.Length());
    return Little32(type) + size + body + size;
  }

  std::filesystem::path path_;
};

Wire ShortWire() {
  Wire wire;
  wire.Begin();
  wire.Send(1, AssociateAccept({}));
  return wire;
}

TEST(CaptureReaderTest, ReadsBothFormatsWithNumbersAndTimes) {
  const Wire wire = ShortWire();
  CaptureFile file;
  for (const Bytes& bytes :
       {CaptureFile::Pcap(wire.segments), CaptureFile::Pcapng(wire.segments)}) {
    file.Write(bytes);
    CaptureReader reader(file.path(), "");
    for (std::uint32_t i = 0; i < wire.segments.size(); ++i) {
      const TcpFrame* const frame = reader.Next();
      ASSERT_TRUE(frame);
      EXPECT_EQ(frame->number, i + 1);
      EXPECT_EQ(
          frame->time,
          (Nanoseconds{CaptureFile::kFirstSecond} + i) * 1'000'000'000 + 5000);
      EXPECT_EQ(Bytes(frame->tcp.begin(), frame->tcp.end()),
                wire.segments[i].Tcp());
      EXPECT_EQ(frame->source, PeerOf(wire.segments[i].direction));
      EXPECT_EQ(frame->destination, PeerOf(1 - wire.segments[i].direction));
    }
    EXPECT_FALSE(reader.Next());
    EXPECT_TRUE(reader.Failures().empty());
  }
}

// What capture files may say about their frames, each in either byte order.
TEST(CaptureReaderTest, ReadsEveryKindOfRecord) {
  const Bytes frame = RawIpFrame(ShortWire().segments[0]);
  constexpr Nanoseconds kSecond = 1'000'000'000;
  constexpr Nanoseconds kTime = 1'700'000'000 * kSecond + 123'456'789;
  for (const bool big : {false, true}) {
    SCOPED_TRACE(big);
    const auto word = [big](std::uint64_t n) {
      const auto value = static_cast<std::uint32_t>(n);
      return big ? Big32(value) : Little32(value);
    };
    const auto block = [&word](std::uint32_t type, Bytes body) {
      body.resize((body.size() + 3) / 4 * 4);
      const Bytes size = word(12 + body.Length());
      return word(type) + size + body + size;
    };
    const auto half = [&word, big](std::uint32_t n) {
      return word(n).Part(big ? 2 : 0, 2);
    };
    const Bytes size = word(frame.Length());
    const Bytes seconds = word(kTime / kSecond);
    const Bytes pcap = word(0xA1B23C4D) + Bytes(16, 0) + word(101) + seconds +
                       word(kTime % kSecond) + size + size + frame;
    const Bytes long_headers = word(0xA1B2CD34) + Bytes(16, 0) + word(101) +
                               seconds + word(kTime % kSecond / 1000) + size +
                               size + Bytes(8, 0) + frame;
    const auto described = [&](std::uint32_t link, const Bytes& options) {
      return block(1, half(link) + half(0) + word(0) + options);
    };
    const auto time = [&word](std::uint64_t units) {
      return word(units >> 32) + word(units);
    };
    const Bytes pcapng =
        block(0x0A0D0D0A, word(0x1A2B3C4D) + half(1) + half(0) + Bytes(8, 0)) +
        described(101, half(9) + half(1) + Bytes{9, 0, 0, 0}) +
        described(105, {}) +
        described(101, half(9) + half(1) + Bytes{0x80 + 20, 0, 0, 0}) +
        block(0xBAD, Bytes(20, 0xFF)) +
        block(6, word(0) + time(kTime) + size + size + frame) +
        block(6, word(1) + time(kTime) + size + size + frame) +
        block(2, half(2) + half(0) + time(1'700'000'000ull << 20 | 1 << 19) +
                     size + size + frame) +
        block(3, size + frame);
    struct Case {
      Bytes file;
      std::vector<std::pair<std::uint32_t, Nanoseconds>> frames;
    };
    for (const Case& c : {Case{pcap, {{1, kTime}}},
                          Case{long_headers, {{1, kTime / 1000 * 1000}}},
                          Case{pcapng,
                               {{1, kTime},
                                {3, 1'700'000'000 * kSecond + kSecond / 2},
                                {4, 0}}}}) {
      CaptureFile file;
      file.Write(c.file);
      CaptureReader reader(file.path(), "tcp");
      for (const auto& [number, at] : c.frames) {
        const TcpFrame* const read = reader.Next();
        ASSERT_TRUE(read);
        EXPECT_EQ(read->number, number);
        EXPECT_EQ(read->time, at);
        Bytes again(read->tcp.size());
        reader.store()->Copy(read->stored, again);
        EXPECT_EQ(again, ShortWire().segments[0].Tcp());
      }
      EXPECT_FALSE(reader.Next());
      EXPECT_TRUE(reader.Failures().empty());
    }
  }
}

TEST(CaptureReaderTest, ReadsAFileOfAnyName) {
  CaptureFile file(u8"host test \u00E9\u4E2D.pcap");
  file.Write(CaptureFile::Pcap(ShortWire().segments));
  if (!std::filesystem::exists(file.path())) {
    GTEST_SKIP() << "this file system cannot write the name";
  }
  EXPECT_TRUE(CaptureReader(file.path(), "").Next());
}

TEST(CaptureReaderTest, FilteredFramesKeepTheirNumbers) {
  CaptureFile file;
  file.Write(CaptureFile::Pcap(ShortWire().segments));
  CaptureReader reader(file.path(), "src host 192.0.2.2");
  for (const std::uint32_t number : {2u, 5u}) {
    const TcpFrame* const frame = reader.Next();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->number, number);
  }
}

// A file that is still being written is the same as one that breaks off.
TEST(CaptureReaderTest, EveryPrefixGivesTheWholeFramesAndOneSentence) {
  const Wire wire = ShortWire();
  CaptureFile file;
  for (const Bytes& bytes :
       {CaptureFile::Pcap(wire.segments), CaptureFile::Pcapng(wire.segments)}) {
    for (std::size_t n = 48; n < bytes.size(); n += 3) {
      SCOPED_TRACE(n);
      file.Write(bytes.First(n));
      CaptureReader reader(file.path(), "");
      std::size_t frames = 0;
      while (reader.Next()) ++frames;
      EXPECT_LT(frames, wire.segments.size());
      for (const std::string& failure : reader.Failures()) {
        EXPECT_TRUE(failure.ends_with("what comes before is shown."));
      }
      file.Write(bytes);
      while (reader.Next()) ++frames;
      EXPECT_EQ(frames, wire.segments.size());
      EXPECT_TRUE(reader.Failures().empty());
    }
  }
}

Bytes Gzipped(const Bytes& bytes) {
  z_stream state{};
  deflateInit2(&state, 9, Z_DEFLATED, 16 + 15, 9, Z_DEFAULT_STRATEGY);
  Bytes packed(deflateBound(&state, bytes.Length()));
  state.next_in = const_cast<Bytef*>(bytes.data());
  state.avail_in = bytes.Length();
  state.next_out = packed.data();
  state.avail_out = packed.Length();
  EXPECT_EQ(deflate(&state, Z_FINISH), Z_STREAM_END);
  packed.resize(packed.size() - state.avail_out);
  deflateEnd(&state);
  return packed;
}

// In several members, whole and cut at each byte; and a bomb.
TEST(CaptureReaderTest, ReadsWhatGzipHasCompressed) {
  const Wire wire = ShortWire();
  const Bytes plain = CaptureFile::Pcap(wire.segments);
  const Bytes first = Gzipped(plain.First(100));
  const Bytes packed = first + Gzipped(plain.From(100)) + Bytes(3, 0);
  CaptureFile file;
  std::size_t frames_before = 0;
  for (std::size_t n = first.size(); n <= packed.size(); ++n) {
    SCOPED_TRACE(n);
    file.Write(packed.First(n));
    CaptureReader reader(file.path(), "");
    std::size_t frames = 0;
    while (const TcpFrame* frame = reader.Next()) {
      Bytes again(frame->tcp.size());
      reader.store()->Copy(frame->stored, again);
      EXPECT_EQ(again, wire.segments[frames++].Tcp());
    }
    EXPECT_GE(frames, frames_before);
    frames_before = frames;
    const bool whole = n + 3 >= packed.size();
    EXPECT_EQ(reader.Failures().empty(), whole);
  }
  EXPECT_EQ(frames_before, wire.segments.size());

  Bytes broken = packed;  // where the second part begins
  broken[first.size()] = 0x55;
  file.Write(broken);
  CaptureReader broken_reader(file.path(), "");
  while (broken_reader.Next()) {
  }
  EXPECT_FALSE(broken_reader.Failures().empty());

  file.Write(Gzipped(plain + Bytes(20'000'000, 0)));
  CaptureReader reader(file.path(), "", 1'000'000);
  for (std::size_t i = 0; i < wire.segments.size(); ++i) reader.Next();
  while (reader.Next()) {
  }
  ASSERT_EQ(reader.Failures().size(), 1u);
  // Sixteen zeros are a frame without bytes.
  const std::size_t room = 1'000'000 - plain.size();
  EXPECT_EQ(reader.Failures()[0],
            "The capture file is shown up to frame " +
                std::to_string(wire.segments.size() + room / 16) +
                ", since its bytes are kept in temporary files, which may hold "
                "1,000,000 bytes: decompress it into a file first, with gunzip "
                "-c, or let --max-temporary allow more.");
}

// A folder of its own for files of a ring.
class Folder {
 public:
  Folder()
      : path_(std::filesystem::temp_directory_path() /
              std::to_string(std::random_device()())) {
    std::filesystem::create_directories(path_ / "older");
  }
  ~Folder() { std::filesystem::remove_all(path_); }

  void Write(const std::string& name, const Bytes& bytes) const {
    std::ofstream(path_ / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
  }
  CaptureInputs Find(const std::vector<std::string>& names) const {
    std::vector<std::filesystem::path> paths;
    for (const std::string& name : names) paths.push_back(path_ / name);
    return FindCaptures(paths);
  }
  std::string Found(const std::vector<std::string>& names) const {
    const CaptureInputs inputs = Find(names);
    std::string text;
    for (const CaptureInput& input : inputs.files) {
      text += input.path.lexically_normal()
                  .lexically_relative(path_)
                  .generic_string() +
              (input.in_folder ? "+ " : " ");
    }
    return text + std::to_string(inputs.failures.size());
  }

 private:
  std::filesystem::path path_;
};

TEST(CaptureNamesTest, StandForFilesFoldersAndPatterns) {
  const Folder folder;
  for (const char* name : {"a1.pcap", "a2.pcap", "b.txt", "older/a0.pcap"}) {
    folder.Write(name, {});
  }
  EXPECT_EQ(folder.Found({"b.txt", "a2.pcap", "none.pcap"}),
            "b.txt a2.pcap none.pcap 0");
  EXPECT_EQ(folder.Found({"a?.pcap", "*2.p*"}), "a1.pcap a2.pcap 0");
  EXPECT_EQ(folder.Found({"*/a*.pcap", "c*"}), "older/a0.pcap 1");
  EXPECT_EQ(folder.Found({"a*", "."}),
            "a1.pcap a2.pcap b.txt+ older/a0.pcap+ 0");
}

// Files of three kinds in the wrong order, of which the second begins with the
// last two frames of the first: what both hold counts once, what the first
// itself holds twice stays twice.
TEST(CaptureSeriesTest, FilesFollowEachOtherInTheOrderOfTheirFirstFrames) {
  const std::vector<Segment> all = [] {
    Wire wire;
    wire.Association();
    return wire.segments;
  }();
  const auto part = [&all](std::size_t from, std::size_t to) {
    return std::vector(all.begin() + static_cast<std::ptrdiff_t>(from),
                       all.begin() + static_cast<std::ptrdiff_t>(to));
  };
  const std::uint32_t first = CaptureFile::kFirstSecond;
  Bytes one = CaptureFile::Pcap(part(0, 8));
  one += one.From(one.size() - RawIpFrame(all[7]).size() - 16);
  const Folder folder;
  folder.Write("c", one);
  folder.Write("b", CaptureFile::Pcapng(part(6, 14), first + 6));
  folder.Write("a",
               Gzipped(CaptureFile::Pcap(part(14, all.size()), first + 14)));
  folder.Write("other.txt", dicom::testing::Text("no capture.."));
  CaptureReader reader(folder.Find({"."}).files, "");
  std::string names;
  std::vector<std::size_t> order = {0, 1, 2, 3, 4, 5, 6, 7, 7};
  for (std::size_t i = 8; i < all.size(); ++i) order.push_back(i);
  for (const std::size_t i : order) {
    const TcpFrame* const frame = reader.Next();
    ASSERT_TRUE(frame) << i;
    Bytes again(frame->tcp.size());
    reader.store()->Copy(frame->stored, again);
    EXPECT_EQ(again, all[i].Tcp()) << i;
    if (i >= 5 && i < 16) names += reader.names()->Text(frame->number) + " ";
  }
  EXPECT_EQ(reader.Next(), nullptr);
  EXPECT_EQ(names, "c:6 c:7 c:8 c:9 b:3 b:4 b:5 b:6 b:7 b:8 a:1 a:2 ");
  EXPECT_TRUE(reader.Failures().empty());
  const auto notes = reader.Notes();
  ASSERT_EQ(notes.size(), 2u);
  EXPECT_NE(notes[0].find("other.txt"), std::string::npos);
  EXPECT_EQ(notes[1], "2 frames that two files both hold were taken once.");
}

TEST(CaptureSeriesTest, SaysWhatIsMissingAndWhatCannotBeRead) {
  Wire wire;
  wire.Begin();
  wire.Send(1, AssociateAccept({}));
  const std::size_t before = wire.segments.size();
  wire.SendRaw(0, PData(Pdv(kLastCommand, 1000)));
  const std::size_t behind = wire.segments.size();
  wire.Send(0, ReleaseRequest());
  const auto begin = wire.segments.begin();
  const Folder folder;
  folder.Write("1.pcap",
               CaptureFile::Pcap({begin, begin + static_cast<int>(before)}));
  folder.Write("3.pcap", CaptureFile::Pcap({begin + static_cast<int>(behind),
                                            wire.segments.end()},
                                           CaptureFile::kFirstSecond + 3600));
  folder.Write("cut.pcap", Little32(0xA1B2C3D4));
  CaptureLoader loader(folder.Find({"1.pcap", "cut.pcap", "*"}).files, {});
  loader.Read([] { return false; });
  EXPECT_EQ(loader.connections().size(), 1u);
  const auto notes = loader.Notes();
  ASSERT_EQ(notes.size(), 2u);
  EXPECT_NE(notes[0].find("cut.pcap (the file ends inside its header)"),
            std::string::npos);
  EXPECT_EQ(loader.Damage(), notes[0]);
  EXPECT_EQ(notes[1],
            "Between 1.pcap and 3.pcap packets are missing: 1 connection lacks "
            "1,012 bytes there; give the files between them as well, if there "
            "are any.");

  for (int i = 10; i < 32; ++i) {
    folder.Write(std::to_string(i) + ".pcap", Little32(0xA1B2C3D4));
  }
  CaptureLoader many(folder.Find({"*"}).files, {});
  many.Read([] { return false; });
  const auto told = many.Notes();
  ASSERT_EQ(told.size(), 22u);
  EXPECT_EQ(told[20], "The same goes for 3 more files.");
}

TEST(CaptureReaderTest, SaysWhyACaptureCannotBeRead) {
  CaptureFile file;
  EXPECT_THROW(CaptureReader(file.path(), ""), CaptureError);  // no file
  const Bytes empty = CaptureFile::Pcap({}),
              wireless = empty.Patched(20, {105});
  for (const Bytes& bytes : {dicom::testing::Text("no capture.."), wireless}) {
    file.Write(bytes);
    EXPECT_THROW(CaptureReader(file.path(), ""), CaptureError);
  }
  file.Write(dicom::testing::Text("GMBU, of which nobody knows more."));
  try {
    CaptureReader(file.path(), "");
    FAIL();
  } catch (const CaptureError& failure) {
    EXPECT_TRUE(std::string(failure.what())
                    .ends_with(" is a Network Monitor capture: editcap -F "
                               "pcapng IN OUT makes a capture of it that is "
                               "read here."));
  }
  file.Write(empty);
  EXPECT_THROW(CaptureReader(file.path(), "port port"), FilterError);
}

TEST(CaptureLoaderTest, TellsDamageAndFragmentsOfTheWholeCapture) {
  const Bytes file_bytes = CaptureFile::Pcap(ShortWire().segments);
  constexpr std::size_t kFlagsOfFirstFrame = 24 + 16 + 6;
  CaptureFile file;
  file.Write(file_bytes.Patched(kFlagsOfFirstFrame, {0x20, 0})
                 .First(file_bytes.size() - 1));
  CaptureLoader loader(file.path(), {});
  EXPECT_EQ(loader.Read([] { return false; }), CaptureLoader::State::kDone);
  EXPECT_EQ(loader.connections().at(0).captured_packets,
            ShortWire().segments.size() - 2);
  const std::vector<std::string> notes = loader.Notes();
  ASSERT_EQ(notes.size(), 2u);
  EXPECT_EQ(notes[0], loader.Damage());
  EXPECT_EQ(notes[1],
            "1 IP fragment was left out, since others of the same packet are "
            "not in the capture; what TCP sent in it counts as lost.");
}

// Bytes of two files and such as are in none, small and large windows, in and
// out of order.
TEST(ByteStoreTest, ReadsAllBytesWhereverTheyAre) {
  constexpr std::uint32_t kPieces = 72;
  Bytes piece(350'000);
  const auto fill = [&piece](std::uint32_t index) {
    for (std::uint32_t i = 0; i < piece.size(); i += 4) {
      const std::uint32_t word = (index * 350'000 + i) * 2654435761u;
      std::memcpy(piece.data() + i, &word, sizeof word);
    }
  };
  ByteStore store;
  std::array<CaptureFile, 2> files;
  std::vector<ByteStore::Offset> offsets(kPieces);
  for (const std::uint32_t kind : {0u, 1u, 2u}) {
    Bytes content;
    for (std::uint32_t i = kind; i < kPieces; i += 3) {
      fill(i);
      offsets[i] = kind == 2 ? store.Append(piece) : content.size();
      if (kind != 2) content += piece;
    }
    if (kind == 2) continue;
    files[kind].Write(content);
    const ByteStore::Offset begin = store.AddFile(
        std::make_shared<FileBytes>(SystemFile::Open(files[kind].path()).file));
    for (std::uint32_t i = kind; i < kPieces; i += 3) offsets[i] += begin;
  }
  for (const std::uint32_t step : {1u, 7u}) {
    for (std::uint32_t i = 0; i < kPieces; ++i) {
      const std::uint32_t index = i * step % kPieces;
      fill(index);
      for (std::size_t at = 0; at < piece.size(); at += 35'000) {
        const Bytes part = piece.Part(at, 16'000);
        Bytes copy(part.size());
        store.Copy(offsets[index] + at, copy);
        ASSERT_EQ(copy, part) << index << " " << at;
        ASSERT_TRUE(store.Equal(offsets[index] + at, part));
      }
    }
  }
  files[0].Write({});  // it shrinks
  Bytes copy(16'000);
  EXPECT_THROW(store.Copy(offsets[0], copy), Failure);
}

}  // namespace
}  // namespace host
