"""Event files, which are replayed as kptdb does it."""
import gzip
import json

import pytest

import kpt
from conftest import names

EVENTS = [
    {"event": "associate", "reference": "tx", "transformed": "tx_reg"},
    {"event": "associate", "reference": "head", "transformed": {"name": "u/head", "entity": "fifo", "type": "sdffe"}},
    {"event": "associate_fsm", "reference": ["s"], "transformed": ["h0", "h1"], "states": [["0", "10"], ["1", "01"]]},
    {"event": "replicate", "register": "tx_reg", "replica": "tx_dup"},
    {"event": "retime_inverter", "register": "tx_reg"},
]
LINES = [json.dumps(event) for event in EVENTS]


def assert_is_recorded(db):
    assert names(db) == ["tx", "head", "s"]
    assert names(db["tx"].inverted_equivalents) == ["tx_reg"]
    assert db["head"].equivalents[0].key == ("u/head", "fifo", "sdffe")
    assert db["s"].fsm.codes == [("0", "10"), ("1", "01")]


@pytest.mark.parametrize("events", [EVENTS, LINES, [line.encode() for line in LINES], ["", *LINES, " \r\n"]])
def test_events_are_dicts_or_lines(events):
    assert_is_recorded(kpt.record(iter(events), name="uart"))


@pytest.mark.parametrize("pack", [lambda text: text, gzip.compress])
def test_a_file_names_its_database(tmp_path, pack):
    path = tmp_path / "uart.jsonl.gz"
    path.write_bytes(pack("\r\n".join(LINES).encode()))
    db = kpt.record(path)
    assert db.name == "uart"
    assert_is_recorded(db)


def test_events_add_to_a_database(db):
    db.associate("a", "x")
    assert db.record(EVENTS) == 5 and len(db) == 4


def test_an_iterable_needs_a_name():
    with pytest.raises(TypeError, match="needs a name"):
        kpt.record(LINES)


def test_a_refused_event_tells_its_place_and_the_librarys_line(tmp_path):
    path = tmp_path / "uart.jsonl"
    path.write_text("\n".join([LINES[0], "", '{"event": "merge", "kept": "q", "merged": "tx_reg"}']))
    with pytest.raises(kpt.Refused) as refusal:
        kpt.record(path)
    error = refusal.value
    assert (error.file, error.line, error.event, error.index) == (str(path), 3, "merge tx_reg into q", 1)
    assert error.reason == "Error: Can't find q in T set"
    assert str(error) == f"{path}:3: merge tx_reg into q: Error: Can't find q in T set"


def test_what_is_no_event_is_a_format_error(db):
    with pytest.raises(kpt.FormatError, match='^<events>:2: unknown event "retire"$') as error:
        db.record([LINES[0], '{"event": "retire"}'])
    assert (error.value.line, error.value.text) == (2, 'unknown event "retire"')
    assert "tx" in db


def test_places_count_beyond_what_is_recorded_at_once(db):
    lines = [f'{{"event": "associate", "reference": "r{k}", "transformed": "t{k}"}}' for k in range(10000)]
    with pytest.raises(kpt.FormatError, match="^<events>:10001: not JSON"):
        db.record([*lines, "{"])
    assert len(db) == 10000


def test_what_is_no_line_is_a_wrong_type(db):
    with pytest.raises(TypeError, match="an event is a line or a dict, not int"):
        db.record([LINES[0], 5])


def test_a_database_comes_back_from_its_events(db):
    db.record(EVENTS)
    db["tx"].attributes["pass"] = "synth"
    events = db.events()
    assert events[-1] == {"event": "end", "events": len(events) - 1}
    again = kpt.record(events, name="again")
    records = [one.to_records(numpy=False) for one in (db, again)]
    for record in records:
        del record["id"]
    assert records[0] == records[1]
    assert dict(again["tx"].attributes) == {"pass": "synth"}


def test_the_end_of_a_file_counts_its_events(db):
    end = {"event": "end", "events": len(EVENTS)}
    assert db.record([*EVENTS, end]) == len(EVENTS)
    with pytest.raises(kpt.FormatError, match="the end event counts 5 events, but the file has 0"):
        db.record([end])
    with pytest.raises(kpt.FormatError, match="<events>:2: there is a line after the end event"):
        db.record([{"event": "end", "events": 0}, EVENTS[0]])


def test_a_name_that_no_event_can_hold_is_refused(db):
    db.associate("\udcff", "x")
    with pytest.raises(kpt.Refused, match="not UTF-8"):
        db.events()
