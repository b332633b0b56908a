#!/usr/bin/env python3
"""Prints the share of executed lines and taken branches of each source, from the counts of a build folder.

  coverage_report.py BUILD [PREFIX]   with a prefix: only sources below it, and the branches never taken

docs/coverage.md lists the branches of db/kpt that no test can take, with the reasons. The report fails when more than
MOST_MISSED percent of the others are never taken, or when a branch of the list does not exist or is taken.

A branch that an exception takes is not counted, and neither is the other branch of the same call: it is no decision
of the source. The instances of a template and the objects that share a header count as one.
"""
import collections
import json
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDERS = ("db", "host", "tools", "integrations")
CHECKED = "db/kpt/"
MOST_MISSED = 2.0
LIST = ROOT / "docs/coverage.md"


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

    def missed(self):
        """The number of branches that nothing took, by line."""
        return collections.Counter(number for (number, _), taken in sorted(self.branches.items()) if not taken)


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


def code_of(path):
    return [line.strip() for line in (ROOT / path).read_text(encoding="utf-8").splitlines()]


def listed():
    """The branches of the list: source, the least and the most that are never taken of a line, and its text."""
    for line in LIST.read_text(encoding="utf-8").splitlines():
        if entry := re.fullmatch(r"- `(\S+)`, (up to )?(\d+) of `(.+)`", line):
            yield pathlib.Path(entry[1]), 0 if entry[2] else int(entry[3]), int(entry[3]), entry[4]


def check(sources):
    """Whether enough branches of the library are taken. Prints the share and what is wrong."""
    missed = {path: source.missed() for path, source in sources.items() if str(path).startswith(CHECKED)}
    faults, left_out = [], 0
    for path, least, most, text in listed():
        lines = [number for number, code in enumerate(code_of(path), 1) if code == text] if path in missed else []
        found = sum(missed[path].pop(number, 0) for number in lines)
        left_out += found
        if not least <= found <= most:
            faults.append(f"{LIST.name}: {most} branches of `{text}` in {path} are listed, {found} are never taken")
    total = sum(len(sources[path].branches) for path in missed) - left_out
    others = sum(counter.total() for counter in missed.values())
    print(f"\n{CHECKED}: {left_out} branches that no test can take, {total - others} of {total} others taken"
          f" ({100 * (total - others) / total:.1f}%)")
    if 100 * others > MOST_MISSED * total:
        faults.append(f"{CHECKED}: more than {MOST_MISSED:g}% of the branches that tests can take are never taken")
    for fault in faults:
        print(fault, file=sys.stderr)
    return not faults


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
            code = code_of(path)
            for number, count in source.missed().items():
                print(f"{path}:{number}: {count} of `{code[number - 1]}`")
    if CHECKED.startswith(prefix) and not check(sources):
        sys.exit(1)


if __name__ == "__main__":
    main()
