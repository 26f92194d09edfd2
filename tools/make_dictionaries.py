#!/usr/bin/python3
"""Makes data/Data.dic and data/Uid.dic, the module's two dictionaries.

    apt-get install python3-pydicom
    /usr/bin/python3 tools/make_dictionaries.py

The facts (tags, names, VRs, UIDs) are those of the public DICOM data dictionary
and UID registry as Debian's python3-pydicom carries them. The same release of
the package always gives the same files. Its release 2.3.1 has PS3.6 as of early
2022; NEWER_UIDS and NEWER_ELEMENTS add what the registry took up since then:
UIDs up to the editions of 2025, of the elements those named there.

Choices made here:
- Where the public dictionary gives two VRs: "US or SS" is US, "OB or OW" is OW,
  "US or OW" and "US or SS or OW" are OW. No VR (items and delimiters) is "XX".
- A lookup folds groups 50gg and 60gg only, so these stay as 50xx and 60xx. Of
  the other repeating elements 0020,31xx, 0028,04x0 to 04x3, 0028,08x0 to 08x8
  and the even groups 7Fxx are written out, one line for each digit that an x
  stands for; 1000,xxx0 to xxx5 and 1010,xxxx (tens of thousands) are left with
  their x.
- Retired elements carry the extra text "retired", retired UIDs end in
  " (Retired)". An element whose name the registry dropped when it retired it is
  a "Retired Element"; its two UIDs of that kind have the names by which they
  are known.
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

# In the public dictionary, not yet in every release of the package; where it
# has an entry of its own that one is taken.
NEWER_ELEMENTS = {
    0x00060001: ("SQ", "Current Frame Functional Groups Sequence"),
    0x00080017: ("UI", "Acquisition UID"),
    0x00080019: ("UI", "Pyramid UID"),
    0x00080400: ("SQ", "Scope of Inventory Sequence"),
    0x00080401: ("LT", "Inventory Purpose"),
    0x00080402: ("LT", "Inventory Instance Description"),
    0x00080403: ("CS", "Inventory Level"),
    0x00080404: ("DT", "Item Inventory DateTime"),
    0x00080405: ("CS", "Removed from Operational Use"),
    0x00080406: ("SQ", "Reason for Removal Code Sequence"),
    0x00080407: ("UR", "Stored Instance Base URI"),
    0x00080408: ("UR", "Folder Access URI"),
    0x00080409: ("UR", "File Access URI"),
    0x0008040A: ("CS", "Container File Type"),
    0x0008040B: ("UR", "Filename in Container"),
    0x0008040C: ("UV", "File Offset in Container"),
    0x0008040D: ("UV", "File Length in Container"),
    0x0008040E: ("UI", "Stored Instance Transfer Syntax UID"),
    0x0008040F: ("CS", "Extended Matching Mechanisms"),
    0x00080410: ("SQ", "Range Matching Sequence"),
    0x00080411: ("SQ", "List of UID Matching Sequence"),
    0x00080412: ("SQ", "Empty Value Matching Sequence"),
    0x00080413: ("SQ", "General Matching Sequence"),
    0x00080414: ("US", "Requested Status Interval"),
    0x00080415: ("CS", "Retain Instances"),
    0x00080416: ("DT", "Expiration DateTime"),
    0x00080417: ("CS", "Transaction Status"),
    0x00080418: ("LT", "Transaction Status Comment"),
    0x00080419: ("SQ", "File Set Access Sequence"),
    0x0008041A: ("SQ", "File Access Sequence"),
    0x0008041B: ("OB", "Record Key"),
    0x0008041C: ("OB", "Prior Record Key"),
    0x0008041D: ("SQ", "Metadata Sequence"),
    0x0008041E: ("SQ", "Updated Metadata Sequence"),
    0x0008041F: ("DT", "Study Update DateTime"),
    0x00080420: ("SQ", "Inventory Access End Points Sequence"),
    0x00080421: ("SQ", "Study Access End Points Sequence"),
    0x00080422: ("SQ", "Incorporated Inventory Instance Sequence"),
    0x00080423: ("SQ", "Inventoried Studies Sequence"),
    0x00080424: ("SQ", "Inventoried Series Sequence"),
    0x00080425: ("SQ", "Inventoried Instances Sequence"),
    0x00080426: ("CS", "Inventory Completion Status"),
    0x00080427: ("UL", "Number of Study Records in Instance"),
    0x00080428: ("UV", "Total Number of Study Records"),
    0x00080429: ("UV", "Maximum Number of Records"),
    0x00081088: ("LO", "Pyramid Description"),
    0x00200027: ("LO", "Pyramid Label"),
    0x7FE00003: ("UV", "Encapsulated Pixel Data Value Total Length"),
}
NEWER_UIDS = {
    "1.2.840.10008.1.2.4.100.1": "Fragmentable MPEG2 Main Profile / Main Level",
    "1.2.840.10008.1.2.4.101.1": "Fragmentable MPEG2 Main Profile / High Level",
    "1.2.840.10008.1.2.4.102.1":
        "Fragmentable MPEG-4 AVC/H.264 High Profile / Level 4.1",
    "1.2.840.10008.1.2.4.103.1":
        "Fragmentable MPEG-4 AVC/H.264 BD-compatible High Profile / Level 4.1",
    "1.2.840.10008.1.2.4.104.1":
        "Fragmentable MPEG-4 AVC/H.264 High Profile / Level 4.2 For 2D Video",
    "1.2.840.10008.1.2.4.105.1":
        "Fragmentable MPEG-4 AVC/H.264 High Profile / Level 4.2 For 3D Video",
    "1.2.840.10008.1.2.4.106.1":
        "Fragmentable MPEG-4 AVC/H.264 Stereo High Profile / Level 4.2",
    "1.2.840.10008.1.2.4.110": "JPEG XL Lossless",
    "1.2.840.10008.1.2.4.111": "JPEG XL JPEG Recompression",
    "1.2.840.10008.1.2.4.112": "JPEG XL",
    "1.2.840.10008.1.2.4.201":
        "High-Throughput JPEG 2000 Image Compression (Lossless Only)",
    "1.2.840.10008.1.2.4.202": "High-Throughput JPEG 2000 with RPCL Options "
    "Image Compression (Lossless Only)",
    "1.2.840.10008.1.2.4.203": "High-Throughput JPEG 2000 Image Compression",
    "1.2.840.10008.1.2.4.204": "JPIP HTJ2K Referenced",
    "1.2.840.10008.1.2.4.205": "JPIP HTJ2K Referenced Deflate",
    "1.2.840.10008.1.2.8.1": "Deflated Image Frame Compression",
    "1.2.840.10008.5.1.4.1.1.6.3": "Photoacoustic Image Storage",
    "1.2.840.10008.5.1.4.1.1.9.1.4": "General 32-bit ECG Waveform Storage",
    "1.2.840.10008.5.1.4.1.1.11.12":
        "Variable Modality LUT Softcopy Presentation State Storage",
    "1.2.840.10008.5.1.4.1.1.66.7": "Label Map Segmentation Storage",
    "1.2.840.10008.5.1.4.1.1.66.8": "Height Map Segmentation Storage",
    "1.2.840.10008.5.1.4.1.1.77.1.8": "Confocal Microscopy Image Storage",
    "1.2.840.10008.5.1.4.1.1.77.1.9":
        "Confocal Microscopy Tiled Pyramidal Image Storage",
    "1.2.840.10008.5.1.4.1.1.88.77": "Waveform Annotation SR Storage",
    "1.2.840.10008.5.1.4.1.1.201.1": "Inventory Storage",
    "1.2.840.10008.5.1.4.1.1.201.1.1": "Storage Management SOP Instance",
    "1.2.840.10008.5.1.4.1.1.201.2": "Inventory - FIND",
    "1.2.840.10008.5.1.4.1.1.201.3": "Inventory - MOVE",
    "1.2.840.10008.5.1.4.1.1.201.4": "Inventory - GET",
    "1.2.840.10008.5.1.4.1.1.201.5": "Inventory Creation",
    "1.2.840.10008.5.1.4.1.1.201.6": "Repository Query",
    "1.2.840.10008.5.1.4.1.1.481.23": "Enhanced RT Image Storage",
    "1.2.840.10008.5.1.4.1.1.481.24": "Enhanced Continuous RT Image Storage",
    "1.2.840.10008.5.1.4.1.1.481.25":
        "RT Patient Position Acquisition Instruction Storage",
    "1.2.840.10008.5.1.4.1.1.601.3": "Thermography Image Storage",
    "1.2.840.10008.5.1.4.1.1.601.4": "Thermography Multi-frame Image Storage",
}

# Names that the package's tables spell wrongly.
CORRECTED_NAMES = {
    0x300A067B: "Radiation Generation Mode Sequence",
    0x300A067C: "Radiation Generation Mode Label",
    0x300A067D: "Radiation Generation Mode Description",
    0x300A067E: "Radiation Generation Mode Machine Code Sequence",
    0x300A0685: "Number of Radiation Generation Modes",
    0x30100094: "Radiation Source Coordinate System Yaw Angle",
    0x30100095: "Radiation Source Coordinate System Roll Angle",
}

# What the package has for an element without a name.
NO_NAME = ("", "Retired-blank")

# Retired UIDs that the registry keeps without their names.
DROPPED_UID_NAMES = {
    "1.2.840.10008.5.1.4.1.1.12.77": "Zeiss OPT File",
    "1.2.840.10008.5.1.4.1.1.40": "MR Image Storage Zero Padded",
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
    name = "Retired Element" if name in NO_NAME else plain_ascii(name)
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
        name = CORRECTED_NAMES.get(tag, name)
        lines[key] = element_line(key, vr, name, retired)
    for mask, (vr, _, name, retired, _) in RepeatersDictionary.items():
        for key in written_out(mask):
            lines.setdefault(key, element_line(key, vr, name, retired))
    return [lines[key] for key in sorted(lines)]


def uid_line(uid, name, retired):
    head = f"{uid};"
    tail = " (Retired)" if retired else ""
    name = plain_ascii(name or DROPPED_UID_NAMES[uid])
    return head + name[: MAX_LINE - len(head) - len(tail)].rstrip() + tail


def uid_lines():
    uids = {uid: (name, "") for uid, name in NEWER_UIDS.items()}
    for uid, (name, _, _, retired, _) in UID_dictionary.items():
        uids[uid] = (name, retired)

    def components(uid):
        return [int(component) for component in uid.split(".")]

    return [uid_line(uid, *uids[uid]) for uid in sorted(uids, key=components)]


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
