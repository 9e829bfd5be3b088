"""Reads what llvm-cov exports of a layer, and tells how much of it was run:

    coverage_totals.py <export.json> <root> <layer> <missed.txt>

Counts each line that has code, and both ways of each condition, once, however many kinds a template
is made for. What can't be run is marked where it stands, with its reason,

    if (::close(file) != 0) // unreached: nothing is left to be written
        throw ...;

and that line and the unreached ones right behind it are left out. A mark where all is reached is
told. Lists what is missed in <missed.txt>; ends with 1 if that is more than LIMITS allow.
"""

import json
import re
import sys
from collections import defaultdict
from pathlib import Path

LIMITS = {"lines": 99.0, "branches": 95.0}  # in a hundred
MARK = re.compile(r"// unreached: \S")


def lines_of(segments):
    """How often each line was run, as llvm-cov counts: by the regions that begin on it, and by the
    one that goes on into it unless it ends there."""
    starting = defaultdict(list)
    for segment in segments:
        starting[segment[0]].append(segment)
    counts = {}
    wrapped = None
    for line in range(segments[0][0], segments[-1][0] + 1) if segments else ():
        here = starting[line]
        # line, column, count, has count, begins a region, is a gap
        begun = [s for s in here if s[3] and s[4] and not s[5]]
        skipped = bool(here) and not here[0][3] and here[0][4]
        if not skipped and ((wrapped and wrapped[3]) or begun):
            counts[line] = max([wrapped[2] if wrapped and wrapped[3] else 0] + [s[2] for s in begun])
        if here:
            wrapped = here[-1]
    return counts


def is_constant(source, branch):
    """Whether a condition is decided when it is compiled: it is never counted."""
    line, column, _, end = branch[:4]
    text = source[line - 1]
    return text[column - 1 : end - 1] in ("true", "false") or "if constexpr" in text


def branches_of(branches, source):
    """How often each condition was true and false, by its place."""
    counts = {}
    for branch in branches:
        if is_constant(source, branch):
            continue
        place = tuple(branch[:4])
        true, false = counts.get(place, (0, 0))
        counts[place] = (true + branch[4], false + branch[5])
    return counts


def left_out(source, counts, branches):
    """The lines that marks leave out, and the marks that leave out nothing."""
    out, idle = set(), []
    for number, text in enumerate(source, 1):
        if not MARK.search(text):
            continue
        here = {number}
        line = number + 1
        while line <= len(source) and (counts.get(line) == 0 or not source[line - 1].strip()):
            here.add(line)
            line += 1
        if not any(counts.get(line) == 0 for line in here) and not any(
            place[0] in here and 0 in ways for place, ways in branches.items()
        ):
            idle.append(number)
        out |= here
    return out, idle


def main(export, root, layer, missed_file):
    with open(export, encoding="utf-8") as file:
        files = json.load(file)["data"][0]["files"]
    total = {"lines": [0, 0], "branches": [0, 0]}
    missed, idle = [], []
    print(f"{layer:40} {'lines':>7} {'missed':>7} {'branches':>9} {'missed':>7}")
    for entry in sorted(files, key=lambda entry: entry["filename"]):
        name = str(Path(entry["filename"]).relative_to(root))
        source = Path(entry["filename"]).read_text(encoding="utf-8").splitlines()
        counts = lines_of(entry["segments"])
        branches = branches_of(entry["branches"], source)
        out, unused = left_out(source, counts, branches)
        idle += [f"{name}:{line}" for line in unused]
        lines = {line: count for line, count in counts.items() if line not in out}
        ways = [
            (place, way, count)
            for place, both in sorted(branches.items())
            for way, count in zip(("true", "false"), both)
            if place[0] not in out
        ]
        lost_lines = [line for line, count in lines.items() if count == 0]
        lost_ways = [(place, way) for place, way, count in ways if count == 0]
        for line in lost_lines:
            missed.append((name, line, 0, source[line - 1].strip()))
        for (line, column, last, end), way in lost_ways:
            condition = source[line - 1][column - 1 : end - 1 if last == line else None]
            missed.append((name, line, column, f"never {way}: {condition}"))
        for kind, all_, lost in (("lines", lines, lost_lines), ("branches", ways, lost_ways)):
            total[kind][0] += len(all_)
            total[kind][1] += len(lost)
        print(f"{name:40} {len(lines):7} {len(lost_lines):7} {len(ways):9} {len(lost_ways):7}")
    with open(missed_file, "w", encoding="utf-8") as file:
        for name, line, column, text in sorted(missed):
            file.write(f"{name}:{line}{f':{column}' if column else ''}: {text}\n")

    for place in idle:
        print(f"{place}: the mark says unreached, but all of it is reached")
    good = not idle
    for kind, (count, lost) in total.items():
        reached = 100 * (count - lost) / count if count else 0.0
        enough = reached >= LIMITS[kind]
        good &= enough
        print(
            f"{layer}: {reached:.2f} % of {count} {kind}, {lost} missed"
            f"{'' if enough else f'; wanted {LIMITS[kind]:.0f} %'}"
        )
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
