#ifndef TREE_GLOBAL_BLOCK_H_
#define TREE_GLOBAL_BLOCK_H_

#include <windows.h>

#include <cstddef>
#include <memory>
#include <type_traits>

namespace dicom {

// Unlocks and frees through the handle, which need not be the address.
struct GlobalBlockFree {
  void operator()(void* block) const noexcept {
    const HGLOBAL handle = ::GlobalHandle(block);
    ::GlobalUnlock(handle);
    ::GlobalFree(handle);
  }
};

// A locked block of Win32 global memory: what the host and the system take
// over or read. Handing it over is release().
template <class T>
using GlobalBlock = std::unique_ptr<T, GlobalBlockFree>;

// Zero-filled and locked; null when the system has no memory. `size` in bytes,
// for a block that is more than one T.
template <class T>
GlobalBlock<T> AllocateGlobalBlock(std::size_t size = sizeof(T)) {
  static_assert(std::is_trivially_destructible_v<T>);
  const HGLOBAL handle =
      ::GlobalAlloc(GMEM_ZEROINIT, static_cast<SIZE_T>(size));
  return GlobalBlock<T>(handle ? static_cast<T*>(::GlobalLock(handle))
                               : nullptr);
}

}  // namespace dicom

#endif  // TREE_GLOBAL_BLOCK_H_
