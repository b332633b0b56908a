"""Several threads that use the module."""
import threading
import time

import kpt


def in_threads(*works):
    failures = []

    def run(work):
        try:
            work()
        except BaseException as failure:  # noqa: B902
            failures.append(failure)

    threads = [threading.Thread(target=run, args=(work,)) for work in works]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert failures == []


def test_databases_of_several_threads_do_not_disturb_each_other(tmp_path):
    def work(number):
        for turn in range(3):
            db = kpt.Database(f"db{number}")
            db.associate_many([f"r{k}" for k in range(2000)], [f"t{k}" for k in range(2000)])
            path = tmp_path / f"{number}.xml"
            db.save(path)
            loaded = kpt.load(path)
            loaded.unite(db) if turn == 2 else loaded.merge("t0", "t1")
            assert len(loaded) == 2000

    in_threads(*(lambda number=number: work(number) for number in range(6)))


def test_one_database_is_shared_by_several_threads(tmp_path):
    db = kpt.Database("shared")
    db.associate_many([f"r{k}" for k in range(3000)], [f"t{k}" for k in range(3000)])

    def save():
        for _ in range(5):
            db.save(tmp_path / "shared.xml")

    def change(begin):
        for k in range(begin, begin + 300, 2):
            db.merge(f"t{k}", f"t{k + 1}")

    def ask():
        for map in db.maps:
            try:
                map.reference, map.equivalents, map.fate
            except kpt.Gone:
                pass

    in_threads(save, ask, lambda: change(0), lambda: change(1000), ask, save)
    assert len(db.maps) == 3000 - 300
    assert len(kpt.load(tmp_path / "shared.xml")) == 3000


class Gate:
    """A file whose read waits until another thread has done something."""

    def __init__(self, data):
        self.data, self.asked, self.opened = data, threading.Event(), threading.Event()

    def read(self, size=-1):
        self.asked.set()
        assert self.opened.wait(60)
        taken, self.data = self.data[:size], self.data[size:]
        return taken


def test_other_threads_run_during_a_load(tmp_path):
    kpt.Database("empty").save(tmp_path / "empty.xml")
    gate = Gate((tmp_path / "empty.xml").read_bytes())
    counted = 0

    def count():
        nonlocal counted
        gate.asked.wait(60)
        counted += 1
        gate.opened.set()

    in_threads(lambda: kpt.load(gate), count)
    assert counted == 1


def test_python_runs_on_while_many_are_associated():
    db = kpt.Database("many")
    names = [f"register_{k}" for k in range(300000)]
    ticks = []
    done = threading.Event()

    def tick():
        while not done.is_set():
            ticks.append(time.perf_counter())
            time.sleep(0.001)

    def associate():
        begin = time.perf_counter()
        db.associate_many(names, names)
        done.set()
        inside[:] = [begin, time.perf_counter()]

    inside = []
    in_threads(tick, associate)
    assert len(db) == 300000
    assert sum(inside[0] < moment < inside[1] for moment in ticks) > 1
