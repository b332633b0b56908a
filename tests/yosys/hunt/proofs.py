#!/usr/bin/env python3
"""Hunts for false proofs: kpt_prove -undef must not accept a netlist that is wrong.

Synthesises random designs that leave values undefined: state machines whose parallel cases overlap, states
without a code, choices in data. Proves each netlist, then changes the function of single cells and proves
again. When a changed netlist passes, Yosys searches for a sequence of inputs from power-up on, at which an
output of the source is defined and the netlist's is another one. The search knows nothing of the plugin. It
reads a second source, in which each overlap of parallel cases is an undefined value. A difference that it
finds is a false proof, unless it finds one in the unchanged netlist as well.
"""

import argparse
import os
import random
import re
import subprocess
import sys
import tempfile

OTHERS = {"$_AND_": ["$_OR_", "$_XOR_", "$_NAND_"], "$_OR_": ["$_AND_", "$_XOR_", "$_NOR_"],
          "$_NAND_": ["$_AND_", "$_NOR_"], "$_NOR_": ["$_OR_", "$_NAND_"], "$_XOR_": ["$_XNOR_", "$_OR_"],
          "$_XNOR_": ["$_XOR_", "$_AND_"], "$_ANDNOT_": ["$_AND_", "$_ORNOT_"], "$_ORNOT_": ["$_OR_", "$_ANDNOT_"],
          "$_NOT_": ["$_BUF_"], "$_SDFF_PP0_": ["$_SDFF_PP1_"], "$_SDFF_PP1_": ["$_SDFF_PP0_"],
          "$_SDFFE_PP0P_": ["$_SDFFE_PP1P_", "$_SDFFE_PP0N_"], "$_SDFFE_PP1P_": ["$_SDFFE_PP0P_"],
          "$_DFFE_PP_": ["$_DFFE_PN_"]}
STEPS = 8  # of the search


class Design:
    """`text` has overlapping parallel cases; in `settled`, their overlaps are undefined values."""

    def __init__(self, dice):
        self._dice = dice
        self._states = dice.sample(range(8), dice.randint(3, 5))
        self.text = self._source(False)
        self.settled = self._source(True)

    def _source(self, settled):
        dice = random.Random(self._dice.getstate()[1][5])  # both sources are the same design
        states = self._states
        state = lambda: "3'd%d" % dice.choice(states)
        bit = lambda: dice.choice(["d", "e", "one[0]", "one[1]", "one[2]", "r0", "r1", "~d", "~r0"])
        body = []
        for number in states:
            kind = dice.randrange(3)
            if kind == 0:
                step = "s <= %s;" % state()
            elif kind == 1:
                step = "s <= %s ? %s : %s;" % (bit(), state(), state())
            else:
                cases = "".join("one[%d]: s <= %s; " % (i, state()) for i in range(3))
                overlap = "(one[0] & one[1]) | (one[0] & one[2]) | (one[1] & one[2])"
                step = "if (%s) begin %s (* parallel_case *) case (1'b1) %s endcase end" % (
                    bit(), "if (%s) s <= 3'bx; else" % overlap if settled else "", cases)
            body.append("      3'd%d: begin %s end" % (number, step))
        data = []
        for name in ("r0", "r1"):
            value = "%s ? 1'bx : %s ^ %s" % (bit(), bit(), bit())
            data.append("    if (rst) %s <= 1'b0; else if (%s) %s <= s == %s ? %s & %s : %s;" % (
                name, bit(), name, state(), bit(), bit(), value))
        outputs = "".join("      3'd%d: y <= {%s, %s ^ %s};\n" % (n, bit(), bit(), bit()) for n in states[:-1])
        return """module top(input clk, input rst, input [2:0] one, input d, input e, output at, output reg [1:0] y,
           output r);
  reg [2:0] s;
  reg r0, r1;
  assign at = s == %s;
  assign r = r0 ^ r1;
  always @(posedge clk) begin
    if (rst) s <= %s;
    else case (s)
%s
      default: s <= 3'bx;
    endcase
%s
    case (s)
%s      default: y <= 2'bx;
    endcase
  end
endmodule
""" % (state(), state(), "\n".join(body), "\n".join(data), outputs)


def yosys(folder, script, plugin=()):
    done = subprocess.run(["yosys", *plugin, "-p", script], cwd=folder, capture_output=True, text=True, check=False)
    if done.returncode not in (0, 1):
        raise RuntimeError("Yosys ended with %d: %s" % (done.returncode, done.stderr[-300:]))
    return done.stdout + done.stderr


def proves(folder, plugin, netlist):
    log = yosys(folder, "read_verilog source.v; hierarchy -top top; proc; flatten; rename top gold; read_rtlil %s; "
                        "rename top gate; kpt_load kpt.xml; kpt_prove -undef gold gate" % netlist, ("-m", plugin))
    found = re.search(r"Unproven cells: (\d+)\.", log)
    if not found:
        raise RuntimeError("no proof: " + log[-300:])
    return found.group(1) == "0"


def differs(folder, netlist):
    """Whether an output is another one than the source defines."""
    log = yosys(folder, "read_verilog settled.v; hierarchy -top top; proc; flatten; rename top gold; read_rtlil %s; "
                        "rename top gate; miter -equiv -ignore_gold_x -flatten gold gate miter; hierarchy -top miter; "
                        "sat -enable_undef -set-init-undef -set-def-inputs -prove trigger 0 -tempinduct-baseonly "
                        "-maxsteps %d miter" % (netlist, STEPS))
    return "SAT temporal induction proof finished - model found" in log or "model found: FAIL" in log


def changed(dice, text):
    """The netlist with another function of one cell."""
    cells = [found for found in re.finditer(r"^  cell (\S+) ", text, re.M) if found.group(1) in OTHERS]
    cell = dice.choice(cells)
    return text[:cell.start(1)] + dice.choice(OTHERS[cell.group(1)]) + text[cell.end(1):]


def write(folder, name, text):
    with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
        file.write(text)


def hunt(seed, folder, plugin, changes, totals):
    dice = random.Random(seed)
    design = Design(dice)
    write(folder, "source.v", design.text)
    write(folder, "settled.v", design.settled)
    yosys(folder, "read_verilog source.v; hierarchy -top top; proc; kpt_track; synth -flatten -top top; "
                  "rename -hide w:*; kpt_stage; kpt_save kpt.xml; write_rtlil gate.il", ("-m", plugin))
    totals["proven"] += proves(folder, plugin, "gate.il")
    with open(os.path.join(folder, "gate.il"), encoding="utf-8") as file:
        netlist = file.read()
    for _ in range(changes):
        write(folder, "changed.il", changed(dice, netlist))
        totals["changes"] += 1
        if not proves(folder, plugin, "changed.il"):
            totals["refused"] += 1
        elif differs(folder, "changed.il") and not differs(folder, "gate.il"):
            totals["false"] += 1
            print("seed %d: a wrong netlist is proven" % seed, flush=True)
            return


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("plugin")
    parser.add_argument("--seed", type=int, default=1, help="of the first design; the next have the next")
    parser.add_argument("--designs", type=int, default=1)
    parser.add_argument("--changes", type=int, default=8, help="of the netlist of each design")
    parser.add_argument("--keep", help="work in this folder, and leave there what the last design was")
    options = parser.parse_args()
    totals = {"proven": 0, "changes": 0, "refused": 0, "false": 0}
    with tempfile.TemporaryDirectory() as temporary:
        folder = options.keep or temporary
        os.makedirs(folder, exist_ok=True)
        for seed in range(options.seed, options.seed + options.designs):
            hunt(seed, folder, os.path.abspath(options.plugin), options.changes, totals)
            if totals["false"] and options.keep:
                break
    print("%d designs: %d proven; %d netlists with a changed cell: %d refused, %d false proofs" % (
        options.designs, totals["proven"], totals["changes"], totals["refused"], totals["false"]))
    return totals["false"] != 0 or totals["proven"] == 0 or totals["refused"] == 0


if __name__ == "__main__":
    sys.exit(main())
