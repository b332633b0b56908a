"""Simulates source and netlist side by side with the same inputs from reset, and checks the claims."""

import json
import re
import resource
import signal
import subprocess

# Resets are active in the first cycles, and sometimes later.
_FROM_RESET = "cycle < 3 ||"
_BENCH = """
`timescale 1ns/1ns
module bench;
  reg clk = 0, rst = 1, arst = 1, en = 0, len = 0; reg [3:0] a = 0, b = 0; reg [31:0] dice;
  wire arstn = ~arst;
  wire [{last}:0] gold_y, gate_y;
  gold g(.clk(clk), .rst(rst), .arst(arst), .arstn(arstn), .en(en), .len(len), .a(a), .b(b), .y(gold_y));
  top t(.clk(clk), .rst(rst), .arst(arst), .arstn(arstn), .en(en), .len(len), .a(a), .b(b), .y(gate_y));
  wire [{terms}:0] value = {{{values}}};
  reg [{claims}:0] wrong = 0, seen = 0; reg broken = 0;
  integer cycle, seed = {seed};
  task check; begin
    if (|(gold_y ^ gate_y) === 1'b1) broken = 1;
{checks}
  end endtask
  initial begin
    for (cycle = 0; cycle < {cycles}; cycle = cycle + 1) begin
      #2 dice = $random(seed);
      {{a, b, en}} = dice[8:0];
      rst = {resets} dice[31:28] == 0; arst = {resets} dice[27:24] == 0;
      #2 check; #1 clk = 0; #1 len = dice[9]; #2 len = 0; #1 check; #1 clk = 1;
    end
    $display("%b %b %b", broken, wrong, seen);
    $finish(0);
  end
endmodule
"""

# Cells for which write_verilog writes no behaviour: the register that async2sync makes of a latch, and
# the shift registers of shregmap.
_MODELS = """
module \\$_FF_ (input D, output reg Q);
  always #1 Q <= D;
endmodule
""" + "".join("""
module \\$__SHREG_DFF_%s_ (input C, input D, output Q);
  parameter DEPTH = 1, ENPOL = 0, CLKPOL = 0; parameter [DEPTH-1:0] INIT = {DEPTH{1'bx}};
  reg [DEPTH-1:0] held = INIT;
  initial #1 held = INIT;
  always @(%s C) held <= {held, D};
  assign Q = held[DEPTH-1];
endmodule
""" % kind for kind in (("P", "posedge"), ("N", "negedge")))


def _text_of(name):
    """The name that the plugin gives a net, by the name in Yosys' JSON."""
    if not name.startswith("$"):
        return name
    return re.sub(r"\\", "", name[len("$flatten"):] if name.startswith("$flatten") else name)


def _escaped(name):
    return "\\" + name + " "


def _add_nets(modules, module, path, prefix, nets):
    for name, net in module["netnames"].items():
        width = len(net["bits"])
        for bit in range(width):
            index = net.get("offset", 0) + (width - 1 - bit if net.get("upto") else bit)
            suffix = "[%d]" % index if width > 1 else ""
            nets.setdefault(prefix + _text_of(name) + suffix, []).append(path + _escaped(name) + suffix)
    for name, cell in module["cells"].items():
        if cell["type"] in modules and not modules[cell["type"]]["attributes"].get("blackbox"):
            _add_nets(modules, modules[cell["type"]], path + _escaped(name) + ".", prefix + _text_of(name) + ".", nets)
        elif not cell["type"].startswith("$"):
            for port in cell["connections"]:
                pin = prefix + _text_of(name) + "." + port
                nets.setdefault(pin, []).append(path + _escaped(name) + "." + port)


def nets_of(json_path):
    """The path of each net of a netlist in a simulation, by its name in a database."""
    with open(json_path, encoding="utf-8") as file:
        modules = json.load(file)["modules"]
    nets = {}
    _add_nets(modules, modules["top"], "t.", "", nets)
    return nets


def _place(term, nets):
    """None when the simulation cannot show it."""
    side, name, inverted = term
    if side == "reference":
        found = [] if "$" in name or "\\" in name else ["g." + name]
    else:
        found = nets.get(name, [])
    return ("~" if inverted else "") + found[0] if len(found) == 1 else None


def _check(index, claim, first):
    """Checks only where all values are known: before the first reset a machine may be in no state."""
    width = len(claim.terms)
    part = "value[%d +: %d]" % (first, width)
    rows = " && ".join("%s !== %d'b%s" % (part, width, "".join(str(bit) for bit in reversed(row)))
                       for row in claim.rows)
    return "    if (^%s !== 1'bx) begin seen[%d] = 1; if (%s) wrong[%d] = 1; end" % (part, index, rows or "1", index)


class Outcome:
    def __init__(self):
        self.broken = False     # the netlist does something else than its source
        self.false = []         # claims
        self.silent = []        # claims that were never seen with all values known
        self.checked = 0


def _last_output(source):
    return int(re.search(r"output \[(\d+):0\] y", source).group(1))


def _powered_up(netlist):
    """The netlist with power-up values given again at time 1.

    A clock that comes through a gate changes from unknown to known at time 0. In a simulation that is
    an edge, at which a register loses its power-up value. In a circuit there is no such edge.
    """
    return re.sub(r"^( *)reg (?:\[[^\]]*\] )?((?:\\\S+ )|(?:\w+)) ?= ([^;]*);$", r"\g<0>\n\1initial #1 \2 = \3;", netlist,
                  flags=re.MULTILINE)


MOST_SECONDS = 60  # of processor time for a simulation; most take less than one


class NoSimulation(RuntimeError):
    """The netlist cannot be simulated: with a loop of latches it may change for ever at one time, and
    some wires that splitnets made lack their declarations in what write_verilog writes."""


def _compile(folder, arguments):
    return subprocess.run(["iverilog", "-g2012"] + arguments, cwd=folder, check=True, capture_output=True, text=True)


def _is_verilog(folder, models):
    """Whether folder/gate.v compiles alone."""
    try:
        _compile(folder, ["-t", "null", "gate.v"] + models)
    except subprocess.CalledProcessError:
        return False
    return True


def _run(folder, text, models):
    """What the bench prints; it stands in `text` with all that it needs but folder/gate.v and `models`."""
    with open(folder + "/gate.v", encoding="utf-8") as file:
        text += _powered_up(file.read())
    with open(folder + "/bench.v", "w", encoding="utf-8") as file:
        file.write(text)
    try:
        _compile(folder, ["-o", "bench", "-s", "bench", "bench.v"] + models)
    except subprocess.CalledProcessError:
        if _is_verilog(folder, models):
            raise
        raise NoSimulation("The netlist as Verilog lacks declarations") from None
    done = subprocess.run(["vvp", "-n", folder + "/bench"], capture_output=True, text=True,
                          preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_CPU, (MOST_SECONDS, MOST_SECONDS + 9)))
    if done.returncode in (-signal.SIGXCPU, -signal.SIGKILL):
        raise NoSimulation("A simulation took more than %d seconds of processor time" % MOST_SECONDS)
    done.check_returncode()
    return done.stdout.split()


def is_netlist_wrong(folder, source, seed, models, runs=4, cycles=4000):
    """Whether folder/gate.v shows other outputs than the reference, folder/gold.v, somewhere from power-up.

    The reference is gates and plain flip-flops, in which what is unknown stays so: an output that is
    known is so whatever the registers hold at power-up. A netlist may go wrong before the first reset.
    """
    with open(folder + "/gold.v", encoding="utf-8") as file:
        gold = file.read()
    for run in range(runs):
        bench = _BENCH.format(last=_last_output(source), terms=0, claims=0, seed=seed + run, values="1'b0", checks="",
                              cycles=cycles, resets="")
        if _run(folder, gold + _MODELS + bench, models)[0] == "1":
            return True
    return False


def simulate(folder, source, all_claims, seed, models, cycles=200):
    """Checks the claims on source text and folder/gate.v; `models` are the cells of the technology."""
    nets = nets_of(folder + "/gate.json")
    outcome = Outcome()
    placed = []
    for claim in all_claims:
        places = [_place(term, nets) for term in claim.terms]
        if None in places:
            outcome.silent.append(claim)
        else:
            placed.append((claim, places))
    values, checks = [], []
    for index, (claim, places) in enumerate(placed):
        checks.append(_check(index, claim, len(values)))
        values += places
    gold = re.sub(r"\bsub(\d+)\b", r"gold_sub\1", source).replace("module top(", "module gold(")
    bench = _BENCH.format(last=_last_output(source), terms=max(len(values), 1) - 1, claims=max(len(placed), 1) - 1,
                          seed=seed, values=", ".join(reversed(values)) or "1'b0", checks="\n".join(checks),
                          cycles=cycles, resets=_FROM_RESET)
    broken, wrong, seen = _run(folder, gold + _MODELS + bench, models)
    outcome.broken = broken == "1"
    for (claim, _), is_wrong, is_seen in zip(placed, reversed(wrong), reversed(seen)):
        if is_wrong == "1":
            outcome.false.append(claim)
        elif is_seen == "1":
            outcome.checked += 1
        else:
            outcome.silent.append(claim)
    return outcome
