"""The guide and the examples do what they describe."""
import os
import pathlib
import re
import shutil
import subprocess
import sys

import pytest

import kpt

SOURCES = pathlib.Path(os.environ["KPT_SOURCES"])
GUIDE = (SOURCES / "docs" / "python.md").read_text()
EXAMPLES = SOURCES / "examples" / "python"
BLOCKS = re.findall(r"```python\n(.*?)```(?:\n\n```text\n(.*?)```)?", GUIDE, re.DOTALL)


@pytest.fixture(scope="module")
def folder(tmp_path_factory):
    """One folder for all blocks: the later ones read what the earlier ones wrote."""
    folder = tmp_path_factory.mktemp("guide")
    # Matplotlib lists the fonts of a machine once. Where that takes long it says so on the error
    # stream, which the first plot of a test would then find.
    run(folder, "-c", "import matplotlib.font_manager")
    for events in (SOURCES / "examples" / "events").glob("*.jsonl"):
        shutil.copy(events, folder)
    return folder


def run(folder, *command):
    return subprocess.run([sys.executable, *map(str, command)], cwd=folder, capture_output=True, text=True)


@pytest.mark.parametrize("number", range(len(BLOCKS)))
def test_a_block_prints_what_stands_under_it(folder, number):
    code, printed = BLOCKS[number]
    result = run(folder, "-c", code)
    assert (result.stderr, result.stdout) == ("", printed)


def test_the_guide_has_its_blocks(folder):
    assert len(BLOCKS) == 7
    assert (folder / "coverage.png").read_bytes().startswith(b"\x89PNG")


def test_the_plot_takes_ten_lines():
    assert len([line for line in BLOCKS[0][0].splitlines() if line]) <= 10


def test_the_guide_names_what_the_module_has():
    for name in re.findall(r"`kpt\.(\w+)", GUIDE):
        assert name in kpt.__all__, name


def test_an_example_plots_the_coverage(folder):
    kpt.record(folder / "uart_tx_synthesis.jsonl").save(folder / "uart.xml")
    result = run(folder, EXAMPLES / "plot_coverage.py", "uart.xml", "parts.png", "--depth", "2")
    assert (result.returncode, result.stderr) == (0, "")
    assert (folder / "parts.png").read_bytes().startswith(b"\x89PNG")


def test_an_example_records_a_flow_and_another_checks_its_netlist(folder):
    (folder / "registers.txt").write_text("count count_reg count_dup\nspare 0\nunused -\nbus[1] data[1]\n")
    result = run(folder, EXAMPLES / "record_flow.py", "registers.txt", "flow.xml")
    assert result.stdout == "<kpt.Database flow: 4 reference and 3 transformed registers, 4 maps>\n"
    assert kpt.load(folder / "flow.xml")["spare"].constant == 0
    assert kpt.load(folder / "flow.xml")["unused"].no_fanout
    (folder / "flow.v").write_text("module m; reg count_reg; /* reg count_dup */ reg [3:0] data; endmodule")
    result = run(folder, EXAMPLES / "check_names.py", "flow.xml", "flow.v")
    assert result.stdout == "flow.v: no count_dup; did you mean count_reg?\n" and result.returncode == 1


def test_an_example_tells_where_its_list_is_refused(folder):
    (folder / "twice.txt").write_text("a x\nb x\n")
    result = run(folder, EXAMPLES / "record_flow.py", "twice.txt", "twice.xml")
    assert result.returncode == 1
    assert result.stderr == "twice.txt:2: the transformed register x exists already\n"
    assert not (folder / "twice.xml").exists()
