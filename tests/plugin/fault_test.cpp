// What the module does when the system or the host lets it down at any one
// step: it answers as always, nothing is left behind, and the next call works.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <new>
#include <string>
#include <utility>

#include "plugin/exports.h"
#include "tests/bytes.h"
#include "tests/recorders.h"
#include "tests/test_module.h"

namespace {

// The allocation that fails, counted down; 0: none does.
unsigned allocations_to_failure = 0;

void* AllocateOrFail(std::size_t size) {
  if (allocations_to_failure > 0 && --allocations_to_failure == 0) {
    throw std::bad_alloc();
  }
  if (void* const memory = std::malloc(size != 0 ? size : 1)) return memory;
  throw std::bad_alloc();
}

}  // namespace

// For the whole test program; outside these tests nothing fails.
void* operator new(std::size_t size) { return AllocateOrFail(size); }
void* operator new[](std::size_t size) { return AllocateOrFail(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return AllocateOrFail(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace dicom::testing {
namespace {

constexpr unsigned kMostSteps = 100000;

// Windows have memory when the module has none.
std::map<HWND, WNDPROC> window_procedures;

LRESULT CALLBACK WithMemory(HWND window, UINT message, WPARAM wparam,
                            LPARAM lparam) {
  const unsigned planned = std::exchange(allocations_to_failure, 0);
  const LRESULT answer = ::CallWindowProcA(window_procedures[window], window,
                                           message, wparam, lparam);
  allocations_to_failure = planned;
  return answer;
}

class FaultTest : public ::testing::Test {
 protected:
  FaultTest() {
    for (HWND window : {host_.Window(), host_.Tree(), host_.Hex()}) {
      window_procedures[window] = reinterpret_cast<WNDPROC>(::SetWindowLongA(
          window, GWL_WNDPROC, reinterpret_cast<LONG>(&WithMemory)));
    }
    Conversation talk;
    talk.Open()
        .Send(0, AssociateRequest(ProposedContext(1, "1.2.840.10008.1.1",
                                                  {"1.2.840.10008.1.2"})))
        .Send(1, AssociateAccept(AnsweredContext(1, 0, "1.2.840.10008.1.2")))
        .Send(0, PData(Pdv(1, kLastCommand, Command(0x0001, 1))));
    const Bytes uid = ImplicitElement(8, 0x16, Uid("1.2.840.10008.1.1"));
    const Bytes data = PData(Pdv(1, kLastData, uid + uid + uid));
    talk.Send(0, data.First(40)).Send(0, data.From(40)).Acknowledge(1);
    host_.packets = talk.Packets();
    // One comes early, so that the store for such is used.
    std::swap(host_.packets[5], host_.packets[6]);
    expected_ = Everything();
    EXPECT_NE(expected_.find("UID description: Verification"), expected_.npos);
  }

  ~FaultTest() override { Clear(); }

  // The `failing`th allocation in it fails; steps_left_ is then 0.
  std::string ShowFailing(std::uint32_t view, unsigned failing) {
    steps_left_ = 0;
    return RaisedText([&] {
      allocations_to_failure = failing;
      DisplayDicomPacket(host_.Window(), host_.Tree(), 1, host_.Images(),
                         host_.Hex(), view);
      steps_left_ = std::exchange(allocations_to_failure, 0);
    });
  }

  void Clear() { testing::Clear(host_); }

  // The rows, and the tree of the accept and of the message.
  std::string Everything() {
    std::string text = ListAll(host_, 0).Rows() + ListAll(host_, 1).Rows();
    for (std::uint32_t view : {0u, 1u}) {
      EXPECT_EQ(Show(host_, 1, view), "");
      text += host_.TreeText() + host_.HexText();
    }
    return text;
  }

  // After a fault the same calls give the same again; when the fault has ended
  // a display, after a reload.
  void ExpectAllIsWell(bool reload) {
    Clear();
    EXPECT_EQ(GlobalBlocks(), blocks_before_);
    RefreshDicomDecode(host_.Window());
    if (reload) module_.Reload();
    ASSERT_EQ(Everything(), expected_);
  }

  const std::size_t blocks_before_ = GlobalBlocks();
  LoadedModule module_;
  TestHost host_;
  std::string expected_;
  unsigned steps_left_ = 0;
};

TEST_F(FaultTest, ListSurvivesEveryFailedAllocation) {
  for (std::uint32_t view : {0u, 1u}) {
    unsigned step = 1;
    for (bool failed = true; failed; ++step) {
      SCOPED_TRACE(step);
      ASSERT_LT(step, kMostSteps);
      RefreshDicomDecode(host_.Window());
      MessageBoxRecorder recorder;
      std::array<PacketListRow, DICOM_ROWS_PER_CALL> rows;
      allocations_to_failure = step;
      const std::uint32_t word =
          GetDicomPacketList(host_.Window(), rows.data(), nullptr, nullptr,
                             nullptr, nullptr, view, 0);
      failed = std::exchange(allocations_to_failure, 0) == 0;
      // Reloaded each time, so it is the first failure: it is not shown.
      EXPECT_EQ(word & 0xFFFF, DICOM_LIST_UP_TO_DATE);
      EXPECT_TRUE(recorder.Boxes().empty());
      ExpectAllIsWell(true);
    }
    EXPECT_GT(step, 10u);
  }
}

TEST_F(FaultTest, DisplaySurvivesEveryFailedAllocation) {
  for (std::uint32_t view : {0u, 1u}) {
    unsigned step = 1;
    for (bool failed = true; failed; ++step) {
      SCOPED_TRACE(step);
      ASSERT_LT(step, kMostSteps);
      const std::string failure = ShowFailing(view, step);
      failed = steps_left_ == 0;
      ExpectAllIsWell(!failure.empty());
    }
    EXPECT_GT(step, 10u);
  }
}

TEST_F(FaultTest, ClearNeedsNoMemoryAndTheListNoBlocks) {
  allocations_to_failure = 1;
  FailGlobalAlloc(1);
  Clear();
  RefreshDicomDecode(host_.Window());
  EXPECT_EQ(std::exchange(allocations_to_failure, 0), 1u);
  ListAll(host_, kPduView);
  ListAll(host_, kMessageView);
  EXPECT_EQ(Show(host_, 1, kPduView), "");
  EXPECT_EQ(host_.HexText(), "");  // the block that failed is the dump's
  ExpectAllIsWell(false);
}

TEST_F(FaultTest, LoadFailsWithoutMemoryAndLeavesNothing) {
  UnloadModule();
  unsigned step = 1;
  for (bool loaded = false; !loaded; ++step) {
    ASSERT_LT(step, kMostSteps);
    allocations_to_failure = step;
    loaded = LoadModule();
    EXPECT_EQ(loaded, std::exchange(allocations_to_failure, 0) != 0);
  }
  ExpectAllIsWell(false);
}

TEST_F(FaultTest, EveryLineIsShownWithoutItsRecordWhenABlockFails) {
  for (std::uint32_t view : {0u, 1u}) {
    Show(host_, 1, view);
    const std::uint32_t lines = host_.TreeCount();
    const std::string whole = host_.TreeText();
    for (unsigned block = 1; block <= lines + 1; ++block) {
      SCOPED_TRACE(block);
      FailGlobalAlloc(block);
      EXPECT_EQ(Show(host_, 1, view), "");
      EXPECT_EQ(host_.TreeCount(), lines);
      // The first block is the dump's, the others are lines'.
      EXPECT_EQ(host_.HexText().empty(), block == 1);
      EXPECT_EQ(host_.TreeText() == whole, block == 1);
      Clear();
      EXPECT_EQ(GlobalBlocks(), blocks_before_);
    }
  }
  FailGlobalAlloc(0);
  ExpectAllIsWell(false);
}

TEST_F(FaultTest, HostMayRefuseAnyMessage) {
  const auto refuse = [this](unsigned message, bool from_then_on) {
    host_.before_answer = [this, message, from_then_on, seen = 0u](
                              WPARAM, std::int32_t) mutable {
      ++seen;
      const bool now = from_then_on ? seen >= message : seen == message;
      host_.refuse_count = host_.refuse_next = now;
      host_.refused.clear();
      for (int i = 0; now && i < 20; ++i) host_.refused.insert(i);
    };
  };
  const auto stop_refusing = [this] {
    host_.before_answer = nullptr;
    host_.refuse_count = host_.refuse_next = false;
    host_.refused.clear();
  };
  host_.TakeRequests();
  RefreshDicomDecode(host_.Window());
  ListAll(host_, kPduView);
  const std::string requests = host_.TakeRequests();
  const auto messages = static_cast<unsigned>(
      std::count(requests.begin(), requests.end(), ' ') + 1);
  EXPECT_GT(messages, 20u);
  for (unsigned step = 0; step < 2 * messages; ++step) {
    SCOPED_TRACE(step);
    const unsigned message = 1 + step / 2;
    const std::uint32_t view = step / 2 % 2;
    const bool from_then_on = step % 2 != 0;
    RefreshDicomDecode(host_.Window());
    refuse(message, from_then_on);
    EXPECT_EQ(List(host_, view, kStopped).Code(), message == 1 ? 0u : 1u);
    stop_refusing();
    ExpectAllIsWell(true);
    refuse(message, from_then_on);
    const std::string failure = Show(host_, 1, view);
    stop_refusing();
    ExpectAllIsWell(!failure.empty());
  }
}

}  // namespace
}  // namespace dicom::testing
