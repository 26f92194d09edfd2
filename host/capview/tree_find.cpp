#include "host/capview/tree_find.h"

#include <utility>

#include "host/capview/ask_dialog.h"
#include "host/text/wide_text.h"

namespace host {

TreeFind::TreeFind(HWND owner, const DetailTabs& tabs, StatusLine& status)
    : owner_(owner), tabs_(tabs), status_(status) {}

void TreeFind::Ask() {
  const auto text =
      AskForText(owner_, L"Find in Tree", L"Text in a line of the tab:", text_);
  if (!text || text->empty()) return;
  text_ = *text;
  Again(false);
}

void TreeFind::Again(bool backwards) {
  if (text_.empty()) return Ask();
  if (tabs_.Active().SelectNext(text_, backwards)) {
    status_.Hush();
  } else {
    status_.Say("No line that is shown here contains \"" + Utf8FromWide(text_) +
                "\".");
  }
}

void TreeFind::WhenShown(const std::wstring& text) {
  text_ = text;
  waits_ = !text.empty();
}

void TreeFind::Shown() {
  if (std::exchange(waits_, false)) Again(false);
}

}  // namespace host
