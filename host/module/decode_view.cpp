#include "host/module/decode_view.h"

#include <array>
#include <utility>

#include "host/text/failure.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

// The image of each line by its kind; nobody sees them here.
constexpr std::array<std::uint32_t, DICOM_IMAGE_TABLE_ENTRIES> kImages{};

constexpr std::size_t kFirstTextRoom = 64 * 1024;
constexpr std::size_t kMostTextRoom = 64 * 1024 * 1024;

// Some tree views search all their items for each message, so as few as
// possible are sent: one a leaf for its contents, one to go on.
class TreeReader {
 public:
  TreeReader(HWND tree, std::vector<HTREEITEM>* items)
      : tree_(tree), items_(items) {}

  std::vector<TreeLine> Read() {
    std::vector<TreeLine> lines;
    std::vector<HTREEITEM> parents;
    HTREEITEM item = Next(nullptr, TVGN_ROOT);
    while (item != nullptr) {
      bool has_children = false;
      if (items_ != nullptr) items_->push_back(item);
      lines.push_back(Line(item, parents.size(), &has_children));
      if (has_children) {
        parents.push_back(item);
        item = Next(item, TVGN_CHILD);
        continue;
      }
      HTREEITEM next = Next(item, TVGN_NEXT);
      while (next == nullptr && !parents.empty()) {
        next = Next(parents.back(), TVGN_NEXT);
        parents.pop_back();
      }
      item = next;
    }
    return lines;
  }

 private:
  HTREEITEM Next(HTREEITEM item, WPARAM relation) const {
    return reinterpret_cast<HTREEITEM>(SendMessageA(
        tree_, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
  }

  TreeLine Line(HTREEITEM item, std::size_t depth, bool* has_children) {
    TVITEMA request{};
    request.hItem = item;
    Get(request);
    // A text that fills the room may have been cut: ask again with more.
    while (TextLength() + 1 >= text_.size() && text_.size() < kMostTextRoom) {
      text_.resize(text_.size() * 2);
      Get(request);
    }
    *has_children = request.cChildren > 0;
    TreeLine line;
    line.depth = static_cast<std::uint32_t>(depth);
    line.text.assign(text_.data(), TextLength());
    if (request.lParam != 0) {
      const auto& bytes =
          *reinterpret_cast<const DicomByteRangeRecord*>(request.lParam);
      line.bytes = ByteRange{bytes.section, bytes.offset, bytes.length};
    }
    return line;
  }

  void Get(TVITEMA& request) {
    text_[0] = '\0';
    request.mask = TVIF_TEXT | TVIF_PARAM | TVIF_CHILDREN;
    request.pszText = text_.data();
    request.cchTextMax = static_cast<int>(text_.size());
    SendMessageA(tree_, TVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&request));
    // Some controls answer with a text of their own in place of the buffer.
    if (request.pszText != text_.data() && request.pszText != nullptr) {
      lstrcpynA(text_.data(), request.pszText, request.cchTextMax);
    }
  }

  std::size_t TextLength() const {
    return static_cast<std::size_t>(lstrlenA(text_.data()));
  }

  HWND tree_;
  std::vector<HTREEITEM>* items_;
  std::vector<char> text_ = std::vector<char>(kFirstTextRoom);
};

HWND CreateControl(const wchar_t* class_name, DWORD style, HWND parent) {
  const HWND window =
      CreateWindowW(class_name, L"", style, 0, 0, 400, 300, parent, nullptr,
                    GetModuleHandleW(nullptr), nullptr);
  if (window == nullptr) {
    throw Failure("no window can be made (" + SystemErrorText(GetLastError()) +
                  "); under Wine, start with a display, for example by "
                  "tools/with-wine.sh");
  }
  return window;
}

}  // namespace

std::vector<TreeLine> ReadTree(HWND tree, std::vector<HTREEITEM>* items) {
  return TreeReader(tree, items).Read();
}

std::string ReadWindowText(HWND window) {
  const auto room = static_cast<std::size_t>(
      SendMessageA(window, WM_GETTEXTLENGTH, 0, 0) + 1);
  std::string text(room, '\0');
  text.resize(static_cast<std::size_t>(SendMessageA(
      window, WM_GETTEXT, room, reinterpret_cast<LPARAM>(text.data()))));
  return text;
}

DecodeView::DecodeView(HexWindow hex_window) : hex_window_(hex_window) {
  INITCOMMONCONTROLSEX controls{sizeof controls, ICC_TREEVIEW_CLASSES};
  InitCommonControlsEx(&controls);
  parent_ = CreateControl(L"STATIC", WS_POPUP, nullptr);
  tree_ = CreateControl(WC_TREEVIEWW, WS_CHILD | TVS_HASLINES | TVS_HASBUTTONS,
                        parent_);
  // Without ES_AUTOHSCROLL the control would wrap a long dump line by line.
  hex_ = hex_window == HexWindow::kEdit
             ? CreateControl(WC_EDITW, WS_CHILD | ES_MULTILINE | ES_AUTOHSCROLL,
                             parent_)
             : CreateControl(WC_STATICW, WS_CHILD, parent_);
  SendMessageW(hex_, EM_LIMITTEXT, 0x7FFFFFFE, 0);
  SendMessageW(tree_, WM_SETREDRAW, FALSE, 0);
}

DecodeView::~DecodeView() { DestroyWindow(parent_); }

DecodedRow DecodeView::Display(Module& module, HostWindow& window,
                               ListKind view, std::int32_t index) {
  SetWindowTextA(hex_, "");  // in case that the module fails before its dump
  window.State().SetOutput(DisplayState::Output::kTree);
  DecodedRow row;
  row.stopped = Show(module, window, view, index);
  row.tree = ReadTree(tree_);
  if (hex_window_ == HexWindow::kEdit) row.hex = ReadWindowText(hex_);
  return row;
}

std::string DecodeView::Save(Module& module, HostWindow& window, ListKind view,
                             std::int32_t index, HFILE file) {
  window.State().SetFile(file);
  return Divert(DisplayState::Output::kSave, module, window, view, index);
}

std::string DecodeView::Print(Module& module, HostWindow& window, ListKind view,
                              std::int32_t index) {
  return Divert(DisplayState::Output::kPrint, module, window, view, index);
}

std::string DecodeView::Divert(DisplayState::Output output, Module& module,
                               HostWindow& window, ListKind view,
                               std::int32_t index) {
  window.State().SetOutput(output);
  const std::string stopped = Show(module, window, view, index);
  window.State().SetOutput(DisplayState::Output::kTree);
  return stopped;
}

void DecodeView::Clear(Module& module) { module.ClearDisplay(tree_, hex_); }

std::string DecodeView::Show(Module& module, HostWindow& window, ListKind view,
                             std::int32_t index) {
  const auto failure =
      module.Display(window.Handle(), tree_, index, kImages.data(), hex_,
                     view == ListKind::kMessages);
  return failure ? failure->text : std::string();
}

}  // namespace host
