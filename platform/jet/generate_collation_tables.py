#!/usr/bin/env python3
"""Makes CollationTables.cpp from the weight tables of the text orders.

    generate_collation_tables.py FOLDER > CollationTables.cpp

FOLDER holds jet3_general.tsv (a line for each byte: byte, kind, sig, primary, nibble, meaning) and
jet4_general_legacy_*.tsv (a line for each UTF-16 unit that isn't ignored: unit, kind, n, primary,
extra, flag), tab-separated, numbers in hexadecimal, comments after '#'. Neighbouring units that
differ by a constant step of their primary weight become one line of the table.
"""

import pathlib
import sys

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
    for path in sorted(folder.glob("jet4_general_legacy_*.tsv")):
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


def main():
    folder = pathlib.Path(sys.argv[1])
    print('#include "jet/CollationTables.h"')
    print()
    print("// Made by generate_collation_tables.py; change that, not this.")
    print()
    print("namespace jet {")
    print()
    print("// clang-format off")
    print()
    print("namespace {")
    print("using enum WeightKind;")
    print("} // namespace")
    print()
    print("const std::array<Weight, 256> kJet3GeneralWeights = {{")
    for _, kind, sig, primary, nibble, _ in rows(folder / "jet3_general.tsv"):
        print(f"{{0x{primary_word(primary):08X}, {int(nibble or '0', 16)}, {kind}, {sig}}},")
    print("}};")
    print()
    print("const WeightRun kJet4GeneralRuns[] = {")
    table = runs(unit_weights(folder))
    for first, count, (kind, elements, _, extra), primary, step in table:
        print(f"{{0x{first:04X}, {count}, 0x{step:X}, {{0x{primary:08X}, {extra}, {kind}, {elements}}}}},")
    print("};")
    print(f"const std::size_t kJet4GeneralRunCount = {len(table)};")
    print()
    print("// clang-format on")
    print()
    print("} // namespace jet")


main()
