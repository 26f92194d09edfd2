/* The controls that the module writes into: a tree view, an edit control and
 * one that only keeps its text. Every class is there from the beginning. */
#ifndef PORT_COMMCTRL_H_
#define PORT_COMMCTRL_H_

#include <windows.h>

#ifdef __cplusplus
extern "C" {
#endif

#define ICC_TREEVIEW_CLASSES 0x00000002
typedef struct tagINITCOMMONCONTROLSEX {
  DWORD dwSize;
  DWORD dwICC;
} INITCOMMONCONTROLSEX;
BOOL WINAPI InitCommonControlsEx(const INITCOMMONCONTROLSEX* wanted);

#define WC_TREEVIEWA "SysTreeView32"
#define WC_TREEVIEWW L"SysTreeView32"
#define WC_EDITW L"EDIT"
#define WC_STATICW L"STATIC"
#define TVS_HASBUTTONS 0x0001
#define TVS_HASLINES 0x0002

#define TV_FIRST 0x1100
#define TVM_INSERTITEMA (TV_FIRST + 0)
#define TVM_DELETEITEM (TV_FIRST + 1)
#define TVM_EXPAND (TV_FIRST + 2)
#define TVM_GETCOUNT (TV_FIRST + 5)
#define TVM_GETNEXTITEM (TV_FIRST + 10)
#define TVM_GETITEMA (TV_FIRST + 12)
#define TVM_SETITEMA (TV_FIRST + 13)

#define TVIF_TEXT 0x0001
#define TVIF_IMAGE 0x0002
#define TVIF_PARAM 0x0004
#define TVIF_STATE 0x0008
#define TVIF_SELECTEDIMAGE 0x0020
#define TVIF_CHILDREN 0x0040
#define TVIS_EXPANDED 0x0020
#define TVE_COLLAPSE 0x0001
#define TVE_EXPAND 0x0002
#define TVGN_ROOT 0x0000
#define TVGN_NEXT 0x0001
#define TVGN_CHILD 0x0004

typedef struct _TREEITEM* HTREEITEM;
#define TVI_ROOT ((HTREEITEM)(ULONG_PTR)-0x10000)
#define TVI_LAST ((HTREEITEM)(ULONG_PTR)-0x0FFFE)

typedef struct tagTVITEMA {
  UINT mask;
  HTREEITEM hItem;
  UINT state;
  UINT stateMask;
  LPSTR pszText;
  int cchTextMax;
  int iImage;
  int iSelectedImage;
  int cChildren;
  LPARAM lParam;
} TVITEMA;
typedef struct tagTVINSERTSTRUCTA {
  HTREEITEM hParent;
  HTREEITEM hInsertAfter;
  TVITEMA item;
} TVINSERTSTRUCTA;

#ifdef __cplusplus
}
#endif

#endif /* PORT_COMMCTRL_H_ */
