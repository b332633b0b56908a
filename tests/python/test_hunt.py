"""Random events. Every handle is kept and asked at every step.

Nothing may crash. A handle answers or raises Gone. Its answers agree with those of a new handle to the same register.
A map that is gone stays gone. KPT_HUNT_SEED and KPT_HUNT_FLOWS choose other flows.
"""
import os
import random

import pytest

import kpt

SEED = int(os.environ.get("KPT_HUNT_SEED", "1"))
FLOWS = int(os.environ.get("KPT_HUNT_FLOWS", "4"))
QUESTIONS = ("number", "register", "reference", "transformed", "is_fsm", "fsm", "elimination", "equivalents",
             "inverted_equivalents", "twins", "inverted_twins", "inverted", "constant", "no_fanout", "fate")


class Flow:
    def __init__(self, seed):
        self.random = random.Random(seed)
        self.db = kpt.Database("hunt")
        self.count = 0
        self.maps, self.registers, self.gone = [], [], set()
        self.united = False  # a union leaves maps that list what has left the database, which no file can say

    def new(self, stem):
        self.count += 1
        return f"{stem}{self.count}"

    def any_transformed(self):
        names = [register.name for register in self.db.transformed if register.is_signal]
        return self.random.choice(names) if names and self.random.random() < 0.95 else "nothing"

    def event(self):
        db, pick = self.db, self.any_transformed
        events = [
            lambda: db.associate(self.new("r"), self.new("t")),
            lambda: db.associate(self.new("r"), (self.new("u"), "entity", "dff")),
            lambda: db.associate_map([([self.new("r")], [self.new("r")])], [([self.new("t")], [self.new("t")])],
                                     constant=self.random.choice([None, None, 0, 1])),
            lambda: db.associate_fsm([self.new("r"), self.new("r")], [self.new("t"), self.new("t"), self.new("t")],
                                     [("00", "100"), ("01", "010"), ("11", "001")]),
            lambda: db.replicate(pick(), self.new("t")),
            lambda: db.merge(pick(), pick()),
            lambda: db.merge(pick(), pick()),
            lambda: db.retime_inverter(pick()),
            lambda: db.eliminate(pick(), self.random.choice(["stuck_at_zero", "stuck_at_one", "no_fanout", "eliminated"])),
            lambda: db.unite(self.next_stage()),
        ]
        weights = [6, 2, 2, 1, 3, 3, 3, 2, 2, 0.7]
        try:
            self.random.choices(events, weights)[0]()
        except kpt.Refused:
            pass

    def next_stage(self):
        self.united = True
        stage = kpt.Database("next")
        for register in list(self.db.transformed):
            if self.random.random() < 0.8:
                stage.associate(register, self.new("n"))
        for register in list(stage.transformed)[::3]:
            stage.retime_inverter(register)
        return stage

    def keep(self):
        for side in (self.db.reference, self.db.transformed):
            registers = list(side)
            for register in self.random.sample(registers, min(2, len(registers))):
                self.registers.append(register)
                if register.has_map:
                    self.maps.append(register.map)
        maps = list(self.db.maps)
        self.maps += self.random.sample(maps, min(1, len(maps)))

    def ask_all(self):
        for map in self.maps:
            said = answers(map)
            if map.is_gone:
                self.gone.add(id(map))
                assert set(said) == {"gone"}
            else:
                assert id(map) not in self.gone
            for group in (() if map.is_gone else map.reference + map.transformed):
                for register in group.same + group.inverse:
                    assert register.name
        for register in self.registers:
            assert register.name and register.side and repr(register)
            if register.is_present:
                assert getattr(self.db, register.side)[register.key] == register
            try:
                self.compare(register.map, register)
            except kpt.Gone:
                assert not register.has_map

    def compare(self, map, register):
        """A kept map says the same of a register as the register's present map."""
        kept = next((kept for kept in self.maps if kept == map and kept.register == register), map)
        assert answers(kept) == answers(map)


def answers(map):
    """The map's answer to each question, with groups as the registers that they list."""
    said = []
    for question in QUESTIONS:
        try:
            said.append(getattr(map, question))
        except kpt.Gone:
            said.append("gone")
            continue
        if question in ("reference", "transformed"):
            said[-1] = tuple((group.same, group.inverse) for group in said[-1])
        elif question == "fsm":
            said[-1] = said[-1] and tuple(said[-1].codes)
    return said


@pytest.mark.parametrize("seed", range(SEED, SEED + FLOWS))
def test_kept_handles_answer_or_raise(seed, tmp_path):
    flow = Flow(seed)
    for _ in range(40):
        flow.event()
        flow.keep()
        flow.ask_all()
    flow.db.save(tmp_path / "hunt.xml")
    loaded = kpt.load(tmp_path / "hunt.xml")
    if not flow.united:
        assert loaded.to_records(numpy=False)["fate"] == flow.db.to_records(numpy=False)["fate"]
    del flow.db
    flow.db = loaded
    for map in flow.maps:
        map.is_gone or map.fate
