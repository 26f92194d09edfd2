#include "tests/test_module.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "plugin/exports.h"
#include "tests/recorders.h"
#include "tests/test_dictionary.h"

namespace dicom::testing {
namespace {

constexpr std::uint8_t kUnwritten = 0xEE;

void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "broken: %s\n", what);
  std::abort();
}

}  // namespace

LoadedModule::LoadedModule() {
  WriteFileBytes(kDataDicPath,
                 "0000,0100;Command Field;US\n0008,0016;SOP Class UID;UI\n"
                 "0008,0080;Institution Name;LO\n");
  WriteFileBytes(kUidDicPath, "1.2;A UID\n1.2.840.10008.1.1;Verification\n");
  Require(LoadModule(), "the module loads");
}

LoadedModule::~LoadedModule() { UnloadModule(); }

void LoadedModule::Reload() {
  UnloadModule();
  Require(LoadModule(), "the module loads again");
}

std::size_t ListCall::Written() const {
  std::size_t count = 0;
  while (count < rows.size() && rows[count].number != 0xEEEEEEEE) ++count;
  return count;
}

std::string ListCall::Rows() const {
  std::string text;
  for (std::size_t i = 0; i < Written(); ++i) {
    const PacketListRow& row = rows[i];
    text += std::to_string(row.number) + " " + std::to_string(row.direction) +
            " " + std::to_string(row.length) + " " + row.summary + "|" +
            row.detail + "\n";
    if (row.reserved1 != 0 || row.reserved2 != 0 || row.reserved3 != 0) {
      text += "what is reserved is not 0\n";
    }
  }
  return text;
}

ListCall List(const TestHost& host, std::uint32_t view, std::uint32_t live,
              std::int32_t first, std::uint32_t count) {
  ListCall call;
  call.first = first;
  call.count = count;
  std::memset(call.rows.data(), kUnwritten, sizeof(call.rows));
  call.word = GetDicomPacketList(host.Window(), call.rows.data(), &call.first,
                                 &call.count, &call.first_available,
                                 &call.last_available, view, live);
  return call;
}

ListCall ListAll(const TestHost& host, std::uint32_t view) {
  for (std::size_t i = 0; i <= host.packets.size(); ++i) {
    const ListCall call = List(host, view, kStopped);
    if (call.Code() != DICOM_LIST_CALL_AGAIN) return call;
  }
  Require(false, "the list comes to an end");
  return {};
}

std::string Show(const TestHost& host, std::int32_t index, std::uint32_t view) {
  return RaisedText([&] {
    DisplayDicomPacket(host.Window(), host.Tree(), index, host.Images(),
                       host.Hex(), view);
  });
}

void Clear(const TestHost& host) {
  ClearDicomDisplay(0, host.Tree(), host.Hex());
}

}  // namespace dicom::testing
