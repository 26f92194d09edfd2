#ifndef TESTS_TEST_HOST_H_
#define TESTS_TEST_HOST_H_

#include <windows.h>
#include <commctrl.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "interface/host_interface.h"
#include "tests/bytes.h"

namespace dicom::testing {

// What TreeText() shows besides depth, range and text; add them up.
enum TreeColumns : unsigned {
  kPlainTree = 0,
  kSections = 1,   // "section=N": the record's section
  kImages = 2,     // "image=N", or "image=N/M" when the selected image differs
  kExpansion = 4,  // "expanded" or "collapsed", for items with children
};

// An analyzer of its own: one host window with its display state, which answers
// the module's packet messages from `packets`, a tree view and a hex window.
// Everything goes through Win32.
class TestHost {
 public:
  TestHost();
  TestHost(const TestHost&) = delete;
  TestHost& operator=(const TestHost&) = delete;
  ~TestHost();  // the tree's records are the module's to free: ClearTree first

  HWND Window() const { return window_; }
  HWND Tree() const { return tree_; }
  HWND Hex() const { return hex_; }

  // The capture, and how the host misbehaves with it. Tests change them at any
  // time.
  std::vector<CapturedPacket> packets;
  bool refuse_count = false;       // code 153
  bool refuse_next = false;        // code 151
  std::set<std::int32_t> refused;  // packets that 150 and 151 do not deliver
  // By 150 and by 151: asked, delivered.
  std::map<std::int32_t, std::int32_t> delivered_instead, next_instead;
  std::map<std::int32_t, std::uint32_t>
      claimed_bytes;  // instead of the packet's own size
  std::function<void(std::int32_t* count)> write_count;  // by 153
  std::function<void(WPARAM code, std::int32_t index)> before_answer;

  // "153 151:-1 150:0 ...": the codes received so far, with the index asked
  // for; forgets them.
  std::string TakeRequests();

  // `action` runs when the module (or anyone) lets this thread's messages run.
  void Post(std::function<void()> action);

  // One field of the display state, at its byte offset.
  template <class T>
  void SetState(std::size_t offset, T value) {
    std::memcpy(&state_[offset], &value, sizeof(value));
  }
  template <class T>
  T State(std::size_t offset) const {
    T value;
    std::memcpy(&value, &state_[offset], sizeof(value));
    return value;
  }
  // The host window's pointer to the display state becomes null.
  void DropState();

  // Entry n is image 100 + n.
  const std::uint32_t* Images() const { return images_.data(); }

  // Output modes. Lines go to the device context or file until StopOutput(),
  // which answers the saved file's contents.
  void StartPrinting(HDC dc, std::int32_t line_height,
                     std::int32_t lines_per_page);
  void StartSaving();
  std::string StopOutput();

  // The tree as lines "depth [offset+length] text\n", "[-]" for an item without
  // a record.
  std::string TreeText(unsigned columns = kPlainTree) const;
  std::uint32_t TreeCount() const;
  std::string HexText() const;

 private:
  static LRESULT CALLBACK WindowProcedure(HWND window, UINT message,
                                          WPARAM wparam, LPARAM lparam);
  LRESULT Answer(WPARAM code, LPARAM lparam);
  bool Deliver(std::int32_t asked, std::int32_t index,
               DicomPacketRecord* record);
  std::string ItemText(HTREEITEM item, unsigned depth, unsigned columns) const;
  HTREEITEM NextItem(WPARAM relation, HTREEITEM item) const;

  HWND window_;
  HWND tree_;
  HWND hex_;
  alignas(4) std::array<std::uint8_t, DICOM_STATE_SIZE> state_{};
  std::array<std::uint32_t, DICOM_IMAGE_TABLE_ENTRIES> images_;
  std::string requests_;
  std::deque<std::function<void()>> posted_;
  std::string saved_path_;
};

}  // namespace dicom::testing

#endif  // TESTS_TEST_HOST_H_
