"""The parts that the tests of the report share: the programs, a folder, a browser, and its open page.

The program that imports this has read the options KPTDB and SOURCES from the command line.
"""

import atexit
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from browser import Browser

KPTDB, SOURCES = os.path.abspath(sys.argv.pop(1)), os.path.abspath(sys.argv.pop(1))
FOLDER = tempfile.mkdtemp(prefix="kpt-report-")
atexit.register(shutil.rmtree, FOLDER)
BROWSER = Browser()
atexit.register(BROWSER.__exit__)
HOSTILE = "</script><img src=x onerror=alert(1)>"


def kptdb(*arguments, code=0):
    done = subprocess.run([KPTDB, *arguments], cwd=FOLDER, capture_output=True, text=True, check=False,
                          env={**os.environ, "SOURCE_DATE_EPOCH": "1700000000"})
    assert done.returncode == code, (arguments, done.returncode, done.stderr)
    return done.stdout


def path(name):
    return os.path.join(FOLDER, name)


def read(name):
    with open(path(name), encoding="utf-8") as file:
        return file.read()


def write(name, text):
    with open(path(name), "w", encoding="utf-8") as file:
        file.write(text)


def record(name, events):
    write(f"{name}.jsonl", "".join(json.dumps(event) + "\n" for event in events))
    kptdb("record", f"{name}.jsonl", "-o", f"{name}.xml")


def associate(reference, transformed):
    return {"event": "associate", "reference": reference, "transformed": transformed}


def without_map_of(text, name):
    """The database without the map that lists the reference register."""
    number = re.search(rf'<key_point id="(\d+)" type="register">\s*<name>{re.escape(name)}</name>', text).group(1)
    for part in re.findall(r"\s*<transformation elim_type.*?</transformation>", text, re.S):
        if re.search(rf'<kp_set type="reference">.*?<kp id="{number}">.*?<kp_set type="transformed">', part, re.S):
            return text.replace(part, "")
    raise AssertionError(f"{name} has no map")


def make_uart():
    """The example of the README with one unknown register, and names that try to become markup."""
    shutil.copy(os.path.join(SOURCES, "examples/events/uart_tx_synthesis.jsonl"), path("uart.jsonl"))
    with open(path("uart.jsonl"), "a", encoding="utf-8") as file:
        for event in (associate("lost", "lost_reg"), associate("top.u_a.q[9]", "q_9"), associate("top.u_a.q[10]", "q_10"),
                      associate("top.u_b/u_c.hostile", "hostile_reg")):
            file.write(json.dumps(event) + "\n")
    kptdb("record", "uart.jsonl", "-o", "uart.xml")
    text = without_map_of(read("uart.xml"), "lost")
    text = text.replace("top.u_b/u_c.hostile", HOSTILE.replace("<", "&lt;"))
    write("uart.xml", text)
    kptdb("report", "uart.xml", "-o", "uart.html", "--title", "uart_tx")


class Page(unittest.TestCase):
    """Every test opens a page of its own, and fails when the page has an error or makes a request."""

    file = "uart.html"

    def open(self, anchor="", file=None):
        BROWSER.problems.clear()
        return BROWSER.open(path(file or self.file), anchor)

    def setUp(self):
        BROWSER.colours("light")
        self.open(file=self.file)

    def tearDown(self):
        asked = [r for r in BROWSER.requests if not r.startswith("file:///") or not r.split("#")[0].endswith(".html")]
        self.assertEqual(BROWSER.problems, [])
        self.assertEqual(asked, [])

    def text(self, selector):
        return BROWSER.ask(f"document.querySelector({json.dumps(selector)}).innerText.replace(/\\s+/g, ' ').trim()")

    def texts(self, selector):
        return BROWSER.ask(f"[...document.querySelectorAll({json.dumps(selector)})].map((n) => n.innerText.replace(/\\s+/g, ' ').trim())")

    def rows(self):
        return self.texts("#table .body .c-name")

    def words(self):
        return {word: int(number.replace(",", "")) for word, number in BROWSER.ask(
            "[...document.querySelectorAll('#words .chip')].map((n) => [n.dataset.word, n.querySelector('b').textContent])")}

    def address(self):
        return BROWSER.ask("decodeURIComponent(location.hash)")

    def go(self, hash_):
        BROWSER.ask(f"void (location.hash = {json.dumps(hash_)})")
        BROWSER.wait(f"decodeURIComponent(location.hash) === {json.dumps('#' + hash_)}")
        BROWSER.ask("new Promise((r) => setTimeout(r, 30))")


make_uart()
