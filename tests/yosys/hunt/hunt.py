#!/usr/bin/env python3
"""Hunts for false claims: sends random designs through random passes, and checks every claim that the
plugin records in a simulation of source and netlist.

Fails when a claim is false, or when the plugin's own audit had to refuse one. A netlist that
behaves differently from its source is a fault of Yosys. It is counted, whether or not a claim about it
is false, because its registers behave differently too. Flows that end with an error of Yosys are also
counted, by their reasons at the end, and so are claims whose values were never known.
"""

import argparse
import collections
import os
import random
import re
import resource
import signal
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True  # the sources stay as they are

import claims  # noqa: E402
import flows  # noqa: E402
import rtl  # noqa: E402
import simulation  # noqa: E402


class Totals:
    def __init__(self):
        self.designs = self.checked = self.silent = self.nothing = self.broken = self.false = 0
        self.ended = collections.Counter()  # by the reason

    def __str__(self):
        return "%d designs: %d claims checked, %d never seen, %d designs without any; " \
               "%d netlists wrong, %d flows ended early; %d false claims" % (
                   self.designs, self.checked, self.silent, self.nothing, self.broken, sum(self.ended.values()), self.false)


MOST_SECONDS = 20  # of processor time for a flow; most take less than one


class TookTooLong(RuntimeError):
    pass


def yosys(folder, script, log, plugin=(), seconds=MOST_SECONDS):
    """Runs the lines of a script with the output in folder/<log>. False when they end with an error."""
    with open(folder + "/flow.ys", "w", encoding="utf-8") as file:
        file.write("\n".join("\n".join(part.strip() for part in step.split(";")) for step in script) + "\n")
    done = subprocess.run(["yosys", *plugin, "-q", "-s", "flow.ys"], cwd=folder, capture_output=True, text=True,
                          check=False,
                          preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 9)))
    with open(folder + "/" + log, "w", encoding="utf-8") as file:
        file.write(done.stdout + done.stderr)
    if done.returncode == -signal.SIGXCPU:
        raise TookTooLong("Yosys took more than %d seconds of processor time" % seconds)
    if done.returncode not in (0, 1):
        raise RuntimeError("Yosys ended with %d: %s" % (done.returncode, done.stderr[-300:]))
    return done.returncode == 0


def takes_too_long_alone(folder, steps):
    """Whether Yosys takes much of the time without the plugin: the combinations of large machines explode."""
    try:
        yosys(folder, ["read_verilog source.v", "hierarchy -top top"] + steps, "alone.log", seconds=MOST_SECONDS // 4)
        return False
    except TookTooLong:
        return True


def record(folder, plugin, steps, audits):
    """One flow from source.v to gate.v, gate.json and kpt.xml; false when it ended with an error."""
    script = ["read_verilog source.v", "hierarchy -top top", "kpt_track" + (" -audit" if audits else "")] + steps
    # A LUT is written as a shift, whose result is unknown when any input is, even if the others decide.
    script += ["kpt_stage", "kpt_save kpt.xml", "simplemap t:$lut", "write_json gate.json",
               "write_verilog -noattr -norename gate.v"]
    return yosys(folder, script, "yosys.log", ("-m", plugin))


def reason_of_end(folder):
    """The message of Yosys, without the parts that differ between designs."""
    with open(folder + "/yosys.log", encoding="utf-8") as log:
        errors = [line.strip() for line in log if line.startswith("ERROR")]
    return re.sub(r"[\w\\$]*[$\\][^\s]*|\d+", "*", errors[-1]) if errors else "no message"


def is_netlist_wrong(folder, source, seed, models):
    script = ["read_verilog source.v", "hierarchy -top top", "proc; flatten; opt_clean; memory -nomap; memory_map; techmap",
              "dffunmap; simplemap; opt_clean; rename top gold", "write_verilog -noattr -norename gold.v"]
    return yosys(folder, script, "gold.log") and simulation.is_netlist_wrong(folder, source, seed, models)


def hunt(seed, folder, options, totals):
    """Runs one design and returns its false claims."""
    dice = random.Random(seed)
    source = rtl.Design(dice).text
    with open(folder + "/source.v", "w", encoding="utf-8") as file:
        file.write(source)
    totals.designs += 1
    steps = flows.flow(dice, options.cells + "/cells.lib")
    try:
        if not record(folder, options.plugin, steps, dice.random() < 0.3):
            totals.ended[reason_of_end(folder)] += 1
            return []
    except TookTooLong as reason:
        if not takes_too_long_alone(folder, steps):
            raise
        totals.ended[str(reason)] += 1
        return []
    found = claims.claims(folder + "/kpt.xml")
    models = [options.cells + "/cells.v"]
    try:
        outcome = simulation.simulate(folder, source, found, seed, models)
    except simulation.NoSimulation as reason:
        totals.ended[str(reason)] += 1
        return []
    with open(folder + "/yosys.log", encoding="utf-8") as log:
        false = outcome.false + [claims.Claim("refused: " + line.strip(), [], []) for line in log
                                 if "The audit refutes" in line]
    if outcome.broken or (false and is_netlist_wrong(folder, source, seed, models)):
        totals.broken += 1
        return []
    totals.checked += outcome.checked
    totals.silent += len(outcome.silent)
    totals.nothing += outcome.checked == 0
    return false


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("plugin")
    parser.add_argument("cells", help="folder of cells.lib and cells.v")
    parser.add_argument("--seed", type=int, default=1, help="of the first design; the next have the next")
    parser.add_argument("--designs", type=int, default=1)
    parser.add_argument("--keep", help="work in this folder, and leave there what the last design was")
    options = parser.parse_args()
    options.plugin, options.cells = os.path.abspath(options.plugin), os.path.abspath(options.cells)
    totals = Totals()
    with tempfile.TemporaryDirectory() as temporary:
        folder = options.keep or temporary
        os.makedirs(folder, exist_ok=True)
        for seed in range(options.seed, options.seed + options.designs):
            try:
                false = hunt(seed, folder, options, totals)
            except (subprocess.SubprocessError, RuntimeError, KeyError, ValueError) as failure:
                print("seed %d: %s %s" % (seed, failure, getattr(failure, "stderr", "") or ""))
                totals.false += 1
                continue
            totals.false += len(false)
            if totals.designs % 100 == 0:
                print(totals, flush=True)
            for claim in false:
                print("seed %d: false: %s" % (seed, claim.text), flush=True)
    for reason, count in totals.ended.most_common():
        print("%d ended early: %s" % (count, reason))
    print(totals)
    return totals.false != 0


if __name__ == "__main__":
    sys.exit(main())
