#include <commctrl.h>

#include <map>
#include <string>
#include <unordered_set>

#include "tests/win32/stand_in.h"

namespace stand_in {
namespace {

struct Item {
  std::string text;
  int image = 0;
  int selected_image = 0;
  LPARAM data = 0;
  UINT state = 0;
  Item* first_child = nullptr;
  Item* last_child = nullptr;
  Item* next = nullptr;
};

// A tree of items under an invisible root. Items come behind their siblings and
// go all at once: the module asks for nothing else. Inserting costs the same at
// any size, and nothing recurses, so that neither a million siblings nor a deep
// tree hurts.
class TreeView {
 public:
  TreeView() = default;
  TreeView(const TreeView&) = delete;
  TreeView& operator=(const TreeView&) = delete;
  ~TreeView() { Clear(); }

  Item* Insert(const TVINSERTSTRUCTA& insertion) {
    Item* const parent = Find(insertion.hParent);
    if (parent == nullptr) return nullptr;
    Item* const item = new Item;
    items_.insert(item);
    (parent->last_child ? parent->last_child->next : parent->first_child) =
        item;
    parent->last_child = item;
    Set(item, insertion.item);
    return item;
  }

  bool Clear() {
    for (Item* const item : items_) delete item;
    items_.clear();
    root_ = Item();
    return true;
  }

  bool Expand(Item* item, WPARAM code) {
    if (!items_.count(item) || item->first_child == nullptr) return false;
    const bool was_expanded = item->state & TVIS_EXPANDED;
    item->state = code == TVE_EXPAND ? TVIS_EXPANDED : 0;
    return was_expanded || code == TVE_EXPAND;
  }

  Item* Next(WPARAM relation, HTREEITEM handle) {
    if (relation == TVGN_ROOT) return root_.first_child;
    Item* const item = Find(handle);
    if (item == nullptr) return nullptr;
    return relation == TVGN_NEXT ? item->next : item->first_child;
  }

  bool Get(TVITEMA& wanted) {
    const auto* const item = reinterpret_cast<Item*>(wanted.hItem);
    if (!items_.count(reinterpret_cast<Item*>(wanted.hItem))) return false;
    if ((wanted.mask & TVIF_TEXT) && wanted.cchTextMax > 0) {
      const std::size_t room = static_cast<std::size_t>(wanted.cchTextMax) - 1;
      wanted.pszText[item->text.copy(wanted.pszText, room)] = '\0';
    }
    wanted.iImage = item->image;
    wanted.iSelectedImage = item->selected_image;
    wanted.lParam = item->data;
    wanted.cChildren = item->first_child != nullptr;
    wanted.state = item->state;
    return true;
  }

  bool Set(Item* item, const TVITEMA& given) {
    if (!items_.count(item)) return false;
    if (given.mask & TVIF_TEXT) item->text = given.pszText;
    if (given.mask & TVIF_IMAGE) item->image = given.iImage;
    if (given.mask & TVIF_SELECTEDIMAGE)
      item->selected_image = given.iSelectedImage;
    if (given.mask & TVIF_PARAM) item->data = given.lParam;
    return true;
  }

  std::size_t Count() const { return items_.size(); }

 private:
  // The root for null and TVI_ROOT; null for what is not an item.
  Item* Find(HTREEITEM handle) {
    if (handle == nullptr || handle == TVI_ROOT) return &root_;
    Item* const item = reinterpret_cast<Item*>(handle);
    return items_.count(item) ? item : nullptr;
  }

  Item root_;
  std::unordered_set<Item*> items_;
};

}  // namespace

LRESULT CALLBACK TreeViewProcedure(HWND window, UINT message, WPARAM wparam,
                                   LPARAM lparam) {
  static auto* const views =
      new std::map<HWND, TreeView>;  // never destroyed, like the windows
  TreeView& view = (*views)[window];
  switch (message) {
    case TVM_INSERTITEMA:
      return reinterpret_cast<LRESULT>(
          view.Insert(*reinterpret_cast<const TVINSERTSTRUCTA*>(lparam)));
    case TVM_DELETEITEM:
      return reinterpret_cast<HTREEITEM>(lparam) == TVI_ROOT && view.Clear();
    case TVM_EXPAND:
      return view.Expand(reinterpret_cast<Item*>(lparam), wparam);
    case TVM_GETCOUNT:
      return static_cast<LRESULT>(view.Count());
    case TVM_GETNEXTITEM:
      return reinterpret_cast<LRESULT>(
          view.Next(wparam, reinterpret_cast<HTREEITEM>(lparam)));
    case TVM_GETITEMA:
      return view.Get(*reinterpret_cast<TVITEMA*>(lparam));
    case TVM_SETITEMA: {
      const auto& given = *reinterpret_cast<const TVITEMA*>(lparam);
      return view.Set(reinterpret_cast<Item*>(given.hItem), given);
    }
    case WM_DESTROY:
      views->erase(window);
      return 0;
  }
  return DefWindowProcA(window, message, wparam, lparam);
}

}  // namespace stand_in

void WINAPI InitCommonControls() {}
