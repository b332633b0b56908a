#!/usr/bin/env python3
"""Draws what became of the registers of each part of a design.

    plot_coverage.py uart_tx.xml coverage.png [--depth 2]
"""
import argparse
from collections import Counter, defaultdict

import matplotlib.pyplot as plt  # type: ignore[import]

import kpt

FATES = ("mapped", "machine", "constant", "without_fanout", "unknown")


def part_of(name: str, depth: int) -> str:
    """The instances that contain a register, up to `depth` of them."""
    return "/".join(name.replace(".", "/").split("/")[:-1][:depth]) or "(top)"


def count(db: kpt.Database, depth: int) -> dict[str, Counter[str]]:
    counts: dict[str, Counter[str]] = defaultdict(Counter)
    records = db.to_records(numpy=False)
    for name, fate in zip(records["name"], records["fate"]):
        counts[part_of(name, depth)][fate] += 1
    return counts


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("database", help="a database file")
    parser.add_argument("picture", help="a file that ends in .png, .svg or .pdf")
    parser.add_argument("--depth", type=int, default=1, help="how deep to look into the hierarchy")
    options = parser.parse_args()

    counts = count(kpt.load(options.database), options.depth)
    bottom = [0] * len(counts)
    figure, axes = plt.subplots(layout="constrained")
    for fate in FATES:
        heights = [part[fate] for part in counts.values()]
        axes.bar(list(counts), heights, bottom=bottom, label=fate)
        bottom = [low + height for low, height in zip(bottom, heights)]
    axes.set_ylabel("registers")
    axes.tick_params(axis="x", rotation=45)
    axes.legend()
    figure.savefig(options.picture)


if __name__ == "__main__":
    main()
