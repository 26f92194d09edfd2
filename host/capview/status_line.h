#ifndef HOST_CAPVIEW_STATUS_LINE_H_
#define HOST_CAPVIEW_STATUS_LINE_H_

#include <windows.h>

#include <optional>
#include <string>

namespace host {

// The line at the bottom: one sentence, a progress bar while something is being
// read, how many rows are shown, and which bytes are marked.
class StatusLine {
 public:
  explicit StatusLine(HWND parent);

  HWND Handle() const { return window_; }
  int Height() const;
  void SetFont(HFONT font);
  // After the parent's size has changed.
  void Place(unsigned dpi);

  void SetText(const std::string& utf8) { SetPart(0, utf8); }
  void SetRows(const std::string& utf8) { SetPart(2, utf8); }
  void SetBytes(const std::string& utf8) { SetPart(3, utf8); }
  // Nothing hides the bar.
  void SetProgress(std::optional<unsigned> percent);
  std::string Text() const { return shown_[0]; }
  std::string Bytes() const { return shown_[3]; }
  std::string Rows() const { return shown_[2]; }

 private:
  static constexpr int kParts = 4;
  void SetPart(int part, const std::string& utf8);
  void PlaceParts();

  HWND window_ = nullptr;
  HWND bar_ = nullptr;
  std::string shown_[kParts];
  std::optional<unsigned> percent_;
  unsigned dpi_ = 96;
};

}  // namespace host

#endif  // HOST_CAPVIEW_STATUS_LINE_H_
