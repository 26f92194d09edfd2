#include "port/tree_view.h"

#include <commctrl.h>

#include <cstdint>
#include <deque>
#include <string>

namespace port {
namespace {

struct Item {
  std::string text;
  LPARAM data = 0;
  int image = 0;
  int selected_image = 0;
  UINT state = 0;
  Item* first_child = nullptr;
  Item* last_child = nullptr;
  Item* next = nullptr;
  std::size_t number = 0;  // by which its handle is known
};

// A tree of items under an invisible root. Items come behind their siblings and
// go all at once: the module asks for nothing else. Inserting costs the same at
// any size, and nothing recurses, so that neither a million siblings nor a deep
// tree hurts. Handles are numbers, so that a wrong one is seen to be wrong.
class TreeView {
 public:
  HTREEITEM Insert(const TVINSERTSTRUCTA& insertion) {
    Item* const parent = Parent(insertion.hParent);
    if (parent == nullptr) return nullptr;
    Item& item = items_.emplace_back();
    item.number = items_.size() - 1;
    (parent->last_child ? parent->last_child->next : parent->first_child) =
        &item;
    parent->last_child = &item;
    Set(item, insertion.item);
    return HandleOf(&item);
  }

  bool Clear() {
    items_.clear();
    root_ = Item();
    return true;
  }

  bool Expand(HTREEITEM handle, WPARAM code) {
    Item* const item = Find(handle);
    if (item == nullptr || item->first_child == nullptr) return false;
    const bool was_expanded = (item->state & TVIS_EXPANDED) != 0;
    item->state = code == TVE_EXPAND ? TVIS_EXPANDED : 0;
    return was_expanded || code == TVE_EXPAND;
  }

  HTREEITEM Next(WPARAM relation, HTREEITEM handle) {
    if (relation == TVGN_ROOT) return HandleOf(root_.first_child);
    const Item* const item = Parent(handle);
    if (item == nullptr) return nullptr;
    return HandleOf(relation == TVGN_NEXT ? item->next : item->first_child);
  }

  bool Get(TVITEMA& wanted) {
    const Item* const item = Find(wanted.hItem);
    if (item == nullptr) return false;
    if ((wanted.mask & TVIF_TEXT) != 0 && wanted.cchTextMax > 0) {
      const auto room = static_cast<std::size_t>(wanted.cchTextMax) - 1;
      wanted.pszText[item->text.copy(wanted.pszText, room)] = '\0';
    }
    wanted.iImage = item->image;
    wanted.iSelectedImage = item->selected_image;
    wanted.lParam = item->data;
    wanted.cChildren = item->first_child != nullptr;
    wanted.state = item->state;
    return true;
  }

  bool Set(const TVITEMA& given) {
    Item* const item = Find(given.hItem);
    if (item != nullptr) Set(*item, given);
    return item != nullptr;
  }

  std::size_t Count() const { return items_.size(); }

 private:
  // No small number, which the module uses for a marker.
  static constexpr std::size_t kFirstHandle = 0x10000;

  static HTREEITEM HandleOf(const Item* item) {
    return reinterpret_cast<HTREEITEM>(
        item == nullptr ? std::uintptr_t{0} : kFirstHandle + item->number);
  }

  // Null for what is not an item.
  Item* Find(HTREEITEM handle) {
    const auto number = reinterpret_cast<std::uintptr_t>(handle) - kFirstHandle;
    return number < items_.size() ? &items_[number] : nullptr;
  }
  // The root for null and TVI_ROOT.
  Item* Parent(HTREEITEM handle) {
    return handle == nullptr || handle == TVI_ROOT ? &root_ : Find(handle);
  }

  static void Set(Item& item, const TVITEMA& given) {
    if ((given.mask & TVIF_TEXT) != 0) item.text = given.pszText;
    if ((given.mask & TVIF_IMAGE) != 0) item.image = given.iImage;
    if ((given.mask & TVIF_SELECTEDIMAGE) != 0) {
      item.selected_image = given.iSelectedImage;
    }
    if ((given.mask & TVIF_PARAM) != 0) item.data = given.lParam;
  }

  Item root_;
  std::deque<Item> items_;  // which stay where they are
};

// In the window's extra memory, from its first message to its last one.
TreeView* ViewOf(HWND window) {
  auto* view = reinterpret_cast<TreeView*>(GetWindowLongPtrA(window, 0));
  if (view == nullptr) {
    view = new TreeView;
    SetWindowLongPtrA(window, 0, reinterpret_cast<LONG_PTR>(view));
  }
  return view;
}

}  // namespace

LRESULT CALLBACK TreeViewProcedure(HWND window, UINT message, WPARAM wparam,
                                   LPARAM lparam) {
  TreeView* const view = ViewOf(window);
  const auto item = reinterpret_cast<HTREEITEM>(lparam);
  switch (message) {
    case TVM_INSERTITEMA:
      return reinterpret_cast<LRESULT>(
          view->Insert(*reinterpret_cast<const TVINSERTSTRUCTA*>(lparam)));
    case TVM_DELETEITEM:
      return item == TVI_ROOT && view->Clear();
    case TVM_EXPAND:
      return view->Expand(item, wparam);
    case TVM_GETCOUNT:
      return static_cast<LRESULT>(view->Count());
    case TVM_GETNEXTITEM:
      return reinterpret_cast<LRESULT>(view->Next(wparam, item));
    case TVM_GETITEMA:
      return view->Get(*reinterpret_cast<TVITEMA*>(lparam));
    case TVM_SETITEMA:
      return view->Set(*reinterpret_cast<const TVITEMA*>(lparam));
    case WM_DESTROY:
      SetWindowLongPtrA(window, 0, 0);
      delete view;
      return 0;
  }
  return DefWindowProcA(window, message, wparam, lparam);
}

}  // namespace port

BOOL WINAPI InitCommonControlsEx(const INITCOMMONCONTROLSEX*) { return TRUE; }
