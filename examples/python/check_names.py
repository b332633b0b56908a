#!/usr/bin/env python3
"""Checks that the registers of a database are in a Verilog netlist.

    check_names.py counter.xml counter.v

Prints every transformed register that the netlist does not declare, with a name near to it. Exits with 1 when there
is one.
"""
import difflib
import re
import sys

import kpt

COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.DOTALL)
NAME = re.compile(r"\\\S+|[A-Za-z_][\w$]*")


def names_in(verilog: str) -> set[str]:
    """Every name in the text; an escaped name without its backslash."""
    return {name.lstrip("\\") for name in NAME.findall(COMMENT.sub(" ", verilog))}


def is_declared(register: kpt.Register, names: set[str]) -> bool:
    """The name that declares a register: for a bit of a bus, the name of the bus."""
    return register.name in names or re.sub(r"\[\d+\]$", "", register.name) in names


def main() -> int:
    database, netlist = sys.argv[1:]
    with open(netlist, encoding="utf-8") as text:
        names = names_in(text.read())
    missing = [register for register in kpt.load(database).transformed
               if register.has_map and not is_declared(register, names)]
    for register in missing:
        near = difflib.get_close_matches(register.name, names, 1)
        print(f"{netlist}: no {register.name}" + (f"; did you mean {near[0]}?" if near else ""))
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())
