#include "tree_view.h"

#include <strings.h>

#include <map>
#include <string>
#include <unordered_set>
#include <vector>

namespace stand_in {
namespace {

struct Item {
  std::string text;
  int image = 0;
  int selected_image = 0;
  LPARAM data = 0;
  UINT state = 0;
  Item* parent = nullptr;
  Item* first_child = nullptr;
  Item* last_child = nullptr;
  Item* previous = nullptr;
  Item* next = nullptr;
};

// A tree of items under an invisible root. Inserting costs the same at any size
// (TVI_SORT aside), and nothing recurses, so that neither a million siblings
// nor a deep tree hurts.
class TreeView {
 public:
  TreeView() = default;
  TreeView(const TreeView&) = delete;
  TreeView& operator=(const TreeView&) = delete;
  ~TreeView() { Delete(nullptr); }

  Item* Insert(const TVINSERTSTRUCTA& insertion) {
    Item* const parent = Find(insertion.hParent);
    if (parent == nullptr) return nullptr;
    Item* const item = new Item;
    items_.insert(item);
    Link(item, parent, Predecessor(insertion, parent));
    Set(item, insertion.item);
    return item;
  }

  bool Delete(HTREEITEM handle) {
    Item* const item = Find(handle);
    if (item == nullptr) return false;
    std::vector<Item*> doomed;
    if (item == &root_) {
      doomed.assign(items_.begin(), items_.end());
      root_ = Item();
    } else {
      Unlink(item);
      doomed.push_back(item);
      for (std::size_t i = 0; i < doomed.size(); ++i) {
        for (Item* child = doomed[i]->first_child; child; child = child->next) {
          doomed.push_back(child);
        }
      }
    }
    for (Item* each : doomed) {
      items_.erase(each);
      delete each;
    }
    return true;
  }

  bool Expand(HTREEITEM handle, WPARAM code) {
    Item* const item = Find(handle);
    if (item == nullptr || item == &root_ || item->first_child == nullptr)
      return false;
    if (code == TVE_EXPAND) {
      item->state |= TVIS_EXPANDED | TVIS_EXPANDEDONCE;
      return true;
    }
    const bool was_expanded = item->state & TVIS_EXPANDED;
    item->state &= ~static_cast<UINT>(TVIS_EXPANDED);
    return was_expanded;
  }

  HTREEITEM Next(WPARAM relation, HTREEITEM handle) {
    if (relation == TVGN_ROOT) return Handle(root_.first_child);
    Item* const item = Find(handle);
    if (item == nullptr) return nullptr;
    switch (relation) {
      case TVGN_NEXT:
        return Handle(item->next);
      case TVGN_PREVIOUS:
        return Handle(item->previous);
      case TVGN_CHILD:
        return Handle(item->first_child);
      case TVGN_PARENT:
        return item->parent == &root_ ? nullptr : Handle(item->parent);
    }
    return nullptr;
  }

  bool Get(TVITEMA& wanted) {
    const Item* const item = FindVisible(wanted.hItem);
    if (item == nullptr) return false;
    if ((wanted.mask & TVIF_TEXT) && wanted.cchTextMax > 0) {
      const std::size_t room = static_cast<std::size_t>(wanted.cchTextMax) - 1;
      wanted.pszText[item->text.copy(wanted.pszText, room)] = '\0';
    }
    if (wanted.mask & TVIF_IMAGE) wanted.iImage = item->image;
    if (wanted.mask & TVIF_SELECTEDIMAGE)
      wanted.iSelectedImage = item->selected_image;
    if (wanted.mask & TVIF_PARAM) wanted.lParam = item->data;
    if (wanted.mask & TVIF_CHILDREN)
      wanted.cChildren = item->first_child != nullptr;
    wanted.state = item->state;
    return true;
  }

  bool Set(const TVITEMA& given) {
    Item* const item = FindVisible(given.hItem);
    if (item == nullptr) return false;
    Set(item, given);
    return true;
  }

  std::size_t Count() const { return items_.size(); }

 private:
  static HTREEITEM Handle(Item* item) {
    return reinterpret_cast<HTREEITEM>(item);
  }

  // The root for null and TVI_ROOT; null for what is not an item.
  Item* Find(HTREEITEM handle) {
    if (handle == nullptr || handle == TVI_ROOT) return &root_;
    return FindVisible(handle);
  }

  Item* FindVisible(HTREEITEM handle) {
    Item* const item = reinterpret_cast<Item*>(handle);
    return items_.count(item) ? item : nullptr;
  }

  // The sibling after which a new item goes; null for the first place.
  // TVI_ROOT, like any insert-after that is not a child of the parent, counts
  // as TVI_LAST.
  Item* Predecessor(const TVINSERTSTRUCTA& insertion, Item* parent) {
    if (insertion.hInsertAfter == TVI_FIRST) return nullptr;
    if (insertion.hInsertAfter == TVI_SORT) {
      Item* item = parent->last_child;
      while (item &&
             strcasecmp(item->text.c_str(), insertion.item.pszText) > 0) {
        item = item->previous;
      }
      return item;
    }
    Item* const sibling = FindVisible(insertion.hInsertAfter);
    return sibling && sibling->parent == parent ? sibling : parent->last_child;
  }

  static void Link(Item* item, Item* parent, Item* previous) {
    item->parent = parent;
    item->previous = previous;
    item->next = previous ? previous->next : parent->first_child;
    (previous ? previous->next : parent->first_child) = item;
    (item->next ? item->next->previous : parent->last_child) = item;
  }

  static void Unlink(Item* item) {
    (item->previous ? item->previous->next : item->parent->first_child) =
        item->next;
    (item->next ? item->next->previous : item->parent->last_child) =
        item->previous;
  }

  static void Set(Item* item, const TVITEMA& given) {
    if (given.mask & TVIF_TEXT) item->text = given.pszText ? given.pszText : "";
    if (given.mask & TVIF_IMAGE) item->image = given.iImage;
    if (given.mask & TVIF_SELECTEDIMAGE)
      item->selected_image = given.iSelectedImage;
    if (given.mask & TVIF_PARAM) item->data = given.lParam;
    if (given.mask & TVIF_STATE) {
      item->state =
          (item->state & ~given.stateMask) | (given.state & given.stateMask);
    }
  }

  Item root_;
  std::unordered_set<Item*> items_;
};

}  // namespace

LRESULT CALLBACK TreeViewProcedure(HWND window, UINT message, WPARAM wparam,
                                   LPARAM lparam) {
  static auto* const views =
      new std::map<HWND, TreeView>;  // never destroyed, like the windows
  const auto handle = reinterpret_cast<HTREEITEM>(lparam);
  switch (message) {
    case TVM_INSERTITEMA:
      return reinterpret_cast<LRESULT>((*views)[window].Insert(
          *reinterpret_cast<const TVINSERTSTRUCTA*>(lparam)));
    case TVM_DELETEITEM:
      return (*views)[window].Delete(handle);
    case TVM_EXPAND:
      return (*views)[window].Expand(handle, wparam);
    case TVM_GETCOUNT:
      return static_cast<LRESULT>((*views)[window].Count());
    case TVM_GETNEXTITEM:
      return reinterpret_cast<LRESULT>((*views)[window].Next(wparam, handle));
    case TVM_GETITEMA:
      return (*views)[window].Get(*reinterpret_cast<TVITEMA*>(lparam));
    case TVM_SETITEMA:
      return (*views)[window].Set(*reinterpret_cast<const TVITEMA*>(lparam));
    case WM_DESTROY:
      views->erase(window);
      return 0;
  }
  return DefWindowProcA(window, message, wparam, lparam);
}

}  // namespace stand_in

void WINAPI InitCommonControls() {}
