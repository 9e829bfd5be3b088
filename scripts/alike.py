#!/usr/bin/env python3
"""Makes of a build's compile commands those in which all sources that are compiled alike are one.

alike.py <build> <out>: writes <out>/compile_commands.json and the sources that it names. Whoever
checks by it reads the headers once for all of them, and finds names that mean two things in two
files: the build, which compiles a few sources at once, sees only those that happen to meet.
"""

import json
import shlex
import sys
from collections import defaultdict
from pathlib import Path


def alike(commands: list[dict]) -> dict[tuple, list[Path]]:
    """The files of the unity build by their directory and arguments, their own names left out."""
    groups = defaultdict(list)
    for command in commands:
        if "/Unity/" not in command["file"]:
            continue
        arguments = shlex.split(command["command"])
        arguments = [one for one in arguments if not one.endswith("ccache")]
        output = arguments.index("-o")
        del arguments[output : output + 2]
        groups[command["directory"], *arguments[:-1]].append(Path(command["file"]))
    return groups


def main(build: Path, out: Path) -> None:
    out.mkdir(parents=True, exist_ok=True)
    commands = []
    groups = alike(json.loads((build / "compile_commands.json").read_text()))
    # The largest first: they take longest.
    for number, (key, files) in enumerate(sorted(groups.items(), key=lambda group: -len(group[1]))):
        directory, *arguments = key
        source = out.resolve() / f"alike_{number}.cxx"
        source.write_text("".join(f'#include "{file}"\n' for file in files))
        commands.append(
            {"directory": directory, "file": str(source), "arguments": [*arguments, str(source)]}
        )
    (out / "compile_commands.json").write_text(json.dumps(commands, indent=1))


main(Path(sys.argv[1]), Path(sys.argv[2]))
