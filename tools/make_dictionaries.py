#!/usr/bin/python3
"""Makes data/Data.dic and data/Uid.dic, the module's two dictionaries.

    apt-get install python3-pydicom
    /usr/bin/python3 tools/make_dictionaries.py

The facts (tags, names, VRs, UIDs) are those of the public DICOM data dictionary
and UID registry as Debian's python3-pydicom carries them. The same release of
the package always gives the same files.

Choices made here:
- Where the public dictionary gives two VRs: "US or SS" is US, "OB or OW" is OW,
  "US or OW" and "US or SS or OW" are OW. No VR (items and delimiters) is "XX".
- A lookup folds groups 50gg and 60gg only, so these stay as 50xx and 60xx. Of
  the other repeating elements 0020,31xx, 0028,04xg, 0028,08xg and the even
  groups 7Fxx are written out, one line each; 1000,xxxg and 1010,xxxx (tens of
  thousands) are left with their x.
- Retired elements carry the extra text "retired", retired UIDs end in
  " (Retired)". Retired entries that lost their name are named so.
- The reader stops at a line of more than 119 characters: longer names are cut.
"""

import itertools
import pathlib
import unicodedata

import pydicom
from pydicom._dicom_dict import DicomDictionary, RepeatersDictionary
from pydicom._uid_dict import UID_dictionary

MAX_LINE = 119

CHOSEN_VR = {
    "US or SS": "US",
    "OB or OW": "OW",
    "US or OW": "OW",
    "US or SS or OW": "OW",
    "NONE": "XX",
}

# In the public dictionary, not yet in every release of the package.
NEWER_ELEMENTS = {
    0x00060001: ("SQ", "Current Frame Functional Groups Sequence"),
    0x00080017: ("UI", "Acquisition UID"),
    0x00080019: ("UI", "Pyramid UID"),
    0x00081088: ("LO", "Pyramid Description"),
    0x00200027: ("LO", "Pyramid Label"),
}

# Repeating elements that are written out, by the start of their tag.
WRITTEN_OUT = ("002031", "002804", "002808", "7F")


def plain_ascii(text):
    """The text in printable ASCII, without the column separator."""
    text = text.replace("\u2013", "-").replace("\u2019", "'")
    text = text.replace("\u00b5", "u").replace(";", ",")
    text = unicodedata.normalize("NFKD", text)
    return " ".join(text.encode("ascii", "ignore").decode().split())


def element_line(tag, vr, name, retired):
    """One line of Data.dic; `tag` is eight digits or x."""
    vr = CHOSEN_VR.get(vr, vr)
    if len(vr) != 2:
        raise ValueError(f"{tag}: no choice made for VR {vr!r}")
    head = f"{tag[:4]},{tag[4:]};"
    tail = f";{vr};retired" if retired else f";{vr}"
    name = plain_ascii(name) or "Retired Element"
    return head + name[: MAX_LINE - len(head) - len(tail)].rstrip() + tail


def written_out(tag):
    """The tags that a repeating tag stands for, or the tag itself."""
    if not tag.startswith(WRITTEN_OUT):
        return [tag]
    choices = ["0123456789ABCDEF" if c == "x" else c for c in tag]
    tags = ["".join(digits) for digits in itertools.product(*choices)]
    return [t for t in tags if int(t[:4], 16) % 2 == 0]


def data_lines():
    """Lines in the order of their tags; a single element's own line wins over
    the repeating one that it is part of."""
    lines = {}
    for tag, (vr, name) in NEWER_ELEMENTS.items():
        key = f"{tag:08X}"
        lines[key] = element_line(key, vr, name, False)
    for tag, (vr, _, name, retired, _) in DicomDictionary.items():
        key = f"{tag:08X}"
        lines[key] = element_line(key, vr, name, retired)
    for mask, (vr, _, name, retired, _) in RepeatersDictionary.items():
        for key in written_out(mask):
            lines.setdefault(key, element_line(key, vr, name, retired))
    return [lines[key] for key in sorted(lines)]


def uid_line(uid):
    kind, name, retired = (UID_dictionary[uid][i] for i in (1, 0, 3))
    text = plain_ascii(name) or kind
    if retired:
        text += " (Retired)"
    return f"{uid};{text}"[:MAX_LINE].rstrip()


def uid_lines():
    def components(uid):
        return [int(component) for component in uid.split(".")]

    return [uid_line(uid) for uid in sorted(UID_dictionary, key=components)]


def write(path, columns, lines):
    header = [
        f"# {columns}",
        "# Made by tools/make_dictionaries.py from the tables of pydicom "
        f"{pydicom.__version__}; do not edit.",
    ]
    for line in header + lines:
        if len(line) > MAX_LINE or not line.isascii() or not line.isprintable():
            raise ValueError(f"not a line for the reader: {line!r}")
    path.write_bytes(("\n".join(header + lines) + "\n").encode("ascii"))
    print(f"{path.name}: {len(lines)} lines")


def main():
    data = pathlib.Path(__file__).resolve().parent.parent / "data"
    data.mkdir(exist_ok=True)
    write(data / "Data.dic", "group,element;name;VR[;extra text]", data_lines())
    write(data / "Uid.dic", "UID;description", uid_lines())


if __name__ == "__main__":
    main()
