#ifndef HOST_CAPVIEW_CONNECTION_CHOOSER_H_
#define HOST_CAPVIEW_CONNECTION_CHOOSER_H_

#include <windows.h>

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

#include "host/capview/capture_document.h"
#include "host/rows/connection_text.h"

namespace host {

// A drop-down list of the capture's connections: those with DICOM first. It
// draws its items itself, so that their texts are always those of the moment.
class ConnectionChooser {
 public:
  ConnectionChooser(HWND parent, int id, const CaptureDocument& document);

  HWND Handle() const { return window_; }
  void SetFont(HFONT font, int item_height);

  // Connections have come, or one that is shown was chosen.
  void Update();
  // The items' connections, in their order.
  const std::vector<std::size_t>& Connections() const { return items_; }
  // What an item says, with two blanks between its parts; UTF-8.
  std::string Text(std::size_t connection) const;

  void OnChosen(std::function<void(std::size_t)> handler) {
    on_chosen_ = std::move(handler);
  }
  void Notify(int code);
  void Draw(const DRAWITEMSTRUCT& item) const;

 private:
  // Of the columns, in pixels.
  using Widths = std::array<int, std::tuple_size_v<ConnectionColumns>>;

  std::vector<std::size_t> Order() const;
  ConnectionColumns Texts(std::size_t connection) const;
  void Measure();
  Widths WidthsIn(int width) const;

  const CaptureDocument& document_;
  HWND window_ = nullptr;
  std::vector<std::size_t> items_;
  Widths needed_{};
  std::function<void(std::size_t)> on_chosen_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_CONNECTION_CHOOSER_H_
