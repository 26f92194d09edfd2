#ifndef HOST_CAPVIEW_CONNECTION_CHOOSER_H_
#define HOST_CAPVIEW_CONNECTION_CHOOSER_H_

#include <windows.h>

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "host/capview/capture_document.h"
#include "host/capview/ui_fonts.h"
#include "host/rows/connection_text.h"

namespace host {

// A drop-down list of the capture's connections: those with DICOM first. It
// draws its items itself, so that their texts are always those of the moment.
// Connections are named by their index in the document.
class ConnectionChooser {
 public:
  // The document must outlive the chooser. Throws Failure.
  ConnectionChooser(HWND parent, int id, const CaptureDocument& document);

  // The drop-down list; the parent's.
  HWND Handle() const { return window_; }
  void SetFonts(const UiFonts& fonts);

  // Connections have come, or one that is shown was chosen.
  void Update();
  // With the list open, for a choice by the keys.
  void Focus();

  // Told which connection the person has chosen, also when it is the same.
  void OnChosen(std::function<void(std::size_t)> handler) {
    on_chosen_ = std::move(handler);
  }
  // What the control tells its parent: the code of WM_COMMAND, and WM_DRAWITEM.
  void Notify(int code);
  // A connection in which a message failed is red.
  void Draw(const DRAWITEMSTRUCT& item) const;

 private:
  // Of the columns, in pixels.
  using Widths = std::array<int, std::tuple_size_v<ConnectionColumns>>;

  // All connections, those with DICOM first, otherwise as the capture has them.
  std::vector<std::size_t> Order() const;
  // The item of the connection that is shown.
  std::optional<std::size_t> ChosenItem() const;
  ConnectionColumns Texts(std::size_t connection) const;
  // How wide each column's longest text is, among the first items.
  Widths Measure() const;
  // `needed_`, or less of the longest columns where `width` is too small.
  Widths WidthsIn(int width) const;
  void DrawColumns(const DRAWITEMSTRUCT& item) const;

  const CaptureDocument& document_;
  HWND window_;
  std::vector<std::size_t> items_;  // the connection of each
  Widths needed_{};
  std::function<void(std::size_t)> on_chosen_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_CONNECTION_CHOOSER_H_
