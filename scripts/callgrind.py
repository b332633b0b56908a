"""Counts the instructions of a program with callgrind."""
import re
import subprocess
import sys


def instructions(measured, command):
    """Those below the function `measured`. Ends this program when there are none."""
    run = subprocess.run(
        ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", f"--toggle-collect={measured}", *command],
        capture_output=True,
        text=True,
    )
    found = re.search(r"Collected : (\d+)", run.stderr)
    if not found:
        sys.exit(run.stderr)
    return int(found.group(1))
