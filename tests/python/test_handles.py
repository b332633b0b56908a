"""Handles never dangle, and Python never gets a null handle."""
import gc

import pytest

import kpt
from conftest import names

CLASSES = [kpt.Bits, kpt.Group, kpt.Map, kpt.Maps, kpt.Register, kpt.Registers]


def pair():
    db = kpt.Database("pair")
    db.associate_many(["a", "b"], ["x", "y"])
    return db


@pytest.mark.parametrize("make", [lambda: pair()["a"], lambda: pair().reference["a"], lambda: pair()["a"].equivalents[0]])
def test_a_handle_keeps_its_database_alive(make):
    handle = make()
    gc.collect()
    assert (handle.register if isinstance(handle, kpt.Map) else handle.map.register).name in ("a", "x")


@pytest.mark.parametrize("make", [lambda: pair().reference, lambda: pair().maps])
def test_a_walk_keeps_its_database_alive(make):
    assert len(list(iter(make()))) == 2


def test_a_group_keeps_its_database_alive():
    group = pair()["a"].transformed[0]
    gc.collect()
    assert names(group.same) == ["x"]


def test_an_absorbed_map_is_gone():
    db = pair()
    absorbed = db["b"]
    db.merge("x", "y")
    assert absorbed.is_gone and not db["b"].is_gone
    assert repr(absorbed) == "<kpt.Map: gone>"
    for ask in ("number", "register", "reference", "transformed", "is_fsm", "fsm", "elimination", "equivalents",
                "inverted_equivalents", "twins", "inverted_twins", "inverted", "constant", "no_fanout", "fate"):
        with pytest.raises(kpt.Gone, match="map 2 is gone: it was absorbed or deleted"):
            getattr(absorbed, ask)
    with pytest.raises(kpt.Gone):
        absorbed.attributes["a"] = "b"
    with pytest.raises(kpt.Gone):
        dict(absorbed.attributes)


def test_a_later_map_does_not_answer_for_one_that_is_gone():
    db = pair()
    absorbed = db["b"]
    db.merge("x", "y")
    for k in range(100):
        db.associate(f"new{k}", f"new{k}")
    assert absorbed.is_gone
    assert absorbed != db["new0"]


def test_a_map_tells_nothing_of_a_register_that_has_left_it():
    db = pair()
    seen_from_y = db.transformed["y"].map
    db.replicate("y", "z")
    db.merge("x", "y")
    seen_from_x = db.transformed["x"].map
    db.eliminate("x", "stuck_at_one")
    with pytest.raises(kpt.Gone):
        seen_from_y.constant
    with pytest.raises(kpt.Gone, match="register x is no longer in map 1"):
        seen_from_x.constant
    assert seen_from_x.number == 1


def test_a_register_without_a_map_says_so():
    db = pair()
    register = db.transformed["y"]
    db.merge("x", "y")
    assert not register.has_map
    with pytest.raises(kpt.Gone, match="the transformed register y has no map"):
        register.map


def test_a_register_that_a_union_deleted_keeps_its_name():
    first, second = pair(), kpt.Database("second")
    second.associate("x", "x2")
    second.associate("y", "y2")
    register = first.transformed["x"]
    first.unite(second)
    assert not register.is_present and register.name == "x"
    assert names(first.transformed) == ["x2", "y2"]
    with pytest.raises(kpt.Gone, match="register x has left the database"):
        register.attributes["pass"] = "none"


def test_maps_may_come_and_go_during_a_walk():
    db = kpt.Database("walk")
    db.associate_many(["a", "b", "c"], ["x", "y", "z"])
    met = []
    for map in db.maps:
        met.append(map.register.name)
        if len(met) == 1:
            db.merge("x", "y")
        db.associate(f"new{len(met)}", f"new{len(met)}")
    assert met == ["a", "c"]


def test_registers_may_come_during_a_walk():
    db = pair()
    met = [(register.name, db.associate(f"{register.name}2", f"{register.name}2")) for register in db]
    assert [name for name, _ in met] == ["a", "b"]


@pytest.mark.parametrize("cls", CLASSES)
def test_a_handle_is_got_and_not_made(cls):
    for make in (cls, lambda: cls.__new__(cls), lambda: object.__new__(cls)):
        with pytest.raises(TypeError):
            make()


@pytest.mark.parametrize("cls", CLASSES)
def test_a_class_derived_from_a_handle_makes_none(cls):
    with pytest.raises(TypeError):
        type("Derived", (cls,), {"__init__": lambda self: None})()


def test_a_derived_database_that_calls_no_constructor_raises():
    derived = type("Derived", (kpt.Database,), {"__init__": lambda self: None})
    with pytest.raises((RuntimeError, TypeError)):
        derived().associate("a", "b")
    with pytest.raises((RuntimeError, TypeError)):
        derived()["a"]


def test_a_derived_database_works():
    class Flow(kpt.Database):
        def __init__(self, name, stage):
            super().__init__(f"{name}_{stage}")

    db = Flow("counter", 1)
    db.associate("a", "x")
    assert db.name == "counter_1" and db["a"].fate == "mapped"


def test_a_second_constructor_call_changes_nothing():
    db = pair()
    map = db["a"]
    db.__init__("other")
    assert db.name == "pair" and map.fate == "mapped"


def test_none_is_no_database():
    db = pair()
    for call in (lambda: db.unite(None), lambda: kpt.compose([None], "c"), lambda: kpt.Database.unite(None, db),
                 lambda: kpt.Database.name.fget(None), lambda: kpt.Map.fate.fget(None),
                 lambda: kpt.Register.name.fget(None), lambda: kpt.Database.__getitem__(None, "a")):
        with pytest.raises((TypeError, AttributeError)):
            call()


@pytest.mark.keeps
def test_a_published_database_is_pythons_no_more():
    db = pair()
    map, register, walk = db["a"], db.reference["a"], iter(db.reference)
    db.publish()
    assert db.is_published and map.is_gone
    for ask in (lambda: db["a"], lambda: len(db), lambda: map.fate, lambda: register.name, lambda: register.map,
                lambda: next(walk), lambda: db.save("nowhere"), lambda: db.publish(), lambda: db.associate("q", "r")):
        with pytest.raises(kpt.Gone, match="the database was published"):
            ask()
    assert [repr(thing) for thing in (db, map, register)] == [
        "<kpt.Database: published>", "<kpt.Map: gone>", "<kpt.Register of a published database>"
    ]
    again = pair()
    with pytest.raises(kpt.Refused, match="a database named pair is published already"):
        again.publish()
    assert again["a"].fate == "mapped"


def test_databases_of_one_name_do_not_matter_to_each_other():
    first, second = pair(), pair()
    first.merge("x", "y")
    assert len(first.maps) == 1 and len(second.maps) == 2
