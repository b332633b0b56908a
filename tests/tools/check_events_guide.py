#!/usr/bin/python3
"""Compares docs/events.md and docs/events.schema.json with kptdb.

  check_events_guide.py DOCS KPTDB WORK
"""
import json
import pathlib
import re
import subprocess
import sys

import jsonschema

DOCS, KPTDB, WORK = sys.argv[1:]
VALIDATOR = jsonschema.Draft202012Validator(json.loads(pathlib.Path(DOCS, "events.schema.json").read_text()))

# Wrong lines, and the words of the validator for each mistake.
WRONG = {
    '{"event": "associate", "reference": "tx"}': "'transformed' is a required property",
    '{"event": "retire", "register": "tx"}': "'retire' is not one of",
    '{"register": "tx"}': "'event' is a required property",
    '{"event": "merge", "kept": "a", "merged": "b", "why": "c"}': "'why' was unexpected",
    '{"event": "eliminate", "register": "a", "reason": "lost"}': "'lost' is not one of",
    '{"event": "associate", "reference": {"name": "a"}, "transformed": "b"}': "'entity' is a required property",
    '{"event": "replicate", "register": "a\\u0001b", "replica": "c"}': "'a\\x01b' does not match",
    '{"event": "eliminate", "register": "a"}': "'reason' is a required property",
    '{"event": "eliminate", "register": "a", "value": 2}': "2 is not one of",
    '{"event": "map", "reference": []}': "'transformed' is a required property",
    '{"event": "map", "reference": [{"equal": ["a"]}], "transformed": []}': "'equal' was unexpected",
    '{"event": "register", "side": "left", "register": "a"}': "'left' is not one of",
    '{"event": "end"}': "'events' is a required property",
}


def record(lines, *options):
    """Replays the lines with kptdb."""
    command = [KPTDB, "record", "-", "--name", "guide", "-o", str(pathlib.Path(WORK, "guide.xml")), *options]
    return subprocess.run(command, input="\n".join(lines), text=True, capture_output=True)


def main():
    pathlib.Path(WORK).mkdir(parents=True, exist_ok=True)
    VALIDATOR.check_schema(VALIDATOR.schema)
    blocks = re.findall(r"```json\n(.*?)```", pathlib.Path(DOCS, "events.md").read_text(), re.DOTALL)
    lines = [line for block in blocks for line in block.splitlines() if "event" in json.loads(line)]
    for line in lines:
        VALIDATOR.validate(json.loads(line))
    events = [line for line in lines if json.loads(line)["event"] != "end"]
    run = record(events)
    assert run.returncode == 0, run.stderr
    assert f"{len(events)} events recorded" in run.stdout, run.stdout
    run = record(blocks[0].splitlines(), "--complete")
    assert run.returncode == 0, run.stderr
    for line, words in WRONG.items():
        told = [error.message for error in VALIDATOR.iter_errors(json.loads(line))]
        assert told and words in told[0], (line, told)
        assert record([line]).returncode == 3, line
    print(f"{len(events)} events recorded, {len(WRONG)} lines refused by the schema and by kptdb")


if __name__ == "__main__":
    main()
