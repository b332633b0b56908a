"""Measures the commands of kptdb, and writes the tables of the figures page.

  tool_figures.py KPTDB READ_LINES PAGE [registers]

Each command runs once. Times are processor time, user and system; the peak is of resident memory.
"""
import os
import pathlib
import subprocess
import sys
import tempfile

import page_part
import tool_workloads

REGISTERS = 1_000_000
WAVE_REGISTERS = 1_000
WAVE_CYCLES = 200_000


class Cost:
    """What one run of a command takes."""

    def __init__(self, command):
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        errors = process.stderr.read()
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            sys.exit(f"{' '.join(command)}: {process.returncode}: {errors.decode()}")
        self.user, self.system, self.peak = usage.ru_utime, usage.ru_stime, usage.ru_maxrss / 1024

    @property
    def time(self):
        return self.user + self.system


def rows(kptdb, commands):
    for name, arguments in commands.items():
        cost = Cost([kptdb, *arguments])
        print(f"{name}: {cost.user:.1f} + {cost.system:.1f} s, {cost.peak:.0f} MB", flush=True)
        yield f"| `{name}` | {cost.user:.1f} + {cost.system:.1f} s | {cost.peak:.0f} MB |\n"


def dump_rows(kptdb, read_lines, dumps):
    gate = dumps.path("gate.vcd")
    size = os.path.getsize(gate) / 1e6
    commands = {name: ([kptdb, *arguments], 2 * size if name == "audit" else size) for name, arguments in dumps.commands().items()}
    commands["cat, to a file"] = (["sh", "-c", 'cat "$0" >"$1"', gate, dumps.path("cat")], size)
    commands["read and write lines (`bench/read_lines.cpp`)"] = ([read_lines, gate, dumps.path("lines")], size)
    for name, (command, read) in commands.items():
        cost = Cost(command)
        print(f"{name}: {cost.time:.1f} s, {read / cost.time:.0f} MB/s, {cost.peak:.0f} MB", flush=True)
        yield f"| {name} | {cost.time:.1f} s | {read / cost.time:.0f} MB/s | {cost.peak:.0f} MB |\n"


def main():
    kptdb, read_lines, page = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2]), pathlib.Path(sys.argv[3])
    count = int(sys.argv[4]) if len(sys.argv) > 4 else REGISTERS

    def run(arguments):
        subprocess.run([kptdb, *arguments], check=True, stdout=subprocess.DEVNULL)

    with tempfile.TemporaryDirectory() as folder:
        files = tool_workloads.Files(folder, count, run)
        text = f"A stage of {count:,} registers is {os.path.getsize(files.path('1.xml')) / 1e6:.0f} MB.\n\n"
        text += "| Command | User + system | Peak memory |\n|---|---|---|\n" + "".join(rows(kptdb, files.commands()))
    with tempfile.TemporaryDirectory() as folder:
        dumps = tool_workloads.Dumps(folder, WAVE_REGISTERS, WAVE_CYCLES, run)
        text += (f"\nThe dumps of {WAVE_REGISTERS:,} registers and {WAVE_CYCLES:,} cycles have "
                 f"{os.path.getsize(dumps.path('gate.vcd')) / 1e6:.0f} MB each. An audit reads two.\n\n")
        text += "| Command | Time | Read | Peak memory |\n|---|---|---|---|\n" + "".join(dump_rows(kptdb, read_lines, dumps))
    page_part.replace(page, "scripts/bench-tool", text)


if __name__ == "__main__":
    main()
