"""The parts that the tests of the Python module share."""
import gc

import pytest

import kpt


def live():
    """The blocks of memory that the library has, by type."""
    gc.collect()
    return {name: blocks for name, (_, blocks, _) in kpt.trackers().items() if blocks}


@pytest.fixture(autouse=True)
def nothing_leaks(request):
    """The memory of a database is freed with its last handle."""
    before = live()
    yield
    request.node.funcargs = {}  # a fixture's database goes as well
    if not request.node.get_closest_marker("keeps"):
        assert live() == before


@pytest.fixture
def db():
    return kpt.Database("counter")


def names(registers):
    return [register.name for register in registers]
