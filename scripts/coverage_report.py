#!/usr/bin/env python3
"""Prints the share of executed lines and taken branches of each source, from the counts of a build folder.

  coverage_report.py BUILD [PREFIX]   with a prefix: only sources below it, and the lines with a branch never taken

A branch that an exception takes is not counted, and neither is the other branch of the same call: it is no decision
of the source. The instances of a template and the objects that share a header count as one.
"""
import collections
import json
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDERS = ("db", "host", "tools", "integrations")


class Source:
    """The lines of a source that hold code, and its branches, by line and place: whether anything executed them."""

    def __init__(self):
        self.lines = collections.defaultdict(bool)
        self.branches = collections.defaultdict(bool)

    def add(self, line):
        number = line["line_number"]
        self.lines[number] |= line["count"] > 0
        for place, taken in enumerate(decisions(line.get("branches", []))):
            self.branches[number, place] |= taken


def decisions(branches):
    """Whether each branch that is no exception's was taken. A call that may throw has two branches, its own first."""
    kept = []
    for branch in branches:
        if not branch["throw"]:
            kept.append(branch["count"] > 0)
        elif kept:
            kept.pop()
    return kept


def read(build, prefix):
    sources = collections.defaultdict(Source)
    for counts in sorted(build.rglob("*.gcda")):
        run = subprocess.run(["gcov", "--json-format", "--branch-probabilities", "--stdout", str(counts)], cwd=build,
                             capture_output=True, text=True, check=True)
        for unit in map(json.loads, run.stdout.splitlines()):
            for file in unit["files"]:
                path = (pathlib.Path(unit["current_working_directory"]) / file["file"]).resolve()
                if ROOT not in path.parents:
                    continue
                path = path.relative_to(ROOT)
                if path.parts[0] in FOLDERS and str(path).startswith(prefix):
                    for line in file["lines"]:
                        sources[path].add(line)
    return sources


def row(name, sources):
    cells = []
    for kind in ("lines", "branches"):
        known = [executed for source in sources for executed in getattr(source, kind).values()]
        share = 100 * sum(known) / len(known) if known else 100
        cells.append(f"{share:6.1f}%  {sum(known):6} of {len(known):6}")
    print("   ".join(cells), "", name)


def main():
    prefix = sys.argv[2] if len(sys.argv) > 2 else ""
    sources = read(pathlib.Path(sys.argv[1]).resolve(), prefix)
    folders = collections.defaultdict(list)
    print("lines                      branches")
    for path, source in sorted(sources.items()):
        row(path, [source])
        folders[path.parent].append(source)
    print()
    for folder, held in sorted(folders.items()):
        row(f"{folder}/", held)
    if prefix:
        print()
        row(prefix, sources.values())
        for path, source in sorted(sources.items()):
            missed = sorted({number for (number, _), taken in source.branches.items() if not taken})
            print(*(f"{path}:{number}" for number in missed), sep="\n")


if __name__ == "__main__":
    main()
