#!/usr/bin/env python3
"""Prints the share of executed lines of each source, from the counts of a build folder."""
import collections
import json
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDERS = ("db", "host", "tools", "integrations")


def executed_lines(build):
    """The lines of each source that hold code, and whether any of its objects executed them."""
    lines = collections.defaultdict(dict)
    for counts in sorted(build.rglob("*.gcda")):
        run = subprocess.run(["gcov", "--json-format", "--stdout", str(counts)], cwd=build, capture_output=True,
                             text=True, check=True)
        for unit in map(json.loads, run.stdout.splitlines()):
            for file in unit["files"]:
                path = (pathlib.Path(unit["current_working_directory"]) / file["file"]).resolve()
                if ROOT in path.parents and path.relative_to(ROOT).parts[0] in FOLDERS:
                    known = lines[path.relative_to(ROOT)]
                    for line in file["lines"]:
                        number = line["line_number"]
                        known[number] = known.get(number, False) or line["count"] > 0
    return lines


def row(name, executed, total):
    print(f"{100 * executed / total:6.1f}%  {executed:6} of {total:6}  {name}")


def main():
    lines = executed_lines(pathlib.Path(sys.argv[1]).resolve())
    folders = collections.defaultdict(lambda: [0, 0])
    for path in sorted(path for path in lines if lines[path]):
        executed, total = sum(lines[path].values()), len(lines[path])
        row(path, executed, total)
        folders[path.parent][0] += executed
        folders[path.parent][1] += total
    print()
    for folder, (executed, total) in sorted(folders.items()):
        row(f"{folder}/", executed, total)


if __name__ == "__main__":
    main()
