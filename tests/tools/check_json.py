#!/usr/bin/python3
"""Holds docs/kptdb-json.md and the schemas beside it to what kptdb prints.

  check_json.py SOURCES KPTDB WORK
"""
import json
import pathlib
import re
import shutil
import subprocess
import sys

import jsonschema

SOURCES, KPTDB, WORK = pathlib.Path(sys.argv[1]), sys.argv[2], pathlib.Path(sys.argv[3])
SCHEMAS = SOURCES / "docs/kptdb-json"
GUIDE = (SOURCES / "docs/kptdb-json.md").read_text()
DOCUMENTED = {word for span in re.findall(r"`([^`]+)`", GUIDE) for word in [span]}
DUMP = (
    "$timescale 1 ns $end\n$scope module tb $end\n$var wire 1 c clk $end\n$scope module dut $end\n"
    "$var wire 1 ! {0} $end\n$upscope $end\n$upscope $end\n$enddefinitions $end\n#0\n0c\n0!\n#5\n1c\n#6\n{1}!\n#10\n0c\n#15\n1c\n"
)


def keys_of(value):
    """All keys in a result, but names that are data."""
    if isinstance(value, dict):
        for key, inner in value.items():
            yield key
            yield from keys_of(inner)
    elif isinstance(value, list):
        for inner in value:
            yield from keys_of(inner)


def run(*arguments):
    return subprocess.run([KPTDB, *arguments], cwd=WORK, text=True, capture_output=True)


def schema_of(command):
    return json.loads((SCHEMAS / f"{command}.schema.json").read_text())


def expect(schema, exit_code, *arguments):
    """Runs the command, and holds what it prints to a schema and to the guide."""
    result = run(*arguments)
    assert result.returncode == exit_code, (arguments, result)
    value = json.loads(result.stdout)
    jsonschema.Draft202012Validator(schema_of(schema)).validate(value)
    assert next(iter(value)) == "format", arguments
    unknown = set(keys_of(value)) - DOCUMENTED
    assert not unknown, (arguments, unknown)


def expect_refusals():
    """A schema that lets everything through would prove nothing."""
    for path in SCHEMAS.iterdir():
        schema = json.loads(path.read_text())
        jsonschema.Draft202012Validator.check_schema(schema)
        validator = jsonschema.Draft202012Validator(schema)
        assert not validator.is_valid({"format": 2}), path
        assert not validator.is_valid({"format": 1}), path
        assert f"kptdb-json/{path.name}" in GUIDE, path


def main():
    shutil.rmtree(WORK, ignore_errors=True)
    WORK.mkdir(parents=True)
    for name in ("synthesis", "optimisation"):
        shutil.copy(SOURCES / f"examples/events/uart_tx_{name}.jsonl", WORK / f"{name}.jsonl")
    (WORK / "bad.jsonl").write_text('{"event": "merge", "kept": "a", "merged": "b"}\nnonsense\n')
    (WORK / "small.jsonl").write_text('{"event": "associate", "reference": "a", "transformed": "b"}\n')
    (WORK / "rtl.vcd").write_text(DUMP.format("a", 1))
    (WORK / "gate.vcd").write_text(DUMP.format("b", 1))
    (WORK / "other.vcd").write_text(DUMP.format("b", 0))

    expect("record", 0, "record", "synthesis.jsonl", "-o", "a.xml", "--json")
    expect("record", 3, "record", "bad.jsonl", "-o", "bad.xml", "--keep-going", "--json")
    expect("record", 0, "record", "small.jsonl", "-o", "small.xml", "--json")
    expect("record", 0, "record", "optimisation.jsonl", "-o", "b.xml", "--json")
    text = (WORK / "a.xml").read_text()
    (WORK / "odd.xml").write_text(text.replace("<kp id=\"1\">", "<kp id=\"777\">", 1))
    for file in ("a.xml", "b.xml", "odd.xml"):
        expect("info", 0, "info", file, "--memory", "--json")
        expect("show", 0, "show", file, "*", "--json")
        expect("list", 0, "list", file, "--json")
        expect("stats", 0, "stats", file, "--json")
        expect("export", 0, "export", file, "--json")
    expect("show", 1, "show", "a.xml", "shfit[0]", "--json")
    expect("list", 1, "list", "a.xml", "--name", "none", "--json")
    expect("diff", 0, "diff", "a.xml", "a.xml", "--json")
    expect("diff", 1, "diff", "a.xml", "b.xml", "--json")
    expect("check", 0, "check", "a.xml", "--json")
    expect("check", 1, "check", "odd.xml", "--json")
    expect("compose", 0, "compose", "a.xml", "b.xml", "-o", "c.xml", "--json")
    for register in ("shift[2]", "state[0]", "parity_odd"):
        expect("explain", 0, "explain", register, "a.xml", "b.xml", "--json")
    expect("explain", 0, "explain", "shift_reg[2]", "a.xml", "--transformed", "--json")
    expect("error", 1, "explain", "shift[2]", "a.xml", "a.xml", "--json")
    expect("unite", 0, "unite", "a.xml", "b.xml", "-o", "u.xml", "--json")
    expect("wave", 0, "wave", "small.xml", "gate.vcd", "--scope", "tb.dut", "-o", "shown.vcd", "--json")
    audit = ("audit", "small.xml", "rtl.vcd", "--clock", "tb.clk", "--scope", "tb.dut", "--json")
    expect("audit", 0, *audit[:3], "gate.vcd", *audit[3:])
    expect("audit", 1, *audit[:3], "other.vcd", *audit[3:])
    for command in ("info", "check", "list", "stats"):
        expect("error", 3, command, "missing.xml", "--json")
        expect("error", 2, command, "--json")
    expect("error", 1, "compose", "a.xml", "a.xml", "-o", "x.xml", "--json")
    expect_refusals()
    print("every result fits its schema and the guide")


if __name__ == "__main__":
    main()
