#!/usr/bin/env python3
"""A pass of a flow that records what it does: it keeps, replicates and removes registers of a list.

    record_flow.py registers.txt counter.xml

Each line of the list names a register of the source and its result: a name in the netlist, several names for copies,
0 or 1 for a constant register, or - for an unused one.
"""
import sys

import kpt

REASONS = {"0": 0, "1": 1}


def record(db: kpt.Database, register: str, became: list[str]) -> None:
    if became[0] in REASONS:
        db.associate_map([([register], [])], [], constant=1 if became[0] == "1" else 0)
    elif became[0] == "-":
        db.associate_map([([register], [])], [], no_fanout=True)
    else:
        db.associate(register, became[0])
        for copy in became[1:]:
            db.replicate(became[0], copy)
    db[register].attributes["pass"] = "record_flow"


def main() -> int:
    source, target = sys.argv[1:]
    db = kpt.Database("flow")
    with open(source, encoding="utf-8") as lines:
        for number, line in enumerate(lines, 1):
            register, *became = line.split()
            try:
                record(db, register, became)
            except kpt.Refused as refusal:
                print(f"{source}:{number}: {refusal}", file=sys.stderr)
                return 1
    db.save(target)
    print(db)
    return 0


if __name__ == "__main__":
    sys.exit(main())
