#include "host/module/tree_reader.h"

#include <string>

#include "interface/host_interface.h"

namespace host {
namespace {

constexpr std::size_t kFirstTextRoom = 64 * 1024;
constexpr std::size_t kMostTextRoom = 64 * 1024 * 1024;

// Some tree views search all their items for each message, so as few as
// possible are sent: one a leaf for its contents, one to go on.
class TreeReader {
 public:
  explicit TreeReader(HWND tree) : tree_(tree) {}

  ReadLines Read() {
    ReadLines read;
    std::vector<HTREEITEM> parents;
    HTREEITEM item = Next(nullptr, TVGN_ROOT);
    while (item != nullptr) {
      const TVITEMA contents = Contents(item);
      read.items.push_back(item);
      read.lines.push_back({static_cast<std::uint32_t>(parents.size()),
                            std::string(text_.data(), TextLength()),
                            BytesOfItem(contents.lParam)});
      if (contents.cChildren > 0) {
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
    return read;
  }

 private:
  HTREEITEM Next(HTREEITEM item, WPARAM relation) const {
    return reinterpret_cast<HTREEITEM>(SendMessageA(
        tree_, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
  }

  // Its text goes to `text_`.
  TVITEMA Contents(HTREEITEM item) {
    TVITEMA request{};
    request.hItem = item;
    Get(request);
    // A text that fills the room may have been cut: ask again with more.
    while (TextLength() + 1 >= text_.size() && text_.size() < kMostTextRoom) {
      text_.resize(text_.size() * 2);
      Get(request);
    }
    return request;
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
  std::vector<char> text_ = std::vector<char>(kFirstTextRoom);
};

}  // namespace

ReadLines ReadTree(HWND tree) { return TreeReader(tree).Read(); }

std::optional<ByteRange> BytesOfItem(LPARAM item_data) {
  if (item_data == 0) return {};
  const auto& bytes = *reinterpret_cast<const DicomByteRangeRecord*>(item_data);
  return ByteRange{bytes.section, bytes.offset, bytes.length};
}

}  // namespace host
