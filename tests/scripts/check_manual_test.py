#!/usr/bin/env python3
"""That check_manual.py notices what it is for, on a small tree of its own."""

import pathlib
import tempfile
import unittest

import check_manual

TREE = {
    "shell/Manual.cpp": '{"frmBancos", "bancos"},',
    "registers/frmBancos.ui": '<property name="text">\n<string>Có&amp;digo:</string>',
    "registers/frmBancos.cpp": 'advertir(x, "O código deve "\n  "ser %1 informado."); // "uma nota qualquer"\n',
    "tests/shell/EveryWindow.h": '{"bancos", ...}',
    "tests/scripts/manual_unseen.txt": "",
    "docs/windows/bancos-light-100.png": "",
    "docs/windows/bancos-dark-100.png": "",
    "docs/manual/CMakeLists.txt": "set(MANUAL_PAGES index bancos)",
    "docs/manual/index.md": "# Manual\n\n[Bancos](bancos.md)\n",
    "docs/manual/bancos.md": "# Bancos\n\n![B](../windows/bancos-light-100.png)\n\n"
                             "| **Código** | O código deve\nser *850* informado. |\n",
}


class Complaints(unittest.TestCase):
    def of(self, **changes):
        """What is said of the tree with some files changed; None takes one away."""
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for path, text in (TREE | changes).items():
                if text is not None:
                    (root / path).parent.mkdir(parents=True, exist_ok=True)
                    (root / path).write_text(text, encoding="utf-8")
            return check_manual.complaints(root)

    def test_none_of_a_whole_manual(self):
        self.assertEqual(self.of(), [])

    def test_a_message_that_is_missing_in_whole_or_in_part(self):
        for message in ('throw Error("Nada foi gravado.");', 'x("O código deve ser ser " + y);',
                        'QString("O código deve\\nmudar de nome")'):
            self.assertEqual(len(self.of(**{"agenda/a.cpp": message})), 1, message)

    def test_no_message_of_one_word_or_for_programs_only(self):
        for text in ('"Nada"', '"select * from bancos where x"', "'\"'; f(\"id\")", '"no such table: "'):
            self.assertEqual(self.of(**{"agenda/a.cpp": text}), [], text)

    def test_unseen_texts_are_listed_as_long_as_they_are_there(self):
        unseen = {"tests/scripts/manual_unseen.txt": "duas palavras\n"}
        self.assertEqual(self.of(**unseen, **{"agenda/a.cpp": '"duas palavras"'}), [])
        self.assertEqual(len(self.of(**unseen)), 1)

    def test_a_label_that_another_page_has(self):
        self.assertEqual(len(self.of(**{"registers/frmBancos.ui":
                                        '<property name="text">\n<string>Manual</string>'})), 1)

    def test_a_button_whose_key_the_page_does_not_have(self):
        button = {"registers/frmBancos.ui": '<widget class="QPushButton" name="a">\n<property name="text">'
                                            '<string>B&amp;ancos</string></property></widget>'}
        self.assertEqual(len(self.of(**button)), 1)
        page = {"docs/manual/bancos.md": TREE["docs/manual/bancos.md"] + "\nBancos: Alt+A\n"}
        self.assertEqual(self.of(**button, **page), [])

    def test_a_command_of_the_tool(self):
        tool = {"tools/a.cpp": 'ToolCommand kA{\n"dump",\n"A",\n"Mostra tudo",\n'}
        self.assertEqual(len(self.of(**tool)), 1)

    def test_a_page_that_is_not_built_or_not_led_to(self):
        self.assertEqual(len(self.of(**{"docs/manual/outra.md": "# Outra"})), 2)

    def test_a_picture_that_no_test_makes_or_that_is_missing(self):
        self.assertEqual(len(self.of(**{"tests/shell/EveryWindow.h": ""})), 1)
        self.assertEqual(len(self.of(**{"docs/windows/bancos-dark-100.png": None})), 1)
        own = {"docs/manual/index.md": "# Manual\n\n[Bancos](bancos.md)\n![A](../frmA.png)", "docs/frmA.png": ""}
        self.assertEqual(len(self.of(**own)), 1)
        self.assertEqual(self.of(**own, **{"tests/journeys/a.sh": "picture frmA active"}), [])


if __name__ == "__main__":
    unittest.main()
