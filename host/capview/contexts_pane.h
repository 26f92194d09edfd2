#ifndef HOST_CAPVIEW_CONTEXTS_PANE_H_
#define HOST_CAPVIEW_CONTEXTS_PANE_H_

#include <windows.h>

#include <optional>
#include <string>
#include <utility>

#include "host/capview/capture_document.h"
#include "host/capview/detail_view.h"

namespace host {

// The negotiation of the association that the row belongs to, as text: who
// proposed and accepted what, and what is odd about it.
class ContextsPane final : public DetailView {
 public:
  // The document must outlive it. Throws Failure.
  ContextsPane(HWND parent, const CaptureDocument& document);
  // The control must still be there, or be gone by now.
  ~ContextsPane() override;
  ContextsPane(const ContextsPane&) = delete;
  ContextsPane& operator=(const ContextsPane&) = delete;

  void SetFonts(const UiFonts& fonts) override;
  void Place(const PaneLayout& layout) override;
  void SetVisible(bool visible) override;
  HWND Handle() const override { return window_; }
  void ShowRow(const std::optional<RowRef>& row) override;
  bool SelectNext(const std::wstring& text, bool backwards) override;
  void ExpandAll(bool) override {}
  // What is selected, whichever part is asked for.
  std::optional<std::wstring> Copied(LinePart part) override;

 private:
  static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wide,
                                    LPARAM data, UINT_PTR id, DWORD_PTR object);
  std::string TextFor(const std::optional<RowRef>& row) const;
  // Where the selected text begins and ends.
  std::pair<DWORD, DWORD> Selection() const;

  const CaptureDocument& document_;
  HWND window_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_CONTEXTS_PANE_H_
