#!/usr/bin/env python3
"""Holds the byte tables of docs/format against the layout in the sources.

    check_layout.py <tree>

A document names a structure of Format.h between backticks ahead of the table, or the tables, of its
fields: every field must be a row, at the same places (J3, J4) and of the same size, and every row a
field. Rows without sizes in numbers tell of what isn't a field; what stands ahead of the structure's
first field is the head that all pages have.
"""

import pathlib
import re
import sys

SIZES = {"std::uint8_t": 1, "std::uint16_t": 2, "std::uint32_t": 4, "std::int32_t": 4, "double": 8,
         "RowId": 4, "PageNo": 4, "PageKind": 1}
STRUCTURE = re.compile(r"struct (\w+Layout) : Structure \{(.*?)\n\};", re.S)
FIELD = re.compile(r"^ +(?:Maybe|Short)?(Field|Stretch)(?:<(.+?)>)? (\w+)\{(.+)\};", re.M)
NUMBER = re.compile(r"0x[0-9A-Fa-f]+|\d+")


def pair(value):
    return value if isinstance(value, tuple) else (value, value)


def layouts(source):
    """{structure: {(place in J3, in J4, size in J3, in J4): field}}; a place is None where the
    version hasn't got the field."""
    found = {}
    for name, body in STRUCTURE.findall(source):
        fields = found.setdefault(name, {})
        for _, kind, field, places in FIELD.findall(body):
            values = eval(f"({places},)", {"at": lambda *both: both, "none": None})
            size = SIZES[kind] if kind else values[1]
            fields[pair(values[0]) + pair(size)] = field
    return found


def rows(table):
    """The same of the rows of a table: J3, J4, size, what for."""
    found = {}
    for line in table:
        cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
        sizes = [int(size) for size in cells[2].split("/") if NUMBER.fullmatch(size.strip())]
        if sizes and len(sizes) == cells[2].count("/") + 1:
            places = [int(cell, 0) if NUMBER.fullmatch(cell) else None for cell in cells[:2]]
            found[(*places, sizes[0], sizes[-1])] = cells[3]
    return found


def table_behind(lines):
    """The next table's rows, without its two lines of headings."""
    begin = next((i for i, line in enumerate(lines) if line.startswith("|")), len(lines))
    end = next((i for i in range(begin, len(lines)) if not lines[i].startswith("|")), len(lines))
    return lines[begin + 2:end]


def complaints(root):
    root = pathlib.Path(root)
    structures = layouts((root / "platform/jet/page/Format.h").read_text(encoding="utf-8"))
    found, told = [], {}
    for document in sorted((root / "docs/format").glob("*.md")):
        lines = document.read_text(encoding="utf-8").splitlines()
        for i, line in enumerate(lines):
            for name in re.findall(r"`(\w+Layout)`", line):
                if name not in structures:
                    found.append(f"{document.name}: {name}: no such structure in Format.h")
                    continue
                told.setdefault(name, {}).update(rows(table_behind(lines[i:])))
    for name, fields in structures.items():
        if not fields:
            continue
        first = [min(place[v] for place in fields if place[v] is not None) for v in (0, 1)]
        table = {place: what for place, what in told.get(name, {}).items()
                 if any(place[v] is not None and place[v] >= first[v] for v in (0, 1))}
        found += [f"{name}::{fields[place]} has no row: {place}"
                  for place in fields.keys() - table.keys()]
        found += [f"{name}: no field for: {place} {table[place]}"
                  for place in table.keys() - fields.keys()]
    return sorted(found)


if __name__ == "__main__":
    wrong = complaints(sys.argv[1])
    print("\n".join(wrong))
    sys.exit(1 if wrong else 0)
