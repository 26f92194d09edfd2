#ifndef HOST_CAPVIEW_STATUS_LINE_H_
#define HOST_CAPVIEW_STATUS_LINE_H_

#include <windows.h>

#include <array>
#include <functional>
#include <optional>
#include <string>

#include "host/capview/ui_fonts.h"

namespace host {

// The line at the bottom: one sentence, a progress bar while something is being
// read, how many rows are shown, and which bytes are marked. Texts are UTF-8.
//
// The sentence is one that was said, and stays until there is a reason to take
// it back; otherwise the usual one, which is asked for whenever it is shown.
class StatusLine {
 public:
  // Throws Failure.
  explicit StatusLine(HWND parent);

  // In pixels.
  int Height() const;
  void SetFonts(const UiFonts& fonts);
  // Along the parent's lower edge; wanted after its size has changed.
  void Place();

  // Answers what there is to say when nothing was said.
  void OnSilence(std::function<std::string()> usual);
  // A whole sentence, of what the person asked for or of what went wrong.
  void Say(const std::string& sentence);
  // Takes back what was said.
  void Hush();
  // The usual sentence may have become another.
  void Refresh();

  // How many rows there are; empty while no capture is open. Which bytes are
  // marked.
  void SetRows(const std::string& text) { SetPart(kRowsPart, text); }
  void SetBytes(const std::string& text) { SetPart(kBytesPart, text); }
  // In per cent; empty hides the bar.
  void SetProgress(std::optional<unsigned> percent);

 private:
  enum Part : int { kSentencePart, kProgressPart, kRowsPart, kBytesPart };

  void SetPart(Part part, const std::string& text);
  // Gives each part the width that it needs now.
  void PlaceParts();

  HWND window_;
  HWND bar_;
  std::function<std::string()> usual_;
  bool said_ = false;
  std::array<std::string, 4> shown_;
  std::optional<unsigned> percent_;
  unsigned dpi_ = 96;
};

}  // namespace host

#endif  // HOST_CAPVIEW_STATUS_LINE_H_
