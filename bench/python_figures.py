"""What the calls of the Python module cost beside the C++ calls that they make.

  python_figures.py RECORD_FIGURES PAGE [associations]

Writes a table into the page.

The same names as RECORD_FIGURES has; processor time, the best of three; what a loop over the names itself takes is not counted.
"""
import pathlib
import re
import subprocess
import sys
import time

import kpt
import page_part

TURNS = 3


def register_names(count, last):
    return [f"u_core_{k // 32 // 64 % 64}/u_lsu/u_q{k // 32 % 64}/{last}_q_reg[{k // 32 // 64 // 64 * 32 + k % 32}]"
            for k in range(count)]


def cpp_figures(program, count):
    printed = subprocess.run([program, str(count)], check=True, capture_output=True, text=True).stdout
    return {what: float(value) for what, value in re.findall(r"^(\S.*?)\s+(\d+) ns$", printed, re.MULTILINE)}


def best(action, count, make=lambda: None):
    """Nanoseconds each."""
    times = []
    for _ in range(TURNS):
        subject = make()
        begin = time.process_time_ns()
        action(subject)
        times.append(time.process_time_ns() - begin)
    return min(times) / count


def associate(db, reference, transformed):
    for r, t in zip(reference, transformed):
        db.associate(r, t)


def look_up(db, names):
    for name in names:
        db[name]


def walk(names):
    for _ in names:
        pass


def main():
    page, count = pathlib.Path(sys.argv[2]), int(sys.argv[3]) if len(sys.argv) > 3 else 1000000
    reference, transformed = register_names(count, "data"), register_names(count, "dffr")
    cpp = cpp_figures(sys.argv[1], count)
    empty = best(lambda _: walk(reference), count)

    def new():
        return kpt.Database("figures")

    def filled():
        db = new()
        db.associate_many(reference, transformed)
        return db

    many = best(lambda db: db.associate_many(reference, transformed), count, new)
    one = best(lambda db: associate(db, reference, transformed), count, new) - empty
    db = filled()
    found = best(lambda _: look_up(db, reference), count) - empty
    at, scattered = 0, []
    for _ in range(count):
        at = (at + 618033) % count
        scattered.append(reference[at])
    far = best(lambda _: look_up(db, scattered), count) - best(lambda _: walk(scattered), count)
    records = best(lambda _: db.to_records(numpy=False), count)
    rows = [("`associate_many`", many, cpp["associate"]), ("`associate` in a loop", one, cpp["associate"]),
            ("`db[name]`, in order", found, cpp["look up, in order"]),
            ("`db[name]`, scattered", far, cpp["look up, scattered"]), ("`to_records`", records, None)]
    text = f"| Call, {count:,} times | ns each | in C++ | ratio | more |\n|---|---|---|---|---|\n"
    for what, python, plain in rows:
        beside = "| | |" if plain is None else f"{plain:.0f} | {python / plain:.2f} | {python - plain:.0f} |"
        text += f"| {what} | {python:.0f} | {beside}\n"
    page_part.replace(page, "scripts/bench-python", text)


if __name__ == "__main__":
    main()
