"""Files of any size for kptdb, and the commands that read them. What the figures and the check of growth have in common."""
import json
import pathlib

CODES = [chr(c) for c in range(33, 127)]


def reference_name(k):
    return f"u_core_{k // 2048 % 64}/u_lsu/u_q{k // 32 % 64}/data_q_reg[{k // 131072 * 32 + k % 32}]"


def event(kind, **keys):
    return json.dumps({"event": kind, **keys}) + "\n"


def write_stage(path, count, of, to):
    """Every register is kept; of each forty, one is inverted then and one becomes a constant."""
    with open(path, "w", encoding="utf-8") as out:
        for k in range(count):
            out.write(event("associate", reference=of(k), transformed=to(k)))
            if k % 40 == 7:
                out.write(event("retime_inverter", register=to(k)))
            elif k % 40 == 9:
                out.write(event("eliminate", register=to(k), value=0))


def first_stage(k):
    return reference_name(k) + "_ff"


def second_stage(k):
    return f"_{k}_"


def code(k):
    text = ""
    while True:
        text += CODES[k % len(CODES)]
        k //= len(CODES)
        if k == 0:
            return text


def write_dump(path, names, cycles):
    """A clock and that many signals of one bit. At each rising edge every eighth of them changes."""
    with open(path, "w", encoding="utf-8") as out:
        out.write("$timescale 1 ns $end\n$scope module dut $end\n$var wire 1 ! clk $end\n")
        for k, name in enumerate(names):
            out.write(f"$var wire 1 {code(k + 1)} \\{name} $end\n")
        out.write("$upscope $end\n$enddefinitions $end\n#0\n0!\n" + "".join(f"0{code(k + 1)}\n" for k in range(len(names))))
        turns = ["".join(f"{1 - turn // 8}{code(k + 1)}\n" for k in range(turn % 8, len(names), 8)) for turn in range(16)]
        for cycle in range(cycles):
            out.write(f"#{10 * cycle + 5}\n1!\n{turns[cycle % 16]}#{10 * cycle + 10}\n0!\n")


class Files:
    """The files of one size in one folder. `run` is called with the arguments that make a database."""

    def __init__(self, folder, count, run):
        self.folder = pathlib.Path(folder)
        write_stage(self.path("1.jsonl"), count, reference_name, first_stage)
        write_stage(self.path("2.jsonl"), count, first_stage, second_stage)
        for stage in (1, 2):
            run(["record", self.path(f"{stage}.jsonl"), "-o", self.path(f"{stage}.xml")])

    def path(self, name):
        return str(self.folder / name)

    def commands(self):
        """{name: arguments}"""
        first, second, out = self.path("1.xml"), self.path("2.xml"), self.path("out")
        exports = ("json", "csv", "dot", "events", "tcl", "sqlite", "eqy", "surfer")
        return {
            "record": ["record", self.path("1.jsonl"), "-o", out + ".xml"],
            "info": ["info", first],
            "show, one register": ["show", first, reference_name(3)],
            "show, by a pattern": ["show", first, "*/u_q0/*"],
            "list": ["list", first],
            "stats": ["stats", first, "--depth", "0"],
            "check": ["check", first],
            "diff": ["diff", first, first],
            "unite": ["unite", first, second, "-o", out + ".xml"],
            "compose": ["compose", first, second, "-o", out + ".xml"],
            "explain": ["explain", reference_name(3), first, second],
            "report": ["report", first, second, "-o", out + ".html"],
            **{f"export, {form}": ["export", "--format", form, first, "-o", f"{out}.{form}"] for form in exports},
        }


class Dumps:
    """A database of that many registers, and dumps of its source and its netlist."""

    def __init__(self, folder, count, cycles, run):
        self.folder = pathlib.Path(folder)
        write_stage(self.path("wave.jsonl"), count, reference_name, second_stage)
        # Without the inversions and constants, so that both dumps may have the same values.
        lines = [line for line in open(self.path("wave.jsonl"), encoding="utf-8") if '"associate"' in line]
        pathlib.Path(self.path("wave.jsonl")).write_text("".join(lines), encoding="utf-8")
        run(["record", self.path("wave.jsonl"), "-o", self.path("wave.xml")])
        write_dump(self.path("source.vcd"), [reference_name(k) for k in range(count)], cycles)
        write_dump(self.path("gate.vcd"), [second_stage(k) for k in range(count)], cycles)

    def path(self, name):
        return str(self.folder / name)

    def commands(self):
        database = self.path("wave.xml")
        return {
            "wave": ["wave", database, self.path("gate.vcd"), "--scope", "dut", "-o", self.path("out.vcd")],
            "audit": ["audit", database, self.path("source.vcd"), self.path("gate.vcd"), "--clock", "dut.clk", "--scope", "dut"],
        }
