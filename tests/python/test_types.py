"""The stubs match the module, and the examples pass the type checker with them."""
import ast
import os
import pathlib
import subprocess
import sys

import pytest

import kpt

SOURCES = pathlib.Path(os.environ["KPT_SOURCES"])
PACKAGE = pathlib.Path(kpt.__file__).parent
STUB = ast.parse((PACKAGE / "__init__.pyi").read_text())
CLASSES = {node.name: node for node in STUB.body if isinstance(node, ast.ClassDef)}


def mypy(path, cache):
    """Without the sanitizers of the tested build, which mypy does not have."""
    environment = {name: value for name, value in os.environ.items() if name not in ("LD_PRELOAD", "PYTHONPATH")}
    environment["MYPYPATH"] = str(PACKAGE.parent)
    # Whether an import without types is ignored for nothing depends on the release of the imported package.
    options = ["--strict", "--no-warn-unused-ignores", "--cache-dir", str(cache)]
    command = [sys.executable, "-m", "mypy", *options, str(path)]
    return subprocess.run(command, env=environment, capture_output=True, text=True)


@pytest.fixture(scope="module")
def cache(tmp_path_factory):
    return tmp_path_factory.mktemp("mypy")


@pytest.mark.parametrize("example", sorted(path.name for path in (SOURCES / "examples" / "python").glob("*.py")))
def test_an_example_passes_the_strict_check(cache, example):
    result = mypy(SOURCES / "examples" / "python" / example, cache)
    assert result.stdout.startswith("Success"), result.stdout + result.stderr


def test_the_strict_check_finds_a_wrong_type(cache, tmp_path):
    program = tmp_path / "wrong.py"
    program.write_text('import kpt\nkpt.Database("a").eliminate("x", "lost")\n')
    assert 'No overload variant of "eliminate"' in mypy(program, cache).stdout


def test_the_package_says_that_it_has_types():
    assert (PACKAGE / "py.typed").exists()


def test_the_stub_has_all_names_of_the_package():
    stubbed = {node.name for node in STUB.body if isinstance(node, (ast.ClassDef, ast.FunctionDef))}
    assert {name for name in stubbed if not name.startswith("_")} == set(kpt.__all__) - {"__version__"}


@pytest.mark.parametrize("name", sorted(name for name in CLASSES if not name.startswith("_")))
def test_the_stub_of_a_class_has_its_public_members(name):
    cls = getattr(kpt, name)
    stubbed = {getattr(node, "name", None) or node.target.id for node in CLASSES[name].body
               if isinstance(node, (ast.FunctionDef, ast.AnnAssign))}
    assert stubbed >= {member for member in vars(cls) if not member.startswith("_")}
    if not issubclass(cls, Exception):
        assert all(hasattr(cls, member) for member in stubbed)


@pytest.mark.parametrize("name", sorted(set(kpt.__all__) - {"__version__"}))
def test_everything_public_is_explained(name):
    thing = getattr(kpt, name)
    assert thing.__doc__
    if isinstance(thing, type):
        for member, value in vars(thing).items():
            if not member.startswith("_"):
                assert value.__doc__, f"{name}.{member}"


def test_signatures_are_shown():
    import inspect

    assert str(inspect.signature(kpt.load)) == "(source)"
    assert kpt.Database.associate.__doc__.startswith("A reference register became")
    assert str(inspect.signature(kpt.Database.associate_map)).endswith("states=None, constant=None, no_fanout=False, pass_='', note='')")


def test_everything_says_that_it_is_of_the_package():
    assert {getattr(kpt, name).__module__ for name in kpt.__all__ if isinstance(getattr(kpt, name), type)} == {"kpt"}
