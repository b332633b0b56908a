"""Finding registers and maps."""
import pytest

import kpt
from conftest import names


@pytest.fixture
def db():
    db = kpt.Database("look-ups")
    db.associate("b", "x")
    db.associate(("u", "entity", "dff"), "y")
    db.associate("a", ("v", "entity", "dff"))
    return db


def test_a_walk_meets_signals_then_instances_in_order_of_creation(db):
    assert names(db) == names(db.reference) == ["b", "a", "u"]
    assert names(db.transformed) == ["x", "y", "v"]


def test_lengths_count_the_reference_registers_and_the_maps(db):
    assert (len(db), len(db.reference), len(db.transformed), len(db.maps)) == (3, 3, 3, 3)


def test_membership_goes_by_key(db):
    assert "b" in db and "x" not in db and "x" in db.transformed
    assert ("u", "entity", "dff") in db and "u" not in db
    assert db.reference["b"] in db


def test_a_register_tells_what_it_is(db):
    register = db.reference["u", "entity", "dff"]
    assert (register.name, register.entity, register.type, register.side) == ("u", "entity", "dff", "reference")
    assert not register.is_signal and register.key == ("u", "entity", "dff")
    assert db.transformed["x"].key == "x" and db.transformed["x"].side == "transformed"
    assert isinstance(register.id, int)


def test_a_register_leads_to_its_map(db):
    assert db.transformed["x"].map == db["b"]
    assert names(db.transformed["x"].map.equivalents) == ["b"]


def test_maps_are_walked_in_order_of_creation(db):
    assert [map.register.name for map in db.maps] == ["b", "u", "a"]
    assert [map.number for map in db.maps] == [1, 2, 3]


def test_equal_handles_are_one_key(db):
    assert db["b"] == db["b"] and db["b"] != db["a"]
    assert {db.reference["b"], db.reference["b"]} == {db["b"].register}
    assert db.reference["b"] != "b" and db["b"] != 1
    assert len({db["b"], db["b"], db["a"]}) == 2


def test_an_unknown_register_names_the_nearest():
    db = kpt.Database("counter")
    db.associate_many(["count", "mount", "clock", "reset"], ["1", "2", "3", "4"])
    with pytest.raises(KeyError) as error:
        db["coumt"]
    assert isinstance(error.value, kpt.UnknownRegister)
    assert error.value.nearest == ("count", "mount")
    assert str(error.value) == "no register 'coumt'; did you mean count or mount?"
    assert error.value.key == "coumt"


def test_an_unknown_register_without_a_near_one_says_only_so(db):
    with pytest.raises(kpt.UnknownRegister, match=r"^no register 'nothing like it'$"):
        db.transformed["nothing like it"]


def test_get_answers_with_a_default(db):
    assert db.get("b") == db["b"] and db.get("q") is None and db.get("q", 1) == 1
    assert db.reference.get("q", "-") == "-" and db.transformed.get("x").name == "x"


@pytest.mark.parametrize("key", [1, None, ("a", "b"), ("a", "b", 1), b"a", ["a"]])
def test_what_names_no_register_is_a_wrong_type(db, key):
    for ask in (lambda: db[key], lambda: key in db, lambda: db.reference[key], lambda: db.associate(key, "new")):
        with pytest.raises(TypeError):
            ask()


def test_names_need_not_be_utf_8_or_printable(db):
    for name in ("ä\N{SNOWMAN}", "\udcff\udc80", "a\0b", "\n", ""):
        db.associate(name, name)
        assert db[name].register.name == db[name].equivalents[0].name == name


def test_a_surrogate_that_stands_for_no_byte_is_refused(db):
    with pytest.raises(UnicodeEncodeError):
        db["\ud800"]


def test_attributes_are_a_mapping_that_writes_through(db):
    attributes = db["b"].attributes
    attributes["pass"] = "opt_dff"
    attributes["note"] = "ä"
    assert dict(db["b"].attributes) == {"note": "ä", "pass": "opt_dff"}
    del attributes["note"]
    assert attributes.get("note") is None and len(attributes) == 1
    with pytest.raises(KeyError):
        del attributes["note"]
    db.reference["b"].attributes["status"] = "proved"
    assert db["b"].register.attributes["status"] == "proved"


def test_reprs_tell_what_things_are(db):
    db.associate_fsm(["s"], ["h0", "h1"], [("0", "10"), ("1", "01")])
    shown = [db, db["b"], db.reference, db.maps, db.transformed["v", "entity", "dff"], db["s"].fsm, db["s"].reference[0],
             db["s"].fsm.transformed, db["b"].attributes]
    assert [repr(thing) for thing in shown] == [
        "<kpt.Database look-ups: 4 reference and 5 transformed registers, 4 maps>", "<kpt.Map: 1 of b, mapped>",
        "<kpt.Registers: 4 reference>", "<kpt.Maps: 4>", "<kpt.Register: transformed v (entity, dff)>",
        "<kpt.StateTable: 2 states of 1 bits that became 2>", "<kpt.Group: 1 same, 0 inverse>",
        "<kpt.Bits: 2 states of 2 bits>", "<kpt.Attributes: {}>"
    ]


def test_a_table_is_indexed_by_state_and_column():
    table = kpt.StateTable([("00", "100"), ("01", "010")])
    assert (table.reference[0, 1], table.reference[1, 1], table.transformed[-1, -2]) == (0, 1, 1)
    assert len(table) == 2 and table.transformed.shape == (2, 3)
    assert table == kpt.StateTable(table.codes) and table != kpt.StateTable([("0", "1")])


@pytest.mark.parametrize("place", [(2, 0), (0, 2), (-3, 0), (0, -3)])
def test_a_bit_beyond_the_table_is_an_index_error(place):
    with pytest.raises(IndexError):
        kpt.StateTable([("00", "100"), ("01", "010")]).reference[place]


def test_bits_are_a_buffer_that_outlives_the_table():
    view = memoryview(kpt.StateTable([("00", "100"), ("01", "010")]).transformed)
    assert view.tolist() == [[1, 0, 0], [0, 1, 0]] and view.readonly and view.format == "B"


def test_numpy_takes_bits_as_they_are():
    numpy = pytest.importorskip("numpy")
    bits = numpy.asarray(kpt.StateTable([("00", "100"), ("01", "010")]).transformed)
    assert bits.shape == (2, 3) and bits.sum() == 2
