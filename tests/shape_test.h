#ifndef TESTS_SHAPE_TEST_H_
#define TESTS_SHAPE_TEST_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <string>

#include "plugin/exports.h"
#include "tests/bytes.h"
#include "tests/recorders.h"
#include "tests/test_dictionary.h"
#include "tests/test_host.h"

namespace dicom::testing {

// Whole runs take hours of what the tests take a part of, and check the cost;
// they are for a build without sanitizers.
inline bool RunsWhole() { return std::getenv("WHOLE_SHAPES") != nullptr; }

// What one reading may cost: 100 ms and 64 MB for each MB of the capture, and
// once more for whatever its size is.
class CostLimit {
 public:
  explicit CostLimit(std::size_t bytes)
      : megabytes_(static_cast<double>(bytes) / 1e6) {
    if (RunsWhole()) std::ofstream("/proc/self/clear_refs") << 5;  // the peak
  }
  CostLimit(const CostLimit&) = delete;
  CostLimit& operator=(const CostLimit&) = delete;
  ~CostLimit() {
    if (!RunsWhole()) return;
    const double milliseconds =
        1e3 * static_cast<double>(std::clock() - start_) / CLOCKS_PER_SEC;
    const double memory = PeakMegabytes();
    EXPECT_LE(milliseconds, 100 * (1 + megabytes_));
    EXPECT_LE(memory, 64 * (1 + megabytes_));
    const double size = std::max(megabytes_, 1.0);
    WorstTime() = std::max(WorstTime(), milliseconds / size);
    WorstMemory() = std::max(WorstMemory(), memory / size);
  }

  // For each MB, and for each capture below 1 MB.
  static double& WorstTime() {
    static double worst = 0;
    return worst;
  }
  static double& WorstMemory() {
    static double worst = 0;
    return worst;
  }

 private:
  static double PeakMegabytes() {
    std::ifstream status("/proc/self/status");
    std::string word;
    double kilobytes = 0;
    while (status >> word && word != "VmHWM:") {
    }
    status >> kilobytes;
    return kilobytes / 1e3;
  }

  double megabytes_;
  std::clock_t start_ = std::clock();
};

// Reads and shows captures as an analyzer does: every call ends, what it reads
// and shows stays in proportion to the capture, and all memory of the lines
// comes back.
class CaptureShapeTest : public ::testing::Test {
 protected:
  CaptureShapeTest() {
    WriteFileBytes(kDataDicPath, "0008,0016;SOP Class UID;UI\n");
    WriteFileBytes(kUidDicPath, "1.2;A UID\n");
    EXPECT_TRUE(LoadModule());
  }
  ~CaptureShapeTest() override {
    UnloadModule();
    if (RunsWhole()) {
      std::printf("at worst %.1f ms and %.1f MB for each MB\n",
                  CostLimit::WorstTime(), CostLimit::WorstMemory());
    }
  }

  std::uint32_t List(std::uint32_t view, std::uint32_t live) {
    std::array<PacketListRow, DICOM_ROWS_PER_CALL> rows;
    std::int32_t first = 0;
    std::uint32_t count = DICOM_ROWS_PER_CALL;
    std::uint32_t first_available = 0;
    return GetDicomPacketList(host_.Window(), rows.data(), &first, &count,
                              &first_available, &last_, view, live) &
           0xFFFF;
  }

  void Show(std::int32_t row, std::uint32_t view) {
    EXPECT_EQ(RaisedText([&] {
                DisplayDicomPacket(host_.Window(), host_.Tree(), row,
                                   host_.Images(), host_.Hex(), view);
              }),
              "");
    EXPECT_LE(host_.TreeCount(), 8 * CaptureBytes() + 64);
  }

  std::size_t CaptureBytes() const {
    std::size_t bytes = 0;
    for (const CapturedPacket& packet : host_.packets) {
      bytes += packet.tcp_bytes.size();
    }
    return bytes;
  }

  // A live pass, then a whole one, then the first and the last row of each
  // view.
  void ReadAndShow() {
    const CostLimit limit(CaptureBytes());
    MessageBoxRecorder recorder;
    host_.TakeRequests();
    RefreshDicomDecode(host_.Window());
    List(0, 1);
    std::size_t calls = 0;
    while (List(0, 0) == DICOM_LIST_CALL_AGAIN) {
      ASSERT_LE(++calls, host_.packets.size());
    }
    // A few messages to the host for each packet, and a few bytes for PDVs.
    EXPECT_LE(host_.TakeRequests().size(), 60 * CaptureBytes() + 2000);
    for (std::uint32_t view : {0u, 1u}) {
      Show(0, view);
      Show(0x7FFFFFFF, view);
    }
    ClearDicomDisplay(0, host_.Tree(), host_.Hex());
    EXPECT_EQ(GlobalBlocks(), blocks_before_);
  }

  // The bytes in segments of `size` bytes, each acknowledged.
  void ReadAndShow(const Bytes& stream, std::size_t size = 1448) {
    Conversation talk(0xFFFFFF80);  // these numbers wrap soon
    talk.Open();
    for (std::size_t at = 0; at < stream.size(); at += size) {
      talk.Send(0, stream.Part(at, size)).Acknowledge(1);
    }
    host_.packets = talk.Packets();
    ReadAndShow();
  }

  // With two packets of `size` bytes that claim a header of `words` words.
  void ReadOddPackets(std::uint8_t words, std::size_t size) {
    SCOPED_TRACE(words * 100 + static_cast<int>(size));
    Conversation talk;
    talk.Open().Send(0, Repeat(4, 40)).Send(1, Repeat(4, 40));
    host_.packets = talk.Packets();
    for (std::size_t i = 3; i < 5; ++i) {
      Bytes& bytes = host_.packets[i].tcp_bytes;
      bytes[12] = static_cast<std::uint8_t>(words << 4);
      bytes.resize(size);
    }
    ReadAndShow();
  }

  const std::size_t blocks_before_ = GlobalBlocks();
  TestHost host_;
  std::uint32_t last_ = 0;
};

}  // namespace dicom::testing

#endif  // TESTS_SHAPE_TEST_H_
