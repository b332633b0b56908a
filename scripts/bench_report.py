#!/usr/bin/env python3
"""Turns the benchmarks' JSON into the tables and plots of the figures page.

usage: bench_report.py RESULT.json PAGE.md FOLDER

Replaces the part of PAGE between the two marker lines.
"""

import json
import pathlib
import re
import subprocess
import sys

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / "bench"))
import page_part  # noqa: E402  (it is beside the workloads)

# A workload, the one that it is compared with, and the aim for their ratio: "at most"
# for our cost over the other's, "at least" for the other's cost over ours. The cost is
# the time, unless another counter is named. The cost of several others is their sum.
COUNTERS = {"ns_per_register": "", "heap": ", bytes", "peak_MiB": ", peak"}
AIMS = [
    ("record/kpt", "record/flat", "at most", 4),
    ("record/kpt", "record/sqlite", "at least", 4),
    ("record/kpt", "record/textbook", "at least", 3, "heap"),
    ("query/kpt", "query/flat", "at most", 1.3),
    ("query/kpt_answers", "query/flat", "at most", 1.6),
    ("query/kpt", "query/sqlite", "at least", 20),
    ("save/kpt", "save/copy_and_write", "at most", 1.6),
    ("save/kpt", "save/stream_flushed_a_line", "at least", 15),
    ("load/kpt", "load/pugixml + record/kpt", "at most", 1.5),
    ("load/kpt", "load/two_dom_parses", "at least", 25),
    ("load/kpt", "record/kpt", "at most", 1.25, "peak_MiB"),
    ("load/kpt_by_xerces", "load/xerces_sax2", "at most", 1.6),
    ("unite/kpt", "unite/sqlite", "at least", 5),
    ("unite_shuffled/kpt", "unite_shuffled/sqlite", "at least", 5),
    ("unite/kpt", "unite/by_hand", "at most", 2.5),
    ("unite_shuffled/kpt", "unite_shuffled/by_hand", "at most", 2.5),
    ("compose/kpt", "unite/kpt", "at most", 1),
    ("compose_shuffled/kpt", "unite_shuffled/kpt", "at most", 1),
    ("compose_shuffled/kpt", "unite_shuffled/by_hand", "at most", 2),
    ("destroy/kpt", "record/kpt", "at most", 0.2),
]


def read(path):
    """{workload: {size: counters}}, of each workload the repetition that took the least time"""
    figures = {}
    for run in json.loads(pathlib.Path(path).read_text())["benchmarks"]:
        if run["run_type"] != "iteration":
            continue
        group, who, size = run["name"].split("/")[:3]
        sizes = figures.setdefault(f"{group}/{who}", {})
        if int(size) not in sizes or run["real_time"] < sizes[int(size)]["real_time"]:
            sizes[int(size)] = run
    return figures


def row(cells):
    return "| " + " | ".join(cells) + " |\n"


def table(head, rows):
    return row(head) + row(["---"] * len(head)) + "".join(row(r) for r in rows)


def ratio_rows(figures, sizes):
    for ours, other, sense, aim, *counter in AIMS:
        key = counter[0] if counter else "ns_per_register"
        cells = [f"`{ours}`" + COUNTERS[key], f"`{other}`", f"{sense} {aim}"]
        for size in sizes:
            a = figures[ours][size][key]
            b = sum(figures[each][size][key] for each in other.split(" + "))
            cells.append(f"{a / b if sense == 'at most' else b / a:.2f}")
        yield cells


def is_own(name):
    """A workload that compares one of our containers with a container of another library."""
    return name.startswith("own_")


def own_rows(figures, sizes):
    for name, runs in figures.items():
        if is_own(name):
            container, who = name.removeprefix("own_").split("/")
            yield ([container, f"`{who}`"] + [f"{runs[size]['ns_per_register']:.1f}" for size in sizes]
                   + [f"{runs[sizes[-1]]['heap']:.0f}"])


def cost_rows(figures, sizes):
    for name, runs in figures.items():
        if is_own(name):
            continue
        yield [f"`{name}`"] + [f"{runs[size]['ns_per_register']:.0f}" for size in sizes]


def memory_rows(figures, sizes):
    for name in ("record/kpt", "record/flat", "record/sqlite", "record/textbook"):
        yield [f"`{name}`, bytes per register"] + [f"{figures[name][size]['heap']:.0f}" for size in sizes]
    for name, runs in figures.items():
        if is_own(name):
            continue
        yield [f"`{name}`, peak MiB"] + [f"{runs[size]['peak_MiB']:.1f}" for size in sizes]


def data_block(name):
    return "$" + re.sub("[^a-z]", "_", name)


def plot(figures, folder):
    """One picture: nanoseconds per register over the number of registers."""
    folder.mkdir(parents=True, exist_ok=True)
    ours = [name for name in figures if name.endswith("/kpt") and not is_own(name)]
    lines = []
    for name in ours:
        lines.append(f"{data_block(name)} << EOD")
        lines += [f"{size} {run['ns_per_register']}" for size, run in sorted(figures[name].items())]
        lines.append("EOD")
    lines += [
        "set terminal svg size 900,560 background 'white'",
        f"set output '{folder / 'cost.svg'}'",
        "set logscale xy",
        "set key outside right",
        "set xlabel 'registers'",
        "set ylabel 'ns per register'",
        "set grid",
        "plot " + ", ".join(
            f"{data_block(name)} with linespoints title '{name.split('/')[0].replace('_', ' ')}'"
            for name in ours),
    ]
    subprocess.run(["gnuplot"], input="\n".join(lines), text=True, check=True)


def main():
    result, page, folder = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    figures = read(result)
    sizes = sorted(figures["record/kpt"])
    heads = [f"{size:,}" for size in sizes]
    text = "\n".join([
        "Ratios. \"At most\" is our cost over the other's, \"at least\" the other's over ours.",
        "",
        table(["measured", "beside", "aim"] + heads, ratio_rows(figures, sizes)),
        "Nanoseconds per register (CPU time for loading, wall time for the rest):",
        "",
        table(["workload"] + heads, cost_rows(figures, sizes)),
        "Memory: what stays per register, and what a run adds at most:",
        "",
        table(["what"] + heads, memory_rows(figures, sizes)),
        "### Own containers, beside the library's",
        "",
        "Nanoseconds per object, and what stays of each at the largest size, in bytes: the names of a set entered and",
        "looked up; objects of the size of a map made, walked and replaced; groups of a map filled and walked; state",
        "tables of four states filled and read.",
        "",
        table(["container", "as"] + heads + ["bytes"], own_rows(figures, sizes)),
        "![nanoseconds per register over the number of registers](figures/cost.svg)",
    ])
    page_part.replace(page, "scripts/bench", text)
    plot(figures, folder)


if __name__ == "__main__":
    main()
