#!/usr/bin/env python3
"""Holds the manual against the program.

    check_manual.py <tree>

What the program can say is every text of its sources that has two words or more, wherever it is used:
so no message gets by because it is shown in a new way. The parts of a text between its placeholders
must stand in the manual, what a .ui file shows and the keys of its buttons on the page of that window, and the
technician's tool's commands on his. What only programs read is
known by its looks (NOT_SEEN) or listed in manual_unseen.txt. A complaint is made, too, of a page that
the manual isn't built from or the index doesn't lead to, and of a picture that no test makes.
"""

import html
import pathlib
import re
import sys

FOLDERS = ("platform", "shell", "registers", "cheques", "collections", "agenda", "reports")
TOKEN = re.compile(
    r'//[^\n]*|/\*.*?\*/|#include[^\n]*|R"(?P<mark>\w*)\(.*?\)(?P=mark)"|"(?P<text>(?:[^"\\\n]|\\.)*)"'
    r"|'(?:[^'\\\n]|\\.)+'|(?P<blank>\s+)|[^\s\"'/#]+|.", re.S)
ESCAPE = re.compile(r'\\([nrt"\\])')
PLACEHOLDER = re.compile(r"%\d|[\n\r\t]+")
WORD = re.compile(r"[A-Za-zÀ-ÿ]{2,}")
NOT_SEEN = re.compile(
    r"^(create|alter|comment on|grant|revoke|reset|copy|set|drop|lock|analyze|validate) |"
    r"select[ ,]|add (primary|foreign|constraint) |from (public|stdin)|to stdout|foreign key|"
    r"on (update|delete) |set default|not valid|validate constraint|case when|order by |provider=|pragma |\bwhere \b|^ ?and |inner join|collate|"
    r"\b(the|has|have|are|of|no such|column|isn't)\b|[a-z]+_[a-z]+|^[\w/-]+\.\w+$|::|<\?|PRODID|MMMM|mmmm|yyyy|</?\w",
    re.I)


def literals(code):
    """The texts of a source, those beside each other as one."""
    found, current = [], None
    for token in TOKEN.finditer(code):
        if token["text"] is not None:
            current = (current or "") + ESCAPE.sub(
                lambda e: {"n": "\n", "r": "\n", "t": "\t"}.get(e[1], e[1]), token["text"])
        elif not token["blank"] and not token[0].startswith(("//", "/*")):
            if current is not None:
                found.append(current)
            current = None
    return found + ([current] if current is not None else [])


def plain(text):
    """As it is compared: blanks, marks of access keys and quotation marks don't count."""
    text = re.sub(r"&(?=\w)", "", re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", text))
    return re.sub(r"\s+", " ", re.sub(r'[\\"*`_|“”]', " ", text)).strip()


def parts(text):
    """What must stand in the manual of one text."""
    found = []
    for part in PLACEHOLDER.split(text):
        part = plain(part).strip(" .,:;()!?…-")
        if " " in part and len(WORD.findall(part)) >= 2:
            found.append(part)
    return found


def shown(ui):
    """What a form shows: labels, captions, tool-tips, names for screen readers."""
    texts = re.findall(
        r'<property name="(?:text|toolTip|windowTitle|title|accessibleName)"[^>]*>\s*<string>(.*?)</string>'
        r'|<attribute name="title">\s*<string>(.*?)</string>', ui, re.S)
    return [html.unescape(a or b) for a, b in texts]


def keys(ui):
    """Of the buttons of a form: "Alt+S"."""
    buttons = re.findall(
        r'<widget class="QPushButton"(?:(?!</?widget).)*?<property name="text">\s*<string>(.*?)</string>',
        ui, re.S)
    return ["Alt+" + key.upper() for key in re.findall(r"&amp;(\w)", " ".join(buttons))]


def complaints(root):
    root = pathlib.Path(root)
    folder = root / "docs/manual"
    # A line break within a sentence is a blank.
    pages = {page.stem: plain(page.read_text(encoding="utf-8")) for page in folder.glob("*.md")}
    whole = "\n".join(pages.values())
    unseen = {plain(line) for line in
              (root / "tests/scripts/manual_unseen.txt").read_text(encoding="utf-8").splitlines()}
    wrong, used = [], set()
    for source in sorted(p for f in FOLDERS for p in (root / f).rglob("*") if p.suffix in (".h", ".cpp")):
        for text in literals(source.read_text(encoding="utf-8")):
            if NOT_SEEN.search(text):
                continue
            for part in parts(text):
                if part in unseen:
                    used.add(part)
                elif part not in whole:
                    wrong.append(f"{source.relative_to(root)}: the manual doesn't have \"{part}\"")
    wrong += [f"manual_unseen.txt: no source has \"{line}\"" for line in unseen - used if line]

    manual = (root / "shell/Manual.cpp").read_text(encoding="utf-8")
    page_of = dict(re.findall(r'\{"(\w+)",\s*"([\w-]+)"\s*\}', manual))
    for ui in sorted(p for f in FOLDERS for p in (root / f).rglob("*.ui")):
        page = page_of.get(ui.stem)
        content = ui.read_text(encoding="utf-8") if page else ""
        wrong += [f"{ui.relative_to(root)}: {page}.md doesn't have {key}"
                  for key in keys(content) if key not in pages.get(page, "")]
        for text in shown(content):
            for part in [plain(line).strip(" .:") for line in text.split("\n")]:
                if part and part not in pages.get(page, ""):
                    wrong.append(f"{ui.relative_to(root)}: {page}.md doesn't have \"{part}\"")

    for tool in (root / "tools").glob("*.cpp"):
        for name, does in re.findall(r'ToolCommand \w+\{\s*"(\w+)",\s*"[^"]*",\s*"([^"]*)"',
                                     tool.read_text(encoding="utf-8")):
            if f"{name} {does}" not in pages.get("tecnico", ""):
                wrong.append(f"{tool.relative_to(root)}: tecnico.md doesn't have \"{name}: {does}\"")

    built = (folder / "CMakeLists.txt").read_text(encoding="utf-8")
    listed = re.search(r"set\(MANUAL_PAGES([^)]*)\)", built)[1].split()
    index = (folder / "index.md").read_text(encoding="utf-8")
    for page in sorted(set(listed) ^ set(pages)):
        wrong.append(f"{page}.md: listed and there are not the same")
    for page in sorted(set(pages) - {"index"}):
        if f"({page}.md)" not in index:
            wrong.append(f"{page}.md: the index doesn't lead to it")
    states = (root / "tests/shell/EveryWindow.h").read_text(encoding="utf-8")
    journeys = "".join(j.read_text(encoding="utf-8") for j in (root / "tests/journeys").glob("*.sh"))
    for page in folder.glob("*.md"):
        for picture in re.findall(r"\.\./(\S+?)\)", page.read_text(encoding="utf-8")):
            state = re.fullmatch(r"windows/([\w-]+)-light-100\.png", picture)
            made = (f'"{state[1]}"' in states or f'"{state[1][:-1]}"' in states if state
                    else f"picture {picture.removesuffix('.png')} " in journeys)
            files = [root / "docs" / picture.replace("-light-", s) for s in ("-light-", "-dark-")]
            if not made or not all(file.is_file() for file in files):
                wrong.append(f"{page.name}: no test makes the picture {picture}, light and dark")
    return wrong


if __name__ == "__main__":
    found = complaints(sys.argv[1])
    print("\n".join(found))
    sys.exit(1 if found else 0)
