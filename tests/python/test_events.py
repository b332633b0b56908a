"""Events as methods, and their refusals."""
import pytest

import kpt
from conftest import names


def test_an_association_maps_the_one_register_to_the_other(db):
    db.associate("count", "count_reg")
    assert names(db["count"].equivalents) == ["count_reg"]
    assert db["count"].fate == "mapped"


def test_arguments_have_names(db):
    db.associate(reference="count", transformed="count_reg")
    db.replicate(register="count_reg", replica="count_dup")
    db.retime_inverter(register="count_reg")
    db.eliminate(register="count_dup", reason="no_fanout")
    assert names(db["count"].inverted_equivalents) == ["count_reg"]


@pytest.mark.parametrize("key", [("u/count", "counter", "dffe"), "count"])
def test_both_kinds_of_register_stand_on_either_side(db, key):
    db.associate(key, "a")
    db.associate("b", key)
    assert db[key].register.key == key
    assert db["b"].equivalents[0].key == key


def test_an_association_with_a_known_register_is_refused_and_says_which(db):
    db.associate("a", "x")
    with pytest.raises(kpt.Refused, match=r"^the reference register a exists already$"):
        db.associate("a", "y")
    with pytest.raises(kpt.Refused, match=r"^the transformed register x exists already$"):
        db.associate("b", "x")
    assert len(db) == 1 and len(db.transformed) == 1


def test_a_register_of_another_database_names_one_here(db):
    other = kpt.Database("other")
    other.associate("a", ("u", "e", "t"))
    db.associate(other["a"].equivalents[0], other.reference["a"])
    assert db["u", "e", "t"].equivalents[0].name == "a"


def test_a_replication_adds_an_equivalent(db):
    db.associate("a", "x")
    db.replicate("x", "x_dup")
    assert names(db["a"].equivalents) == ["x", "x_dup"]


def test_a_refused_replication_carries_the_librarys_line(db):
    with pytest.raises(kpt.Refused) as refusal:
        db.replicate("x", "y")
    assert str(refusal.value) == refusal.value.reason == "x does not exist in T"


def test_a_refused_merge_carries_the_librarys_line(db):
    with pytest.raises(kpt.Refused, match=r"^Error: Can't find x in T set$"):
        db.merge(kept="x", merged="y")


def test_a_merge_puts_both_into_one_map(db):
    db.associate("a", "x")
    db.associate("b", "y")
    db.merge(kept="x", merged="y")
    assert db["a"] == db["b"]
    assert names(db["b"].twins) == ["a"]
    assert names(db["b"].equivalents) == ["x"]


def test_a_retimed_inverter_inverts(db):
    db.associate("a", "x")
    db.retime_inverter("x")
    assert db["a"].inverted is True
    assert db["a"].equivalents == ()
    assert names(db["a"].inverted_equivalents) == ["x"]


def test_a_refused_retiming_carries_the_librarys_line(db):
    with pytest.raises(kpt.Refused, match=r"^Error: Can't find x in T set$"):
        db.retime_inverter("x")


@pytest.mark.parametrize("reason, constant", [("stuck_at_zero", 0), ("stuck_at_one", 1)])
def test_a_stuck_register_is_constant(db, reason, constant):
    db.associate("a", "x")
    db.eliminate("x", reason)
    assert db["a"].constant == constant
    assert db["a"].elimination == reason
    assert db["a"].fate == "constant"


def test_a_register_without_fanout_says_so(db):
    db.associate("a", "x")
    db.eliminate("x", "no_fanout")
    assert db["a"].no_fanout
    assert db["a"].constant is None
    assert db["a"].fate == "without_fanout"


def test_an_elimination_without_a_reason_is_refused(db):
    db.associate("a", "x")
    with pytest.raises(kpt.Refused, match="an elimination is recorded with its reason only"):
        db.eliminate("x", "eliminated")


def test_an_unknown_reason_is_a_wrong_value(db):
    db.associate("a", "x")
    with pytest.raises(ValueError, match="stuck_at_zero, stuck_at_one or no_fanout, not as lost"):
        db.eliminate("x", "lost")
    assert db["a"].elimination is None


def test_the_value_of_an_inverted_register_makes_its_reference_the_inverse(db):
    db.associate("a", "x")
    db.retime_inverter("x")
    db.eliminate("x", value=1)
    assert db["a"].constant == 0


def test_an_elimination_has_a_reason_or_a_value(db):
    db.associate("a", "x")
    for arguments in ({}, {"reason": "no_fanout", "value": 0}):
        with pytest.raises(TypeError, match="with a reason or with its value"):
            db.eliminate("x", **arguments)
    with pytest.raises(ValueError, match="a value is 0 or 1"):
        db.eliminate("x", value=2)


def test_an_event_tells_where_it_comes_from(db):
    db.associate("a", "x", pass_="synth", note="first")
    db.retime_inverter("x", pass_="retime")
    assert dict(db["a"].attributes) == {"note": "first", "pass": "synth, retime"}
    made = db.associate_map([(["b"], [])], [(["y"], [])], pass_="merge", note="second")
    assert dict(made.attributes) == {"note": "second", "pass": "merge"}


def test_codes_that_contradict_each_other_are_refused(db):
    with pytest.raises(kpt.Refused):
        db.associate_fsm(["s"], ["h0", "h1"], [("0", "10"), ("0", "01")])
    assert len(db) == 0


def test_a_block_instance_is_no_name_of_an_event(db):
    db.associate("a", ("u", "e", "t"))
    with pytest.raises(TypeError, match=r"not the block instance u \(e, t\)"):
        db.retime_inverter(db["a"].equivalents[0])


def test_a_state_machine_has_its_table(db):
    db.associate_fsm(["s1", "s0"], ["h0", "h1", "h2"], [("00", "100"), ("01", "010"), ("10", "001")])
    assert db["s0"].is_fsm
    assert db["s0"].fate == "machine"
    assert db["s0"].fsm.codes == [("00", "100"), ("01", "010"), ("10", "001")]
    assert [names(group.same) for group in db["s0"].reference] == [["s1"], ["s0"]]


def test_the_bit_of_a_machine_has_no_equivalents_across(db):
    db.associate_fsm(["s"], ["h0", "h1"], [("0", "10"), ("1", "01")])
    assert db["s"].equivalents == () and db["s"].inverted_equivalents == ()
    assert db["s"].inverted is None


@pytest.mark.parametrize("states, text", [
    ([("0", "100"), ("1", "01")], "the code \"01\" is no string of 3 characters"),
    ([("0", "1x0")], "the code \"1x0\" is no string of 3 characters 0 and 1 for the transformed registers"),
    ([], "a table has 1 to 65535 states, not 0"),
    ([("", "")], "a table has 1 to 65535 reference registers, not 0"),
    ([("0",)], "a state is a pair of codes"),
    ([("00", "100")], "the table has 2 and 3 columns for 1 and 3 registers"),
])
def test_codes_that_are_no_table_are_wrong_values(db, states, text):
    with pytest.raises(ValueError, match=text):
        db.associate_fsm(["s"], ["a", "b", "c"], states)
    assert len(db) == 0


def test_a_machine_names_no_register_twice(db):
    with pytest.raises(ValueError, match="reference names s twice"):
        db.associate_fsm(["s", "s"], ["a"], [("00", "1")])


def test_a_machine_with_a_known_register_is_refused(db):
    db.associate("a", "x")
    with pytest.raises(kpt.Refused, match="the transformed register x exists already"):
        db.associate_fsm(["s"], ["x"], [("0", "1")])


def test_a_map_of_any_shape_is_one_call(db):
    made = db.associate_map([(["a", ("u", "e", "t")], ["b"])], [(["x"], ["y"])])
    assert names(made.equivalents) == ["x"]
    assert names(db["b"].equivalents) == ["y"]
    assert db["b"].inverted is True
    assert db["u", "e", "t"].inverted is False
    assert names(db["b"].inverted_twins) == ["a", "u"]


@pytest.mark.parametrize("constant", [0, 1])
def test_the_constant_of_an_inverted_register_is_the_other_value(db, constant):
    db.associate_map([(["a"], ["b"])], [(["x"], ["y"])], constant=constant)
    assert [db[name].constant for name in "ab"] == [constant, 1 - constant]
    assert [db.transformed[name].map.constant for name in "xy"] == [constant, 1 - constant]


def test_a_refused_map_carries_the_librarys_line(db):
    db.associate("a", "x")
    with pytest.raises(kpt.Refused, match="^Error: Map not recorded: "):
        db.associate_map([(["a"], [])], [(["y"], [])])
    assert len(db.transformed) == 1


def test_a_map_is_constant_or_without_fanout():
    with pytest.raises(ValueError, match="a value is 0 or 1, and what has one is not without fanout"):
        kpt.Database("d").associate_map([(["a"], [])], [], constant=2)


def test_messages_are_captured_and_not_printed(db, capfd):
    db.associate("a", "x")
    db.replicate("x", "y")
    with pytest.raises(kpt.Refused):
        db.merge("q", "x")
    assert capfd.readouterr() == ("", "")
