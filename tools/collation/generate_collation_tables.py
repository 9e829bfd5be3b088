#!/usr/bin/env python3
"""Makes CollationTables.cpp, the weights of the text orders, from the tables beside this script.

    generate_collation_tables.py            writes the file anew
    generate_collation_tables.py --check    says whether it would become another

jet3_general.tsv has a line for each byte of code page 1252 (byte, kind, sig, primary, nibble, and
the character for the reader), jet4_general_*.tsv one for each UTF-16 unit that isn't ignored (unit,
kind, n, primary, extra, flag): tab-separated, numbers in hexadecimal, comments after '#'. What the
columns mean: docs/format/text-order.md. Neighbouring units that differ by a constant step of their
primary weight become one line of the C++ table.
"""

import pathlib
import sys

TABLES = pathlib.Path(__file__).resolve().parent
PLATFORM = TABLES.parents[1] / "platform"
KINDS = {"W": "W", "A": "A", "M": "M", "P": "P", "K2": "K2", "K3": "K3"}


def rows(path):
    for line in path.read_text(encoding="utf-8").splitlines():
        if line and not line.startswith("#"):
            yield (line.split("\t") + [""] * 6)[:6]


def primary_word(digits):
    """Weight bytes from the top of a 32-bit word down, so that words compare as the bytes do."""
    weight = bytes.fromhex(digits)
    assert len(weight) <= 4 and all(byte >= 2 for byte in weight)
    return int.from_bytes(weight.ljust(4, b"\0"), "big")


def unit_weights(folder):
    weights = {}
    for path in sorted(folder.glob("jet4_general_*.tsv")):
        for unit, kind, count, primary, extra, flag in rows(path):
            assert len(extra) in (0, 2 * int(count or 0) or 2)
            shape = (KINDS[kind + flag], int(count), len(primary), int(extra or "0", 16))
            weights[int(unit, 16)] = (shape, primary_word(primary))
    return weights


def runs(weights):
    """(first unit, count, shape, first primary, step), in order of the units."""
    found = []
    for unit, (shape, primary) in sorted(weights.items()):
        if found:
            first, count, last_shape, start, step = found[-1]
            if first + count == unit and last_shape == shape:
                difference = primary - (start + step * (count - 1))
                if difference == step or (count == 1 and difference >= 0):
                    found[-1] = (first, count + 1, shape, start, difference)
                    continue
        found.append((unit, 1, shape, primary, 0))
    return found


def source(include):
    """The text of CollationTables.cpp, whose header is included as `include`."""
    bytes_table = [
        f"{{0x{primary_word(primary):08X}, {int(nibble or '0', 16)}, {kind}, {sig}}},"
        for _, kind, sig, primary, nibble, _ in rows(TABLES / "jet3_general.tsv")
    ]
    units_table = [
        f"{{0x{first:04X}, {count}, 0x{step:X}, {{0x{primary:08X}, {extra}, {kind}, {elements}}}}},"
        for first, count, (kind, elements, _, extra), primary, step in runs(unit_weights(TABLES))
    ]
    return "\n".join([
        f'#include "{include}"',
        "",
        "// Made by tools/collation/generate_collation_tables.py; change that, not this.",
        "",
        "namespace jet {",
        "",
        "// clang-format off",
        "",
        "namespace {",
        "using enum WeightKind;",
        "} // namespace",
        "",
        "const std::array<Weight, 256> kJet3GeneralWeights = {{",
        *bytes_table,
        "}};",
        "",
        "const WeightRun kJet4GeneralRuns[] = {",
        *units_table,
        "};",
        f"const std::size_t kJet4GeneralRunCount = {len(units_table)};",
        "",
        "// clang-format on",
        "",
        "} // namespace jet",
        "",
    ])


def main():
    header, = (PLATFORM / "jet").rglob("CollationTables.h")
    target = header.with_suffix(".cpp")
    made = source(header.relative_to(PLATFORM).as_posix())
    if sys.argv[1:] != ["--check"]:
        target.write_text(made, encoding="utf-8")
    elif target.read_text(encoding="utf-8") != made:
        sys.exit(f"{target} isn't what its tables give: run {sys.argv[0]}")


main()
