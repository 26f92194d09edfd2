#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "host/capture/ip_fragments.h"
#include "host/streams/capture_loader.h"
#include "tests/wire_builder.h"

namespace host {
namespace {

using dicom::testing::Little32;

constexpr std::uint8_t kTcp = 6, kGre = 47;

// Where a piece stands in its packet.
struct Piece {
  std::uint32_t offset = 0;
  bool is_last = true;
};

Bytes Ipv4(std::uint32_t direction, std::uint16_t identification,
           std::uint8_t protocol, const Piece& piece, const Bytes& content) {
  const auto place = static_cast<std::uint16_t>(piece.offset / 8 +
                                                (piece.is_last ? 0 : 0x2000));
  const auto host = static_cast<std::uint8_t>(direction + 1);
  const auto other = static_cast<std::uint8_t>(2 - direction);
  return Bytes{0x45, 0} + Big16(20 + content.Length()) + Big16(identification) +
         Big16(place) + Bytes{64, protocol, 0, 0} + Bytes{192, 0, 2, host} +
         Bytes{192, 0, 2, other} + content;
}

Bytes Ipv6(std::uint32_t direction, std::uint32_t identification,
           const Piece& piece, const Bytes& content) {
  const auto host = static_cast<std::uint8_t>(direction + 1);
  const auto other = static_cast<std::uint8_t>(2 - direction);
  return Bytes{0x60, 0, 0, 0} + Big16(8 + content.Length()) + Bytes{44, 64} +
         Bytes(15, 0xFD) + Bytes{host} + Bytes(15, 0xFD) + Bytes{other} +
         Bytes{kTcp, 0} + Big16(piece.offset + (piece.is_last ? 0 : 1)) +
         Big32(identification) + content;
}

enum class Wrapping { kIpv4, kIpv6, kGre };

// The frames of one segment in fragments, the last one first, each twice.
std::vector<Bytes> Fragments(const Segment& segment, Wrapping wrapping,
                             std::uint16_t identification) {
  constexpr std::size_t kBytes = 64;
  const std::uint32_t direction = segment.direction;
  Bytes content = segment.Tcp();
  if (wrapping == Wrapping::kGre) {
    content = Bytes{0, 0, 8, 0} + Ipv4(direction, 0, kTcp, {}, content);
  }
  std::vector<Bytes> frames;
  for (std::size_t at = 0; at < content.size(); at += kBytes) {
    const Piece piece{static_cast<std::uint32_t>(at),
                      at + kBytes >= content.size()};
    const Bytes part = content.Part(at, kBytes);
    const std::uint8_t protocol = wrapping == Wrapping::kGre ? kGre : kTcp;
    const Bytes frame =
        wrapping == Wrapping::kIpv6
            ? Ipv6(direction, identification, piece, part)
            : Ipv4(direction, identification, protocol, piece, part);
    frames.insert(frames.begin(), 2, frame);
  }
  return frames;
}

class FragmentsTest : public ::testing::TestWithParam<Wrapping> {};

// Rows are those of the whole packets, and name all frames that they are from.
TEST_P(FragmentsTest, PutTogetherAreTheSegments) {
  Wire wire;
  wire.segment_bytes = 700;
  wire.Association();
  const auto path = std::filesystem::temp_directory_path() /
                    std::to_string(std::random_device()());
  std::ofstream file(path, std::ios::binary);
  const auto write = [&file](const Bytes& bytes) {
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
  };
  write(Little32(0xA1B2C3D4) + Bytes{2, 0, 4, 0} + Bytes(8, 0) +
        Little32(262144) + Little32(101));
  std::uint32_t frames = 0, identification = 0;
  std::vector<std::uint32_t> first;  // frame of each segment
  for (const Segment& segment : wire.segments) {
    first.push_back(frames + 1);
    ++identification;
    for (const Bytes& frame : Fragments(
             segment, GetParam(), static_cast<std::uint16_t>(identification))) {
      const Bytes size = Little32(frame.Length());
      write(Little32(1000 + ++frames) + Little32(0) + size + size + frame);
    }
  }
  file.close();
  {
    CaptureLoader loader(path, {});
    loader.Read([] { return false; });
    ASSERT_EQ(loader.connections().size(), 1u);
    const Connection& connection = loader.connections().at(0);
    std::string pdus;
    for (const WireRecord& pdu : connection.pdus) {
      pdus += std::to_string(pdu.direction) + " " + std::to_string(pdu.length) +
              "\n";
    }
    EXPECT_EQ(pdus, wire.pdus);
    EXPECT_TRUE(connection.notes.empty());
    EXPECT_TRUE(loader.Notes().empty());
    // The request is the fourth segment; the frames that repeat a fragment are
    // none of those that it is from.
    EXPECT_EQ(connection.pdus[0].first_frame, first[3]);
    EXPECT_EQ(connection.pdus[0].last_frame, first[4] - 2);
    EXPECT_EQ(connection.pdus[0].time, (1000 + first[4] - 2) * 1'000'000'000LL);
  }
  std::filesystem::remove(path);
}

INSTANTIATE_TEST_SUITE_P(Wrappings, FragmentsTest,
                         ::testing::Values(Wrapping::kIpv4, Wrapping::kIpv6,
                                           Wrapping::kGre));

// Adds fragments of packets that differ in their identification.
class Pieces {
 public:
  // What the packet holds when this completes it, else nothing.
  std::string Add(std::uint32_t identification, std::uint32_t offset,
                  const std::string& text, bool is_last = false,
                  std::size_t captured = 100) {
    const Bytes bytes = dicom::testing::Text(text.substr(0, captured));
    IpFragment fragment;
    fragment.packet.identification = identification;
    fragment.offset = offset;
    fragment.is_last = is_last;
    fragment.bytes = bytes;
    fragment.wire_length = static_cast<std::uint32_t>(text.size());
    const WholePacket* const whole =
        fragments.Add(fragment, ++frame, Nanoseconds{second} * 1'000'000'000);
    return whole == nullptr
               ? std::string()
               : std::string(whole->bytes.begin(), whole->bytes.end());
  }

  IpFragments fragments;
  std::uint32_t frame = 0;
  std::uint32_t second = 0;
};

TEST(IpFragmentsTest, TheFirstCopyOfAByteCounts) {
  Pieces pieces;
  EXPECT_EQ(pieces.Add(1, 8, "AAAAAAAA"), "");
  EXPECT_EQ(pieces.Add(1, 8, "AAAAAAAA"), "");  // the same once more
  EXPECT_EQ(pieces.fragments.overlaps(), 0u);
  EXPECT_EQ(pieces.Add(1, 4, "BBBBBBBBBBBBBBBB"), "");  // over both its ends
  EXPECT_EQ(pieces.Add(1, 60, "CCCC"), "");             // behind the end
  EXPECT_EQ(pieces.Add(1, 18, "DDDD", true), "");
  EXPECT_EQ(pieces.Add(1, 0, "EEEEEEEE"), "EEEEBBBBAAAAAAAABBBBDD");
  EXPECT_EQ(pieces.fragments.overlaps(), 3u);
  EXPECT_EQ(pieces.Add(1, 18, "DDDD", true), "");  // late once more
  EXPECT_EQ(pieces.fragments.left_out(), 0u);
  // The name is used again; of what a snap length cuts the rest is of no use.
  EXPECT_EQ(pieces.Add(1, 0, "12345678", false, 5), "");
  EXPECT_EQ(pieces.Add(1, 8, "9", true), "12345");
}

TEST(IpFragmentsTest, WhatNeverCompletesIsGivenUp) {
  Pieces pieces;
  pieces.Add(0, 0, "12345678");
  pieces.second = 31;
  EXPECT_EQ(pieces.Add(0, 8, "9", true), "");
  constexpr std::uint32_t kMany = 100'000;
  pieces.Add(1, 0, "12345678");
  for (std::uint32_t i = 2; i < kMany; ++i)
    pieces.Add(i, i % 64000, "ABCDEFGH");
  EXPECT_EQ(pieces.Add(1, 8, "9", true), "");  // too long ago: no room for it
  pieces.Add(kMany, 0, "12345678");
  EXPECT_EQ(pieces.Add(kMany, 8, "9", true), "123456789");
  EXPECT_EQ(pieces.fragments.left_out(), kMany + 2);
}

}  // namespace
}  // namespace host
