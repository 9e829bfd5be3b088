#!/usr/bin/env python3
"""Holds what the documents of a tree name against the tree.

    check_docs.py <tree>

Every Markdown file outside the builds is read. A complaint is made of a link to a file or heading
that isn't there, a document that the README doesn't lead to, and of what stands between backticks
or in a block of commands and isn't in the tree: a file, a folder, a test (Suite.Test), a function
or member (Class::name, name()), a preset, a target. What has another form is taken for a word.
"""

import fnmatch
import os
import pathlib
import re
import sys

FILE = re.compile(r"[\w./*-]+\.(?:h|cpp|ui|qrc|py|sh|md|txt|cmake|json|tsv|supp|yml)")
FOLDER = re.compile(r"(?:[\w.-]+/)+")
SCRIPT = re.compile(r"\./[\w./-]+")
TEST = re.compile(r"[A-Z]\w*\.[A-Z]\w+")
MEMBER = re.compile(r"\w+(?:::~?\w+)+(?:\(\))?")
CALL = re.compile(r"\w+\(\)")
COMMAND = re.compile(r"--(preset|target)[ =](\S+)")
LINK = re.compile(r"\[[^\]]*\]\(([^)\s]+)\)")


def files_of(tree):
    """Paths from the root of the tree; no builds, nothing hidden."""
    found = []
    for folder, folders, names in os.walk(tree):
        folders[:] = [f for f in folders if not f.startswith((".", "build", "__"))]
        found += [(pathlib.Path(folder) / name).relative_to(tree).as_posix() for name in names]
    return sorted(found)


class Tree:
    def __init__(self, root):
        self.root = pathlib.Path(root)
        self.files = files_of(root)
        self.names = {path.rsplit("/", 1)[-1] for path in self.files}
        self.folders = {
            "/".join(path.split("/")[:depth]) + "/"
            for path in self.files for depth in range(1, path.count("/") + 1)
        }
        code = "\n".join(self.read(f) for f in self.files if f.endswith((".h", ".cpp")))
        lists = "\n".join(self.read(f) for f in self.files if f.endswith("CMakeLists.txt"))
        self.words = set(re.findall(r"\w+", code))
        self.any_case = {word.lower() for word in self.words}
        self.tests = {
            f"{suite}.{test}"
            for suite, test in re.findall(r"\bTEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\s*\)", code)
        }
        self.targets = set(re.findall(
            r"(?:house_\w+|add_executable|add_library|add_custom_target)\(\s*([\w-]+)", lists))
        presets = self.read("CMakePresets.json") if "CMakePresets.json" in self.files else ""
        self.presets = set(re.findall(r'"name": "([\w-]+)"', presets))

    def read(self, path):
        return (self.root / path).read_text(encoding="utf-8", errors="replace")

    def documents(self):
        return [f for f in self.files if f.endswith(".md") and not f.startswith("third_party/")]

    def has_file(self, path, beside):
        if "/" not in path:
            return bool(fnmatch.filter(self.names, path))
        near = os.path.normpath(f"{beside}/{path}") if beside else os.path.normpath(path)
        return any(fnmatch.filter(self.files, p) for p in (os.path.normpath(path), near))

    def missing(self, word, beside):
        """What is wrong with a word between backticks, or None."""
        if SCRIPT.fullmatch(word) or FILE.fullmatch(word):
            return None if self.has_file(word, beside) else "no such file"
        if FOLDER.fullmatch(word):
            return None if word in self.folders else "no such folder"
        if TEST.fullmatch(word):
            return None if word in self.tests else "no such test"
        if MEMBER.fullmatch(word):
            unknown = set(re.findall(r"\w+", word)) - self.words - {"std"}
            return None if not unknown else "nothing in the sources has this name"
        if CALL.fullmatch(word):
            return None if word[:-2].lower() in self.any_case else "no such function"
        return None


def headings(text):
    """The anchors of a document's headings, as the usual viewers make them."""
    lines = re.sub(r"(?ms)^```.*?^```", "", text).splitlines()
    titles = [line.lstrip("#").strip().lower() for line in lines if line.startswith("#")]
    return {re.sub(r"[^\w\- ]", "", title).replace(" ", "-") for title in titles}


def complaints(root):
    tree = Tree(root)
    documents = {path: tree.read(path) for path in tree.documents()}
    found = []
    leads_to = {path: set() for path in documents}
    for path, text in documents.items():
        beside = path.rpartition("/")[0]
        for link in LINK.findall(text):
            if "://" in link or link.startswith("mailto:"):
                continue
            name, _, anchor = link.partition("#")
            target = os.path.normpath(f"{beside}/{name}" if beside else name) if name else path
            if target not in tree.files and target + "/" not in tree.folders:
                found.append(f"{path}: a link to {link}, which isn't there")
            elif anchor and target in documents and anchor not in headings(documents[target]):
                found.append(f"{path}: a link to {link}, a heading that isn't there")
            leads_to[path].add(target)
        fenced = re.findall(r"(?ms)^```.*?^```", text)
        prose = re.sub(r"(?ms)^```.*?^```", "", text)
        for word in sorted(set(re.findall(r"`([^`\n]+)`", prose))):
            if (reason := tree.missing(word, beside)) is not None:
                found.append(f"{path}: `{word}`: {reason}")
        for kind, name in COMMAND.findall("\n".join([prose, *fenced])):
            name = name.strip("`,.;:()")
            if re.fullmatch(r"[\w-]+", name) and name not in getattr(tree, kind + "s"):
                found.append(f"{path}: --{kind} {name}: there is none")

    reached, ahead = set(), ["README.md"]
    while ahead:
        path = ahead.pop()
        if path in documents and path not in reached:
            reached.add(path)
            ahead += leads_to[path]
    found += [f"{path}: the README doesn't lead to it" for path in documents if path not in reached]
    return found


if __name__ == "__main__":
    wrong = complaints(sys.argv[1])
    print("\n".join(wrong))
    sys.exit(1 if wrong else 0)
