// How the reference host drives a module that fails in every way it can. The
// module is tests/faulty_module.cpp, beside this program.

#include <windows.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "host/module/guarded_call.h"
#include "host/module/module.h"
#include "host/module/module_session.h"
#include "host/text/failure.h"

namespace host {
namespace {

// 30 packets, every second one with payload.
class NumberedFeed final : public PacketFeed {
 public:
  std::uint32_t PacketCount() const override { return 30; }
  CopiedPacket CopyPacket(std::uint32_t number,
                          PacketRoom room) const override {
    std::fill_n(room.begin(), 20, std::uint8_t{0x50});
    room[20] = 1;
    return {20 + number % 2, 0};
  }
};

std::wstring ProgramFolder() {
  std::wstring path(MAX_PATH, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
  return path.substr(0, path.find_last_of(L'\\'));
}

std::wstring FaultyModule() {
  return ProgramFolder() + L"\\faulty\\faulty.dll";
}

class ModuleDrivingTest : public testing::Test {
 protected:
  void Begin(const char* faults, bool live) {
    SetEnvironmentVariableA("FAULT", faults);
    session_.reset();
    module_.reset();  // only one at a time sees the message boxes
    module_ = std::make_unique<Module>(FaultyModule());
    controls_ =
        std::make_unique<DecodeControls>(DecodeControls::HexWindow::kEdit);
    connection_.feed = std::make_unique<NumberedFeed>();
    connection_.live = live;
    session_ =
        std::make_unique<ModuleSession>(*module_, *controls_, connection_);
    session_->ReadLists(false);
  }
  ~ModuleDrivingTest() override {
    session_.reset();  // before what it stands on
    SetEnvironmentVariableA("FAULT", nullptr);
  }

  std::size_t Rows() { return session_->AllRows(ListKind::kPdus).size(); }
  std::string Notes() {
    std::string text;
    for (const std::string& note : session_->Notes()) text += note + "\n";
    return text;
  }

  Connection connection_;
  std::unique_ptr<Module> module_;
  std::unique_ptr<DecodeControls> controls_;
  std::unique_ptr<ModuleSession> session_;
};

void* Nowhere() {
  static volatile std::uintptr_t address = 8;
  return reinterpret_cast<void*>(address);
}

TEST(GuardedCallTest, EveryExceptionComesBackAsAText) {
  const std::pair<void (*)(), std::string> cases[] = {
      {[] {}, "returned"},
      {[] { OutputDebugStringA("no error"); }, "returned"},
      {[] { *static_cast<volatile int*>(Nowhere()) = 1; },
       "access violation at "},
      {[] {
         const char* text = "Out of Range";
         const auto argument = reinterpret_cast<ULONG_PTR>(text);
         RaiseException(DICOM_DECODE_EXCEPTION, 0, 1, &argument);
       },
       "Out of Range"},
      {[] {
         const ULONG_PTR nowhere = 5;
         RaiseException(DICOM_DECODE_EXCEPTION, 0, 1, &nowhere);
       },
       "a failure without a text"}};
  for (int round = 0; round < 3; ++round) {  // the frame leaves nothing behind
    for (const auto& [function, text] : cases) {
      const auto failure = Guarded([f = function] { f(); });
      EXPECT_EQ(failure ? failure->text.substr(0, text.size()) : "returned",
                text);
    }
  }
}

TEST(GuardedCallTest, HandlersInsideTheCallComeFirst) {
  std::string inner, caught;
  const auto outer = Guarded([&] {
    inner = Guarded([] { RaiseException(0xE0000001, 0, 0, nullptr); })->text;
    try {
      throw std::runtime_error("ours");
    } catch (const std::exception& error) {
      caught = error.what();
    }
  });
  EXPECT_FALSE(outer);
  EXPECT_EQ(inner.substr(0, 19), "exception E0000001h");
  EXPECT_EQ(caught, "ours");
}

TEST(ModuleTest, WhatCannotBeLoadedIsExplained) {
  const auto failure_of = [](const std::wstring& path) -> std::string {
    try {
      Module module(path);
    } catch (const Failure& failure) {
      return failure.what();
    }
    return "loaded";
  };
  const std::wstring copy = ProgramFolder() + L"\\faulty\\not_ours.dll";
  ASSERT_TRUE(
      CopyFileW(L"C:\\windows\\system32\\version.dll", copy.c_str(), 0));
  const std::pair<std::wstring, const char*> cases[] = {
      {L"no_such.dll", "There is no module at"},
      {ProgramFolder() + L"\\CTestTestfile.cmake",
       "is not a 32-bit Windows DLL"},
      {copy, "has no function GetDicomDllVersion"}};
  for (const auto& [path, reason] : cases) {
    const std::string failure = failure_of(path);
    EXPECT_NE(failure.find(reason), std::string::npos) << failure;
  }
  DeleteFileW(copy.c_str());
}

TEST_F(ModuleDrivingTest, AListIsReadToItsEndInBothWays) {
  for (const bool live : {false, true}) {
    Begin("", live);
    EXPECT_EQ(Rows(), 15U);
    EXPECT_EQ(Notes(), "");
  }
}

TEST_F(ModuleDrivingTest, ABadPlaceIsPassedAndAnotherEndsTheList) {
  const std::string box =
      "The module showed a message box: \"Out of Range\".\n";
  Begin("fail@7", false);
  EXPECT_EQ(Rows(), 14U);
  EXPECT_EQ(Notes(), box);
  Begin("fail@7 fail@9", false);
  EXPECT_EQ(Rows(), 3U);
  EXPECT_EQ(Notes(), box +
                         "The module cannot go on at packet 8 of 30 (Out of "
                         "Range): the lists end before it.\n");
}

TEST_F(ModuleDrivingTest, AModuleThatStandsStillOrCrashesEndsTheList) {
  Begin("stuck@11", true);
  EXPECT_EQ(Rows(), 5U);
  Begin("listcrash", true);
  EXPECT_EQ(Rows(), 0U);
  EXPECT_NE(Notes().find("access violation"), std::string::npos);
}

TEST_F(ModuleDrivingTest, TheTreeIsReadBackWhole) {
  Begin("", false);
  const DecodedRow row = session_->Decode({ListKind::kPdus, 0});
  std::string depths;
  for (const TreeLine& line : *row.tree) depths += std::to_string(line.depth);
  ASSERT_EQ(depths, "01210");
  EXPECT_EQ((*row.tree)[0].text, "Row \xE9\x80");
  EXPECT_EQ((*row.tree)[1].text.size(), 200'000U);
  EXPECT_EQ((*row.tree)[2].text, "deepest");
  ASSERT_TRUE((*row.tree)[2].bytes);
  EXPECT_EQ((*row.tree)[2].bytes->offset, 8U);
  EXPECT_EQ(row.hex, "0000  E9  \xE9\r\n");
  EXPECT_EQ(row.stopped, std::nullopt);
}

TEST_F(ModuleDrivingTest, AFailedDisplayKeepsItsLinesAndTheNextRowWorks) {
  Begin("raise@1 crash@2", true);
  const DecodedRow raised = session_->Decode({ListKind::kPdus, 1});
  EXPECT_EQ(raised.tree->size(), 2U);
  EXPECT_EQ(raised.stopped, "Out of Memory");
  const DecodedRow crashed = session_->Decode({ListKind::kMessages, 2});
  EXPECT_EQ(crashed.tree->size(), 2U);
  EXPECT_EQ(crashed.stopped->substr(0, 16), "access violation");
  EXPECT_EQ(session_->Decode({ListKind::kPdus, 3}).tree->size(), 5U);
  EXPECT_EQ(Rows(), 15U);
}

}  // namespace
}  // namespace host
