#!/usr/bin/env python3
"""check_docs.py on trees of a few files: each kind of rot is noticed, and nothing else."""

import pathlib
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).parent))
import check_docs

SOUND = {
    "README.md": "[pages](docs/pages.md#the-first-page), `./run`, `platform/jet/`, `Pager.h`\n",
    "docs/pages.md": "# Pages\n\n## The first page\n\n`Pager::read()`, `open()`, `Page.IsRead`,"
                     " `../README.md`, `Pag*.h`, `cmake --build --preset dev --target jet_test`,"
                     " `word`, `0x10`, `std::string`, `automacao.mdb`\n",
    "run": "",
    "CMakePresets.json": '{"configurePresets": [{"name": "dev"}]}',
    "platform/jet/Pager.h": "class Pager { void read(); void open(); }; // std::string\n",
    "tests/jet/PagerTest.cpp": "TEST_F(Page, IsRead) {}\n",
    "tests/jet/CMakeLists.txt": "house_test(jet_test SOURCES PagerTest.cpp)\n",
    "build/dev/left.md": "[nowhere](gone.md)\n",
}


class Documents(unittest.TestCase):
    def wrong(self, **changed):
        with tempfile.TemporaryDirectory() as folder:
            for path, text in {**SOUND, **changed.get("files", {})}.items():
                place = pathlib.Path(folder) / path
                place.parent.mkdir(parents=True, exist_ok=True)
                place.write_text(text, encoding="utf-8")
            return check_docs.complaints(folder)

    def page(self, text):
        return self.wrong(files={"docs/pages.md": "## The first page\n" + text})

    def test_a_sound_tree_has_no_complaints(self):
        self.assertEqual(self.wrong(), [])

    def test_each_kind_of_rot_is_noticed(self):
        for text in ("[x](gone.md)", "[x](../README.md#gone)", "[x](#gone)", "`Gone.h`",
                     "`platform/gone/Pager.h`", "`Gone*.cpp`", "`platform/gone/`", "`./gone`",
                     "`Page.IsGone`", "`Pager::gone()`", "`Gone::read`", "`gone()`",
                     "`--preset gone`", "`--target gone_test`", "```\ncmake --preset gone\n```",
                     "    cmake --build --preset dev --target gone\n"):
            with self.subTest(text):
                found = self.page(text)
                self.assertEqual(len(found), 1, found)
                self.assertIn("gone", found[0].lower())

    def test_a_document_that_nobody_leads_to_is_noticed(self):
        self.assertEqual(self.wrong(files={"docs/alone.md": "# Alone\n"}),
                         ["docs/alone.md: the README doesn't lead to it"])

    def test_links_to_other_places_are_left_alone(self):
        self.assertEqual(self.page("[x](https://example.org/gone.md)"), [])


if __name__ == "__main__":
    unittest.main()
