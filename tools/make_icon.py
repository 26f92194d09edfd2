#!/usr/bin/env python3
"""Draws capview's icon: three rows of a packet list, one of them marked, beside the byte column.

    tools/make_icon.py host/capview/capview.ico
"""
import struct
import sys

GROUND = (0xFF, 0xFF, 0xFF)
FRAME = (0x1F, 0x4E, 0x79)
ROW = (0x9F, 0xBF, 0xDF)
MARK = (0xC0, 0x39, 0x2B)


def color_at(x, y):
    """The color at a point of the unit square; None outside the icon."""
    if not 0.06 <= x < 0.94 or not 0.06 <= y < 0.94:
        return None
    if x < 0.13 or x >= 0.87 or y < 0.26 or y >= 0.87:
        return FRAME
    row = int((y - 0.26) / 0.2)
    if (y - 0.26) % 0.2 < 0.07 or row > 2:
        return GROUND
    if 0.19 <= x < 0.58:
        return MARK if row == 1 else ROW
    if 0.66 <= x < 0.80:
        return MARK if row == 1 else FRAME
    return GROUND


def pixel(x, y, size):
    """Blue, green, red, alpha, averaged over 16 samples."""
    samples = [color_at((x + (i + .5) / 4) / size, (y + (j + .5) / 4) / size)
               for i in range(4) for j in range(4)]
    solid = [s for s in samples if s]
    if not solid:
        return bytes(4)
    red, green, blue = (sum(s[i] for s in solid) // len(solid) for i in range(3))
    return bytes((blue, green, red, 255 * len(solid) // len(samples)))


def image(size):
    header = struct.pack('<IiiHHIIiiII', 40, size, 2 * size, 1, 32, 0, 0, 0, 0, 0, 0)
    rows = (pixel(x, y, size) for y in reversed(range(size)) for x in range(size))
    mask = bytes((size + 31) // 32 * 4 * size)
    return header + b''.join(rows) + mask


def main():
    images = [(size, image(size)) for size in (16, 24, 32, 48, 64)]
    offset = 6 + 16 * len(images)
    directory = struct.pack('<HHH', 0, 1, len(images))
    for size, data in images:
        directory += struct.pack('<BBBBHHII', size, size, 0, 0, 1, 32, len(data), offset)
        offset += len(data)
    with open(sys.argv[1], 'wb') as file:
        file.write(directory + b''.join(data for _, data in images))


main()
