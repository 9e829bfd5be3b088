#!/usr/bin/env python3
"""check_layout.py on one structure: what differs between source and table is told, nothing else."""

import pathlib
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).parent))
import check_layout

SOURCE = """struct PairLayout : Structure {
    Field<std::uint16_t> first{2};
    MaybeField<RowId> map{at(none, 4)};
    ShortField prefix{at(4, 8), at(1, 2)}; ///< and more
    Stretch mask{at(5, 10), at(3, 0x0A)};
    std::size_t size{at(8, 20)};
};
"""
TABLE = """`PairLayout` in the sources:

| J3 | J4 | Size | Field |
|---|---|---|---|
| 0 | 0 | 2 | the head of the page |
| 2 | 2 | 2 | first |
| | 0x04 | 4 | map |
| 4 | 8 | 1 / 2 | prefix |
| 5 | 10 | 3 / 10 | mask |
| 8 | 20 | to the end | entries |
"""


class Layout(unittest.TestCase):
    def wrong(self, source=SOURCE, table=TABLE):
        with tempfile.TemporaryDirectory() as folder:
            for path, text in {"platform/jet/page/Format.h": source,
                               "docs/format/pair.md": table}.items():
                place = pathlib.Path(folder) / path
                place.parent.mkdir(parents=True, exist_ok=True)
                place.write_text(text, encoding="utf-8")
            return check_layout.complaints(folder)

    def test_what_agrees_has_no_complaints(self):
        self.assertEqual(self.wrong(), [])

    def test_another_place_or_size_is_noticed(self):
        for old, new in (("| 2 | 2 | 2 |", "| 2 | 3 | 2 |"), ("| 2 | 2 | 2 |", "| 2 | 2 | 4 |"),
                         ("| | 0x04 |", "| 4 | 0x04 |"), ("3 / 10", "3 / 9")):
            with self.subTest(new):
                self.assertEqual(len(self.wrong(table=TABLE.replace(old, new))), 2)
        self.assertEqual(len(self.wrong(source=SOURCE.replace("at(4, 8)", "at(4, 9)"))), 2)

    def test_what_one_of_them_lacks_is_noticed(self):
        self.assertEqual(self.wrong(table=TABLE.replace("| 2 | 2 | 2 | first |\n", "")),
                         ["PairLayout::first has no row: (2, 2, 2, 2)"])
        without = SOURCE.replace("    MaybeField<RowId> map{at(none, 4)};\n", "")
        self.assertEqual(self.wrong(source=without),
                         ["PairLayout: no field for: (None, 4, 4, 4) map"])

    def test_a_structure_that_is_told_nowhere_or_is_none_is_noticed(self):
        self.assertEqual(len(self.wrong(table="\n")), 4)
        self.assertEqual(self.wrong(table=TABLE + "\n`GoneLayout`\n"),
                         ["pair.md: GoneLayout: no such structure in Format.h"])


if __name__ == "__main__":
    unittest.main()
