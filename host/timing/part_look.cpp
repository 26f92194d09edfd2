#include "host/timing/part_look.h"

#include <array>
#include <cstddef>

namespace host {
namespace {

using Stroke = PartLook::Stroke;

constexpr Stroke kCross[] = {{0, 4, 8, 4}, {4, 0, 4, 8}};
constexpr Stroke kUpright[] = {{3, 0, 3, 6}};
constexpr Stroke kRising[] = {{0, 8, 8, 0}};
constexpr Stroke kFalling[] = {{0, 0, 6, 6}};
constexpr Stroke kLattice[] = {{0, 0, 6, 6}, {0, 6, 6, 0}};
constexpr Stroke kDot[] = {{0, 1, 2, 1}};
constexpr Stroke kLevel[] = {{0, 3, 6, 3}};

// In the order of TimePart.
constexpr std::array<PartLook, kTimeParts> kLooks{{
    {0xffffff, 0xaaaaaa, 1, 8, kCross},
    {0xe6f0e6, 0x3a7d3a, 1, 6, kUpright},
    {0xfff6d6, 0xb38f00, 1, 8, kRising},
    {0x8fb8de, 0x8fb8de, 1, 8, {}},
    {0xffc48a, 0x8a3c00, 2, 6, kFalling},
    {0xffd0d0, 0xa00020, 2, 6, kLattice},
    {0x555555, 0xffffff, 2, 5, kDot},
    {0xe5d8f2, 0x5b2a91, 1, 6, kLevel},
    {0xffffff, 0xffffff, 1, 8, {}},
    {0xd5d5d5, 0xd5d5d5, 1, 8, {}},
}};

}  // namespace

const PartLook& LookOf(TimePart part) {
  return kLooks[static_cast<std::size_t>(part)];
}

}  // namespace host
