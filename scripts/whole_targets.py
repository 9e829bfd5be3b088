#!/usr/bin/env python3
"""Makes of a build's compile commands those in which all sources of a target are one.

whole_targets.py <build> <out>: writes <out>/compile_commands.json and the sources that it names, and
prints these, the largest first: whoever works on several at a time isn't left with one at the end.
Whoever checks by it reads the headers once for each target, and finds names that mean two things in
two files of it: the build, which compiles some sources at once, sees only those that happen to meet.
"""

import json
import re
import shlex
import sys
from collections import defaultdict
from pathlib import Path


def length(command: dict) -> int:
    """Of the sources that are compiled at once."""
    sources = re.findall(r'#include "(.*)"', Path(command["file"]).read_text())
    return sum(Path(source).stat().st_size for source in sources)


def main(build: Path, out: Path) -> None:
    out.mkdir(parents=True, exist_ok=True)
    targets = defaultdict(list)
    for command in json.loads((build / "compile_commands.json").read_text()):
        file = Path(command["file"])
        if file.parent.name == "Unity":
            targets[file.parent.parent.stem].append(command)
    whole = []
    lengths = {target: sum(map(length, commands)) for target, commands in targets.items()}
    for target, commands in sorted(targets.items(), key=lambda item: -lengths[item[0]]):
        source = out.resolve() / f"{target}.cxx"
        source.write_text("".join(f'#include "{command["file"]}"\n' for command in commands))
        arguments = shlex.split(commands[0]["command"])
        arguments[arguments.index("-c") + 1] = str(source)
        whole.append(
            {
                "directory": commands[0]["directory"],
                "file": str(source),
                "arguments": arguments[arguments[0].endswith("ccache") :],
            }
        )
    if not whole:
        sys.exit(f"{build} compiles no sources several at once: there would be nothing to check")
    (out / "compile_commands.json").write_text(json.dumps(whole, indent=1))
    print(*(command["file"] for command in whole), sep="\n")


main(Path(sys.argv[1]), Path(sys.argv[2]))
