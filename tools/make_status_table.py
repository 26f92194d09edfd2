#!/usr/bin/env python3
"""Makes host/dialogue/status_table.inc from the tables of docs/statuses.md.

Run without arguments, anywhere. Fails on a row that it cannot read, on codes of a service that
overlap, and on a service that is named in one part of the page only.
"""
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs" / "statuses.md"
TABLE = ROOT / "host" / "dialogue" / "status_table.inc"
CODES = re.compile(r"([0-9A-F]{4})(?:-([0-9A-F]{4}))?$")
CLASSES = {"success", "pending", "cancel", "warning", "failure"}


def cells(line):
    return [cell.strip() for cell in line.strip().strip("|").split("|")]


def code_row(service, columns):
    codes, status_class, text = columns
    found = CODES.match(codes)
    if not found or status_class not in CLASSES or '"' in text:
        sys.exit(f"{PAGE.name}: cannot read the row of {codes} in {service}")
    first = int(found[1], 16)
    return service, first, int(found[2] or found[1], 16), status_class, text


def read_page():
    services, statuses, service = [], [], None
    for line in PAGE.read_text(encoding="utf-8").splitlines():
        if line.startswith("### "):
            service = line[4:].split(":")[0]
        if not line.startswith("| ") or line.startswith(("| service", "| code")):
            continue
        if service:
            statuses.append(code_row(service, cells(line)))
        else:
            services.append(cells(line))
    return services, statuses


def check(services, statuses):
    listed = {row[0] for row in statuses}
    for name in {row[0] for row in services} ^ listed - {"general"}:
        if name != "general":
            sys.exit(f"{PAGE.name}: {name} stands in one part of the page only")
    for before, after in zip(statuses, statuses[1:]):
        if before[0] == after[0] and before[2] >= after[1]:
            sys.exit(f"{PAGE.name}: {after[0]} has overlapping or unsorted codes")


def write(services, statuses):
    lines = ["// Made by tools/make_status_table.py from docs/statuses.md.",
             "constexpr ServiceRow kServices[] = {"]
    for service, command, sop_class in services:
        prefix = "" if sop_class == "*" else sop_class
        lines.append(f'    {{"{service}", "{command.rstrip("*")}", "{prefix}"}},')
    lines += ["};", "", "constexpr StatusRow kStatuses[] = {"]
    for service, first, last, status_class, text in statuses:
        name = "StatusClass::k" + status_class.capitalize()
        lines.append(f'    {{"{service}", 0x{first:04X}, 0x{last:04X}, {name},')
        lines.append(f'     "{text}"}},')
    lines.append("};")
    TABLE.write_text("\n".join(lines) + "\n", encoding="utf-8")


def main():
    services, statuses = read_page()
    check(services, statuses)
    write(services, statuses)


if __name__ == "__main__":
    main()
