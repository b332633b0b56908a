"""Several databases: union and composition."""
import warnings

import pytest

import kpt
from conftest import names


def stage(name, *pairs):
    db = kpt.Database(name)
    for reference, transformed in pairs:
        db.associate(reference, transformed)
    return db


def test_a_union_spans_both_stages():
    first, second = stage("first", ("a", "m"), ("b", "n")), stage("second", ("m", "x"), ("n", "y"))
    first.unite(second)
    assert names(first["a"].equivalents) == ["x"] and names(first["b"].equivalents) == ["y"]
    assert names(second["m"].equivalents) == ["x"]


def test_a_database_unites_with_itself_and_lives():
    db = stage("self", ("a", "a"))
    db.unite(db)
    assert db["a"].fate == "mapped"


def test_a_composition_is_new_and_leaves_the_stages():
    first, second, third = stage("first", ("a", "m")), stage("second", ("m", "n")), stage("third", ("n", "x"))
    second.retime_inverter("n")
    all = kpt.compose([first, second, third], name="all")
    assert all.name == "all" and names(all["a"].inverted_equivalents) == ["x"]
    assert names(first["a"].equivalents) == ["m"] and names(third["n"].equivalents) == ["x"]


def test_a_composition_is_named_after_its_first_stage():
    assert kpt.compose(iter([stage("first", ("a", "m")), stage("second", ("m", "n"))])).name == "first"


def test_stages_that_contradict_each_other_are_refused():
    first = kpt.Database("first")
    first.associate_map([(["a"], [])], [(["m"], [])], constant=0)
    second = kpt.Database("second")
    second.associate_map([(["m"], [])], [(["x"], [])], constant=1)
    with pytest.raises(kpt.Refused, match="."):
        kpt.compose([first, second])


def test_stages_that_do_not_fit_are_refused():
    with pytest.raises(kpt.Refused, match="stage 2"):
        kpt.compose([stage("first", ("a", "m")), stage("second", ("q", "x"))])


def test_the_least_share_may_be_lowered():
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", kpt.KptWarning)
        composed = kpt.compose([stage("first", ("a", "m")), stage("second", ("q", "x"))], least_share=0.0)
    assert "a" in composed


def test_no_stages_are_refused():
    with pytest.raises(kpt.Refused):
        kpt.compose([])


def test_what_is_no_database_is_a_wrong_type():
    with pytest.raises(TypeError):
        kpt.compose([stage("first", ("a", "m")), "second.xml"], "c")
