#!/usr/bin/python3
"""Makes the dictionaries: the module's data/Data.dic and data/Uid.dic, and the
tables that the reference host is built with, host/dataset/registry_*.inc.

    tools/make_dictionaries.py           # all of them anew, the same bytes
    tools/make_dictionaries.py FOLDER    # takes over a newer registry first

The facts (tags, VRs, names, UIDs, the elements of private creators) are those of
the public DICOM registries as of June 2026, as pydicom's tables give them. FOLDER
holds them tab-separated: elements.tsv, private.tsv and uids.tsv. What they say is
kept in the host's tables, from which everything else is made.

Choices made for the host's tables:
- An element whose name the registry dropped when it retired it is a "Retired
  Element"; its two UIDs of that kind have the names by which they are known.
- Private entries that stand for a whole block ("0019,10xx") say nothing of an
  element and are left out.

And for the module's files:
- Where the registry gives two VRs: "US or SS" is US, "OB or OW" is OW, "US or
  OW" and "US or SS or OW" are OW. No VR (items and delimiters) is "XX".
- A lookup folds groups 50gg and 60gg only, so these stay as 50xx and 60xx. Of
  the other repeating elements 0020,31xx, 0028,04x0 to 04x3, 0028,08x0 to 08x8
  and the even groups 7Fxx are written out, one line for each digit that an x
  stands for; 1000,xxx0 to xxx5 and 1010,xxxx (tens of thousands) are left with
  their x.
- Every group that has elements has its group length. Behind groups 0000 and 0002
  the registry has only one rule for all of them, by which they are retired.
- Retired elements carry the extra text "retired", retired UIDs end in
  " (Retired)". What one source alone says of an entry that was there before is
  not taken over (UNCONFIRMED).
- The reader stops at a line of more than 119 characters: longer names are cut.
"""

import itertools
import pathlib
import sys
import unicodedata

ROOT = pathlib.Path(__file__).resolve().parent.parent
TABLES = ROOT / "host" / "dataset"
MAX_LINE = 119
MADE_BY = "Made by tools/make_dictionaries.py"

CHOSEN_VR = {
    "US or SS": "US",
    "OB or OW": "OW",
    "US or OW": "OW",
    "US or SS or OW": "OW",
    "NONE": "XX",
}

# Names that the tables spell wrongly.
CORRECTED_NAMES = {
    "300A,067B": "Radiation Generation Mode Sequence",
    "300A,067C": "Radiation Generation Mode Label",
    "300A,067D": "Radiation Generation Mode Description",
    "300A,067E": "Radiation Generation Mode Machine Code Sequence",
    "300A,0685": "Number of Radiation Generation Modes",
    "3010,0094": "Radiation Source Coordinate System Yaw Angle",
    "3010,0095": "Radiation Source Coordinate System Roll Angle",
}

# What the tables have for an element without a name.
NO_NAME = ("", "Retired-blank")

# Retired UIDs that the registry keeps without their names.
DROPPED_UID_NAMES = {
    "1.2.840.10008.5.1.4.1.1.12.77": "Zeiss OPT File",
    "1.2.840.10008.5.1.4.1.1.40": "MR Image Storage Zero Padded",
}

# Of the registry of dynamic RTP payloads, which the tables leave out.
PAYLOAD_ELEMENTS = [
    ["0006,0001", "SQ", "1", "Current Frame Functional Groups Sequence", ""],
]

# Marks and names of the tables that no second source has: Data.dic keeps what it
# said of these before. (retired, name)
UNCONFIRMED = {
    "0038,0004": ("", "Referenced Patient Alias Sequence"),
    "0070,1807": ("", "Weighting Lookup Table Descriptor"),
    "0070,1808": ("", "Weighting Lookup Table Data"),
    "3004,0010": ("", "RT Dose ROI Sequence"),
    "3004,0012": ("", "Dose Value"),
    "3006,0085": ("", "ROI Observation Label"),
    "3006,0088": ("", "ROI Observation Description"),
    "3008,002B": ("", "Treatment Termination Code"),
    "3010,0090": ("", "Robotic Base Location Indicator"),
    "5200,9230": ("", "Per-frame Functional Groups Sequence"),
}

# Repeating elements that are written out, by the start of their tag.
WRITTEN_OUT = ("0020,31", "0028,04", "0028,08", "7F")


# The host's tables: lines of columns between tabs, as one raw string of C++.

BEGIN, END = 'R"(\n', ')"\n'


def write_table(name, title, lines):
    for line in lines:
        if ')"' in line:
            raise ValueError(f"ends the string: {line!r}")
    text = "".join(line + "\n" for line in lines)
    path = TABLES / f"registry_{name}.inc"
    path.write_text(f"// {MADE_BY}: {title}\n{BEGIN}{text}{END}", "utf-8")
    print(f"{path.name}: {len(lines)} lines")


def read_table(name):
    text = (TABLES / f"registry_{name}.inc").read_text("utf-8")
    _, lines = text.split(BEGIN)
    return lines.removesuffix(END).splitlines()


def rows_of(folder, name):
    lines = (folder / name).read_text("utf-8").splitlines()[1:]
    return [line.split("\t") for line in lines]


def take_over_elements(folder):
    """TAG, VR, VM, name and, when it is retired, "R"."""
    lines = []
    rows = rows_of(folder, "elements.tsv") + PAYLOAD_ELEMENTS
    for tag, vr, vm, name, retired in rows:
        name = CORRECTED_NAMES.get(tag, name)
        name = "Retired Element" if name in NO_NAME else name
        lines.append("\t".join([tag, vr, vm, name] + ["R"] * bool(retired)))
    write_table("elements", "tag, VR, VM, name, R for retired", sorted(lines))


def private_key(line):
    """Group and low byte; the entry for any block stands before those for one."""
    return line[:4], line[7:9], line[5:7].replace("xx", "00")


def take_over_private(folder):
    """"=" and a creator, then its elements: TAG, VR, VM and name. The two digits
    of the block are "xx" unless the entry is for one block alone."""
    creators = {}
    for creator, tag, vr, vm, name in rows_of(folder, "private.tsv"):
        if tag.endswith("xx"):
            continue
        # Whatever block it reserves: no block has the number 00.
        tag = tag.replace(",00", ",xx")
        vr = vr.replace("_", " or ")
        line = "\t".join([tag, vr, vm, name])
        creators.setdefault(creator, []).append(line)
    lines = []
    for creator in sorted(creators, key=str.encode):
        lines.append("=" + creator)
        lines += sorted(set(creators[creator]), key=private_key)
    write_table("private", "=creator, then tag, VR, VM, name", lines)


def take_over_uids(folder):
    """UID, name and, when it is retired, "R", in the order of their text."""
    lines = []
    for uid, name, _, _, retired in rows_of(folder, "uids.tsv"):
        name = name or DROPPED_UID_NAMES[uid]
        lines.append("\t".join([uid, name] + ["R"] * bool(retired)))
    write_table("uids", "UID, name, R for retired", sorted(lines))


# The module's dictionaries.


def plain_ascii(text):
    """The text in printable ASCII, without the column separator."""
    text = text.replace("\u2013", "-").replace("\u2019", "'")
    text = text.replace("\u00b5", "u").replace(";", ",")
    text = unicodedata.normalize("NFKD", text)
    return " ".join(text.encode("ascii", "ignore").decode().split())


def element_line(tag, vr, name, retired):
    """One line of Data.dic."""
    vr = CHOSEN_VR.get(vr, vr)
    if len(vr) != 2:
        raise ValueError(f"{tag}: no choice made for VR {vr!r}")
    retired, name = UNCONFIRMED.get(tag, (retired, plain_ascii(name)))
    head = f"{tag};"
    tail = f";{vr};retired" if retired else f";{vr}"
    return head + name[: MAX_LINE - len(head) - len(tail)].rstrip() + tail


def written_out(tag):
    """The tags that a repeating tag stands for, or the tag itself."""
    if not tag.startswith(WRITTEN_OUT) or "x" not in tag:
        return [tag]
    choices = ["0123456789ABCDEF" if c == "x" else c for c in tag]
    tags = ["".join(digits) for digits in itertools.product(*choices)]
    return [t for t in tags if int(t[:4], 16) % 2 == 0]


def data_lines():
    """Lines in the order of their tags; a single element's own line wins over
    the repeating one that it is part of."""
    rows = [(line + "\t").split("\t")[:5] for line in read_table("elements")]
    lines = {}
    for tag, vr, _, name, retired in sorted(rows, key=lambda row: "x" in row[0]):
        for key in written_out(tag):
            lines.setdefault(key, element_line(key, vr, name, retired))
    for group in {key[:4] for key in lines} - {"FFFE"}:
        key = f"{group},0000"
        lines.setdefault(key, element_line(key, "UL", "Group Length", "R"))
    return [lines[key] for key in sorted(lines)]


def uid_line(uid, name, retired):
    head = f"{uid};"
    tail = " (Retired)" if retired else ""
    name = plain_ascii(name)
    return head + name[: MAX_LINE - len(head) - len(tail)].rstrip() + tail


def uid_lines():
    rows = [(line + "\t").split("\t")[:3] for line in read_table("uids")]

    def components(row):
        return [int(component) for component in row[0].split(".")]

    return [uid_line(*row) for row in sorted(rows, key=components)]


def write(path, columns, lines):
    header = [f"# {columns}", f"# {MADE_BY}; do not edit."]
    for line in header + lines:
        if len(line) > MAX_LINE or not line.isascii() or not line.isprintable():
            raise ValueError(f"not a line for the reader: {line!r}")
    path.write_bytes(("\n".join(header + lines) + "\n").encode("ascii"))
    print(f"{path.name}: {len(lines)} lines")


def main():
    if len(sys.argv) > 1:
        folder = pathlib.Path(sys.argv[1])
        take_over_elements(folder)
        take_over_private(folder)
        take_over_uids(folder)
    data = ROOT / "data"
    write(data / "Data.dic", "group,element;name;VR[;extra text]", data_lines())
    write(data / "Uid.dic", "UID;description", uid_lines())


if __name__ == "__main__":
    main()
