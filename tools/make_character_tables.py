#!/usr/bin/python3
"""Makes host/dataset/character_tables.inc: the characters of the sets that a
Specific Character Set can declare, as Python's codecs have them.

    tools/make_character_tables.py

The same codecs always give the same file. What it relies on is checked here: the
two-byte part of GB18030 holds all of GBK, and all of GB 2312 but two characters.
"""

import pathlib

OUT = pathlib.Path(__file__).resolve().parent.parent / (
    "host/dataset/character_tables.inc"
)

# In the order of RightHalf in character_set.cpp.
RIGHT_HALVES = (
    "latin_1 iso8859_2 iso8859_3 iso8859_4 iso8859_5 iso8859_6 iso8859_7 "
    "iso8859_8 iso8859_9 iso8859_15 tis_620"
).split()

HIGH = range(0xA1, 0xFF)
GB_TRAILS = [*range(0x40, 0x7F), *range(0x80, 0xFF)]


def character(codec, code):
    """The character, or None."""
    try:
        text = bytes(code).decode(codec)
    except UnicodeDecodeError:
        return None
    return text if len(text) == 1 and ord(text) < 0x10000 else None


def table(codec, leads, trails, prefix=()):
    return {
        (lead, trail): character(codec, [*prefix, lead, trail])
        for lead in leads
        for trail in trails
    }


def rows_text(name, comment, cells, trails):
    """The rows from the first to the last that have characters; a blank stands
    for none."""
    leads = [lead for (lead, _), c in cells.items() if c]
    first, last = min(leads), max(leads)
    lines = [f"// {comment}", f"constexpr TwoByteSet {name}{{"]
    lines.append(f"    0x{first:02X}, 0x{last:02X}, {len(trails)},")
    for lead in range(first, last + 1):
        row = "".join(cells[lead, trail] or " " for trail in trails)
        lines.append(f'    u"{row}"')
    return "\n".join(lines) + "};\n"


def right_halves_text():
    lines = [
        "// Bytes A0h to FFh of the single-byte sets; 0 stands for none.",
        f"constexpr char16_t kRightHalves[{len(RIGHT_HALVES)}][96] = {{",
    ]
    for codec in RIGHT_HALVES:
        codes = [character(codec, [byte]) for byte in range(0xA0, 0x100)]
        numbers = [f"0x{ord(c):04X}" if c else "0" for c in codes]
        lines.append(f"    // {codec}")
        for at in range(0, 96, 12):
            brace = "{" if at == 0 else " "
            end = "}," if at == 84 else ","
            lines.append(f"    {brace}{', '.join(numbers[at:at + 12])}{end}")
    return "\n".join(lines) + "\n};\n"


def four_byte_ranges():
    """(number of the first four-byte code, its character) of each run."""
    ranges, before = [], None
    for point in range(0x80, 0x10000):
        if 0xD800 <= point < 0xE000:
            continue
        code = chr(point).encode("gb18030")
        if len(code) != 4:
            continue
        a, b, c, d = code
        number = ((a - 0x81) * 10 + b - 0x30) * 1260 + (c - 0x81) * 10 + d - 0x30
        if before != (number - 1, point - 1):
            ranges.append((number, point))
        before = (number, point)
    return ranges


def four_byte_text():
    ranges = four_byte_ranges()
    lines = [
        "// GB18030's four-byte codes of the basic plane: where a run of them begins,",
        "// counted from 81308130h, and its first character.",
        "constexpr std::pair<std::uint16_t, char16_t> kGb18030Runs[] = {",
    ]
    cells = [f"{{{number}, 0x{point:04X}}}" for number, point in ranges]
    for at in range(0, len(cells), 4):
        lines.append(f"    {', '.join(cells[at:at + 4])},")
    return "\n".join(lines) + "\n};\n"


def main():
    gb18030 = table("gb18030", range(0x81, 0xFF), GB_TRAILS)
    gbk = table("gbk", range(0x81, 0xFF), GB_TRAILS)
    assert all(gb18030[k] == c for k, c in gbk.items() if c)
    gb2312 = table("gb2312", HIGH, HIGH)
    others = {k: c for k, c in gb2312.items() if c and gb18030[k] != c}
    assert others == {(0xA1, 0xA4): "\u30fb", (0xA1, 0xAA): "\u2015"}
    jis_x_0208 = table("euc_jp", HIGH, HIGH)
    jis_x_0212 = table("euc_jp", HIGH, HIGH, prefix=[0x8F])
    ks_x_1001 = table("euc_kr", HIGH, HIGH)
    parts = [
        "// Made by tools/make_character_tables.py.\n",
        right_halves_text(),
        rows_text("kJisX0208", "JIS X 0208, with the high bits", jis_x_0208, HIGH),
        rows_text("kJisX0212", "JIS X 0212, with the high bits", jis_x_0212, HIGH),
        rows_text("kKsX1001", "KS X 1001, with the high bits", ks_x_1001, HIGH),
        rows_text("kGb", "GB18030's two-byte codes, GBK's too", gb18030, GB_TRAILS),
        four_byte_text(),
    ]
    OUT.write_text("\n".join(parts), "utf-8")
    print(f"{OUT.name}: {OUT.stat().st_size} bytes")


if __name__ == "__main__":
    main()
