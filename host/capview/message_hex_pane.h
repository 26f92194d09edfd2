#ifndef HOST_CAPVIEW_MESSAGE_HEX_PANE_H_
#define HOST_CAPVIEW_MESSAGE_HEX_PANE_H_

#include <windows.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "host/capview/hex_pane.h"
#include "host/rows/message_outline.h"

namespace host {

// The bytes of a message of any length: a piece of them at a time, the one
// around the bytes that are marked. Bytes count as MessageOutline counts them.
// What reads bytes throws Failure when the capture does not give them back.
class MessageHexPane {
 public:
  // Throws Failure.
  MessageHexPane(HWND parent, int id);

  HWND Handle() const { return hex_.Handle(); }
  void SetFonts(const UiFonts& fonts) { hex_.SetFonts(fonts); }

  // From the first byte on; null shows nothing. The outline must stay until
  // another is shown.
  void Show(MessageOutline* outline);
  // Shows what is around the bytes if it is not in the dump; empty marks none.
  void Mark(const std::optional<DataRange>& bytes);
  // "38 2E 31", of the first mebibyte.
  std::wstring Digits(const DataRange& bytes) const;

  // Told which byte was clicked.
  void OnByte(std::function<void(std::uint64_t)> handler) {
    on_byte_ = std::move(handler);
  }

 private:
  void ShowFrom(std::uint64_t begin);

  HexPane hex_;
  MessageOutline* outline_ = nullptr;
  std::uint64_t begin_ = 0;  // of the piece
  std::uint64_t end_ = 0;
  std::function<void(std::uint64_t)> on_byte_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_MESSAGE_HEX_PANE_H_
