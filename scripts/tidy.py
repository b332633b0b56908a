#!/usr/bin/env python3
"""Runs clang-tidy over every source of a compilation database, on all processors.

A source that passed is checked again only when its text, a header that it includes, its
compilation flags, the checks or clang-tidy itself have changed. The hashes of all these are kept
below the build folder. The exit code is 0 when no source has a finding.
"""
import argparse
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys

TIDY = "clang-tidy-14"
ROOT = pathlib.Path(__file__).resolve().parent.parent


class Contents:
    """The hash of each file, computed once in a run."""

    def __init__(self):
        self.known = {}

    def hash(self, path):
        if path not in self.known:
            try:
                self.known[path] = hashlib.sha256(pathlib.Path(path).read_bytes()).hexdigest()
            except OSError:
                self.known[path] = "absent"
        return self.known[path]


class Source:
    """One entry of the compilation database."""

    def __init__(self, entry, cache):
        self.path = os.path.join(entry["directory"], entry["file"])
        self.name = os.path.relpath(self.path, ROOT)
        self.folder = entry["directory"]
        self.command = entry["command"]
        key = hashlib.sha256((self.name + "\n" + self.command).encode()).hexdigest()
        self.note = cache / (key + ".json")

    def dependencies(self):
        """Every file that the compiler reads for this source."""
        words = re.sub(r" -o \S+| -c ", " ", self.command).split()
        run = subprocess.run(words + ["-M"], cwd=self.folder, capture_output=True, text=True, check=True)
        names = run.stdout.replace("\\\n", " ").split(":", 1)[1].split()
        return [os.path.normpath(os.path.join(self.folder, name)) for name in names]

    def configurations(self):
        """The files with the checks that hold for this source."""
        folder = pathlib.Path(self.path).parent
        return [str(p / ".clang-tidy") for p in [folder, *folder.parents] if p == ROOT or ROOT in p.parents]

    def has_passed(self, contents, version):
        try:
            note = json.loads(self.note.read_text())
        except (OSError, ValueError):
            return False
        return note["version"] == version and all(contents.hash(p) == h for p, h in note["read"].items())

    def check(self, contents, version, build):
        run = subprocess.run([TIDY, "-p", str(build), "--quiet", self.path], capture_output=True, text=True)
        if run.returncode != 0:
            return run.stdout + "\n".join(
                line for line in run.stderr.splitlines() if not line.endswith("warnings generated."))
        read = {p: contents.hash(p) for p in self.dependencies() + self.configurations()}
        self.note.write_text(json.dumps({"version": version, "read": read}))
        return ""


def changed_files(base):
    run = subprocess.run(["git", "diff", "--name-only", base], cwd=ROOT, capture_output=True, text=True, check=True)
    return run.stdout.split()


def sources_of_change(sources, base):
    """The changed sources and, for each changed header, one source that includes it: each of them shows
    a finding in the header."""
    changed = changed_files(base)
    wanted = {s.name for s in sources if s.name in changed}
    for header in (name for name in changed if name.endswith(".h")):
        pattern = re.compile(r'#include "(?:[^"]*/)?' + re.escape(pathlib.Path(header).name) + '"')
        includers = [s.name for s in sources if pattern.search(pathlib.Path(s.path).read_text())]
        if includers and not wanted.intersection(includers):
            namesake = header[:-1] + "cpp"
            wanted.add(namesake if namesake in includers else includers[0])
    return [s for s in sources if s.name in wanted]


def checks_that_are_on():
    names = set()
    for folder in [ROOT, *{p.parent for p in ROOT.glob("*/.clang-tidy")}]:
        run = subprocess.run([TIDY, "--list-checks"], cwd=folder, capture_output=True, text=True, check=True)
        names.update(run.stdout.split())
    return names


def idle_exceptions():
    """The exceptions from checks that are not enabled."""
    on = checks_that_are_on()
    files = subprocess.run(["git", "ls-files", "*.h", "*.cpp"], cwd=ROOT, capture_output=True, text=True, check=True)
    for name in files.stdout.split():
        for number, line in enumerate((ROOT / name).read_text().splitlines(), 1):
            for checks in re.findall(r"NOLINT\w*\(([^)]*)\)", line):
                for check in checks.replace(" ", "").split(","):
                    if check not in on:
                        yield f"{name}:{number}: the check {check} is not on"


def main():
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("build", type=pathlib.Path, help="the build folder with compile_commands.json")
    arguments.add_argument("--since", metavar="BASE", help="check only what changed since that commit")
    arguments.add_argument("only", nargs="*", help="check sources below these paths only")
    options = arguments.parse_args()

    cache = options.build / "tidy-passed"
    cache.mkdir(exist_ok=True)
    version = subprocess.run([TIDY, "--version"], capture_output=True, text=True, check=True).stdout
    contents = Contents()
    generated = str(options.build.resolve()) + os.sep
    sources = [Source(e, cache) for e in json.loads((options.build / "compile_commands.json").read_text())]
    sources = [s for s in sources if not os.path.normpath(s.path).startswith(generated)]
    if options.only:
        sources = [s for s in sources if any(s.name == o or s.name.startswith(o.rstrip("/") + "/") for o in options.only)]
    if options.since:
        sources = sources_of_change(sources, options.since)
    due = [s for s in sources if not s.has_passed(contents, version)]
    print(f"clang-tidy: {len(due)} of {len(sources)} sources are to be checked", flush=True)

    bad = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        runs = {pool.submit(s.check, contents, version, options.build): s for s in due}
        for run in concurrent.futures.as_completed(runs):
            if run.result():
                bad += 1
                print(f"{runs[run].name}:\n{run.result()}", flush=True)
    for finding in idle_exceptions():
        bad += 1
        print(finding)
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
