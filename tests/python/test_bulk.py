"""Calls for many registers."""
import sys

import pytest

import kpt
from conftest import names


def test_many_are_associated_name_by_name(db):
    assert db.associate_many([f"r{k}" for k in range(1000)], (f"t{k}" for k in range(1000))) == 1000
    assert names(db["r999"].equivalents) == ["t999"]


def test_lists_of_different_lengths_record_nothing(db):
    with pytest.raises(ValueError, match="2 reference names and 1 transformed ones"):
        db.associate_many(["a", "b"], ["x"])
    assert len(db) == 0


def test_the_first_refused_pair_ends_it_and_tells_its_index(db):
    db.associate("b", "q")
    with pytest.raises(kpt.Refused, match="pair 1, b and y: one of them exists already") as refusal:
        db.associate_many(["a", "b", "c"], ["x", "y", "z"])
    assert refusal.value.index == 1
    assert "a" in db and "c" not in db


@pytest.mark.parametrize("wrong", [[1], None, [("a", "e", "t")], 5])
def test_what_is_no_name_records_nothing(db, wrong):
    with pytest.raises(TypeError):
        db.associate_many(["a"], wrong)
    assert len(db) == 0


def test_names_of_any_bytes_are_associated(db):
    odd = ["ä", "\udcff", "\N{GRINNING FACE}", "a\0b"]
    db.associate_many(odd, odd)
    assert names(db) == odd


@pytest.fixture
def flow(db):
    db.associate("kept", "k1")
    db.replicate("k1", "k2")
    db.associate("turned", "t1")
    db.retime_inverter("t1")
    db.associate("zero", "z1")
    db.eliminate("z1", "stuck_at_zero")
    db.associate("unused", "u1")
    db.eliminate("u1", "no_fanout")
    db.associate_fsm(["s1", "s0"], ["h0", "h1"], [("01", "10"), ("10", "01")])
    db.associate(("u", "entity", "dff"), ("v", "cell", "DFF"))
    return db


def test_records_have_a_row_for_each_reference_register(flow):
    assert flow.to_records(numpy=False) == {
        "name": ["kept", "turned", "zero", "unused", "s1", "s0", "u"],
        "entity": ["", "", "", "", "", "", "entity"],
        "type": ["", "", "", "", "", "", "dff"],
        "id": [register.id for register in flow],
        "fate": ["mapped", "mapped", "constant", "without_fanout", "machine", "machine", "mapped"],
        "map": [1, 2, 3, 4, 5, 5, 6],
        "counterpart": ["k1", "t1", "", "", "", "", "v"],
        "inverted": [0, 1, -1, -1, -1, -1, 0],
        "constant": [-1, -1, 0, -1, -1, -1, -1],
    }


def test_records_say_what_the_maps_say(flow):
    for side in ("reference", "transformed"):
        records = flow.to_records(side, numpy=False)
        for k, register in enumerate(getattr(flow, side)):
            assert records["name"][k] == register.name
            assert records["map"][k] == (register.map.number if register.has_map else 0)
            if register.has_map:
                inverted, constant = register.map.inverted, register.map.constant
                assert records["fate"][k] == register.map.fate
                assert records["inverted"][k] == (-1 if inverted is None else int(inverted))
                assert records["constant"][k] == (-1 if constant is None else constant)


def test_records_are_numpy_arrays_where_numpy_is(flow):
    numpy = pytest.importorskip("numpy")
    records = flow.to_records()
    assert all(isinstance(column, numpy.ndarray) for column in records.values())
    assert records["inverted"].dtype == numpy.int8 and records["name"].dtype == object
    assert (records["fate"] == "machine").sum() == 2


def test_records_are_lists_without_numpy(flow, monkeypatch):
    monkeypatch.setitem(sys.modules, "numpy", None)
    assert isinstance(flow.to_records()["name"], list)
    with pytest.raises(ImportError):
        flow.to_records(numpy=True)


def test_a_side_is_one_of_two(flow):
    with pytest.raises(ValueError, match='a side is "reference" or "transformed", not "left"'):
        flow.to_records("left")


def test_the_records_of_one_large_map_are_not_quadratic():
    db = kpt.Database("large")
    count = 60000
    db.associate_map([([f"r{k}" for k in range(count)], [])], [([f"t{k}" for k in range(count)], [])])
    records = db.to_records("transformed", numpy=False)
    assert records["counterpart"] == ["r0"] * count
