#ifndef TESTS_TEST_MODULE_H_
#define TESTS_TEST_MODULE_H_

#include <array>
#include <cstdint>
#include <string>

#include "interface/host_interface.h"
#include "tests/test_host.h"

// How tests and fuzz targets load the module, list and show.
namespace dicom::testing {

constexpr std::uint32_t kPduView = 0;
constexpr std::uint32_t kMessageView = 1;
constexpr std::uint32_t kStopped = 0;
constexpr std::uint32_t kLive = 1;

// The module with a small dictionary, while it lives.
class LoadedModule {
 public:
  LoadedModule();
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;
  ~LoadedModule();

  // As a host does when a failure has left the display.
  void Reload();
};

// One list call: what goes in, and what comes out.
struct ListCall {
  std::int32_t first = 0;
  std::uint32_t count = DICOM_ROWS_PER_CALL;
  std::uint32_t first_available = 77;
  std::uint32_t last_available = 77;
  // One more than a call may write; the module has to fill every byte that
  // counts, since there are others in them before.
  std::array<PacketListRow, DICOM_ROWS_PER_CALL + 1> rows;
  std::uint32_t word = 0;

  std::uint32_t Code() const { return word & 0xFFFF; }
  std::uint32_t Progress() const { return word >> 16; }
  std::size_t Written() const;  // rows
  // "number direction length summary|detail\n" of those.
  std::string Rows() const;
};

ListCall List(const TestHost& host, std::uint32_t view, std::uint32_t live,
              std::int32_t first = 0,
              std::uint32_t count = DICOM_ROWS_PER_CALL);

// Calls until the whole capture is read, as a host does; the last call. Ends
// the process when the calls never end.
ListCall ListAll(const TestHost& host, std::uint32_t view);

// Shows a row; the text of what left the display, or nothing.
std::string Show(const TestHost& host, std::int32_t index, std::uint32_t view);

// Empties the tree and the hex window.
void Clear(const TestHost& host);

}  // namespace dicom::testing

#endif  // TESTS_TEST_MODULE_H_
