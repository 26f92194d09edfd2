#ifndef TREE_HOST_DISPLAY_STATE_H_
#define TREE_HOST_DISPLAY_STATE_H_

#include <cstddef>
#include <cstdint>

namespace dicom {

// The host's layout as far as the tree needs it. A host compiles the same
// numbers from interface/host_interface.h; plugin/display_driver.cpp, which
// sees both, holds the two together.

// Byte index in the host window's extra memory, where the address of the
// display state is.
constexpr int kDisplayStateIndex = 36;

// Fields of the display state, by byte offset. They lie unaligned.
constexpr std::size_t kStateShowMessageData = 108;     // uint32_t, 0: not shown
constexpr std::size_t kStateOutputMode = 3602;         // char
constexpr std::size_t kStateLineHeight = 3606;         // int32_t
constexpr std::size_t kStateLinesPerPage = 3610;       // int32_t
constexpr std::size_t kStateCurrentLine = 3614;        // int32_t, written too
constexpr std::size_t kStateFileHandle = 3622;         // HFILE
constexpr std::size_t kStatePrinterDc = 3626;          // HDC
constexpr std::size_t kStateSectionExpandMask = 3638;  // uint32_t

// Every record ends at this many bytes of the hex window's buffer: the host
// highlights no more.
constexpr std::uint32_t kHighlightLimit = 13808;

// Entries of a TreeImageTable.
constexpr std::uint32_t kImageTableEntries = 14;

}  // namespace dicom

#endif  // TREE_HOST_DISPLAY_STATE_H_
