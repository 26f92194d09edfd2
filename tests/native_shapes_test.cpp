// Shapes that go through this machine's own files and threads.
#include <pthread.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "host/streams/capture_loader.h"
#include "interface/host_interface.h"
#include "tests/memory_file.h"
#include "tests/shape_test.h"
#include "tree/tree_lines.h"

namespace dicom::testing {
namespace {

class SampleShapeTest : public CaptureShapeTest {
 protected:
  // Through the reference host, with both ways of handing over.
  void ReadFile(const Bytes& bytes) {
    MemoryFile file;
    file.Append(bytes);
    for (host::HandOver hand_over :
         {host::HandOver::kCleanStreams, host::HandOver::kAsCaptured}) {
      try {
        host::CaptureLoader loader(file.Path(), {.hand_over = hand_over});
        loader.Read([] { return false; });
        for (const auto& connection : loader.connections().Take()) {
          Read(*connection.feed);
        }
      } catch (const host::CaptureError&) {
      }
    }
  }

  void Read(const host::PacketFeed& feed) {
    host_.packets.resize(feed.PacketCount());
    for (std::uint32_t i = 0; i < feed.PacketCount(); ++i) {
      CapturedPacket& packet = host_.packets[i];
      packet.tcp_bytes.resize(DICOM_PACKET_BYTES);
      const host::CopiedPacket copied =
          feed.CopyPacket(i, host::PacketRoom(packet.tcp_bytes));
      packet.direction = copied.direction;
      packet.tcp_bytes.resize(copied.bytes);
    }
    ReadAndShow();
  }
};

// A whole run takes every byte, the others a few hundred of all samples.
TEST_F(SampleShapeTest, CutAtAnyByteAndWithAnyByteChanged) {
  std::size_t next = 0;
  for (const auto& entry : std::filesystem::directory_iterator(SAMPLES_DIR)) {
    if (!entry.path().extension().string().starts_with(".pcap")) continue;
    SCOPED_TRACE(entry.path());
    const std::string text = FileBytes(entry.path());
    const Bytes whole(text.begin(), text.end());
    const std::size_t step = RunsWhole() ? 1 : 1 + whole.size() / 20;
    for (std::size_t at = next++ % step; at < whole.size(); at += step) {
      SCOPED_TRACE(at);
      ReadFile(whole.First(at));
      for (unsigned value : {0x00u, 0x01u, 0x7Fu, 0x80u, 0xFFu}) {
        if (!RunsWhole() && (at + value) % 2 != 0) continue;
        ReadFile(whole.Patched(at, {static_cast<std::uint8_t>(value)}));
      }
      ASSERT_FALSE(HasFailure());
    }
  }
  EXPECT_NE(next, 0u);
}

TEST_F(CaptureShapeTest, AnyDataOffsetAndEveryPacketLength) {
  for (std::uint8_t words = 0; words < 16; ++words) {
    for (std::size_t size = 0; size <= 60; ++size) ReadOddPackets(words, size);
  }
}

// Runs `action` where there is little room for recursion.
void WithStackOfOneMegabyte(std::function<void()> action) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, std::size_t{1} << 20);
  pthread_t thread;
  const auto run = [](void* raw) -> void* {
    (*static_cast<std::function<void()>*>(raw))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &action), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

TEST(TreeShapeTest, AMillionSiblingsAndAsDeepAsTheyAreWide) {
  const int count = RunsWhole() ? 1'000'000 : 30'000;
  WithStackOfOneMegabyte([count] {
    const std::size_t before = GlobalBlocks();
    TestHost host;
    for (bool deep : {false, true}) {
      HTREEITEM parent = nullptr;
      for (int i = 0; i < count; ++i) {
        const HTREEITEM item =
            InsertTreeLine({host.Window(), host.Tree(), nullptr}, parent,
                           "line", 5, MakeByteRange(1, 2, 3));
        if (deep) parent = item;
      }
      EXPECT_EQ(host.TreeCount(), static_cast<std::uint32_t>(count));
      ClearDicomDisplay(0, host.Tree(), host.Hex());
      EXPECT_EQ(host.TreeCount(), 0u);
      EXPECT_EQ(GlobalBlocks(), before);
    }
  });
}

}  // namespace
}  // namespace dicom::testing
