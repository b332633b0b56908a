"""Shows that a report is safe, readable for everyone, quick, and refused where it has to be."""

import os
import re
import sys
import unittest

from page import BROWSER, HOSTILE, SOURCES, Page, associate, kptdb, path, read, record, write


class Safety(Page):
    def test_a_name_never_becomes_markup(self):
        for anchor in ("#q=onerror", "#r=" + HOSTILE.replace("#", "%23")):
            self.open(anchor)
            self.assertIn(HOSTILE, BROWSER.ask("document.body.innerText"))
            self.assertEqual(BROWSER.ask("document.querySelectorAll('img').length"), 0)

    def test_data_are_base64_and_all_else_is_the_same_in_every_page(self):
        block = re.compile(r'<script type="application/octet-stream" id="kpt-[a-z0-9-]+">[A-Za-z0-9+/]*=*</script>\n')
        record("other", [associate("a", "b")])
        kptdb("report", "other.xml", "-o", "other.html")
        self.assertEqual(block.sub("", read("uart.html")), block.sub("", read("other.html")))

    def test_the_policy_forbids_a_connection(self):
        BROWSER.ask("void addEventListener('securitypolicyviolation', (e) => { window.forbidden = e.effectiveDirective; })")
        self.assertEqual(BROWSER.ask("fetch('https://kpt.invalid/').then(() => 'done', () => 'refused')"), "refused")
        BROWSER.wait("window.forbidden === 'connect-src'")
        BROWSER.problems.clear()
        BROWSER.requests.clear()

    def test_the_policy_forbids_a_script_that_is_not_the_pages_own(self):
        BROWSER.ask("(() => { const s = document.createElement('script'); s.textContent = 'window.foreign = 1'; document.body.append(s); })()")
        self.assertIsNone(BROWSER.ask("window.foreign"))
        BROWSER.ask("1")
        BROWSER.problems.clear()

    def test_the_sources_never_make_markup_of_text(self):
        folder = os.path.join(SOURCES, "tools/kptdb/report")
        for name in os.listdir(folder):
            if name.endswith(".js"):
                with open(os.path.join(folder, name), encoding="utf-8") as file:
                    self.assertIsNone(re.search(r"innerHTML|outerHTML|insertAdjacent|document\.write|\beval\b|new Function|DOMParser", file.read()), name)

    def test_signs_that_turn_or_hide_text_are_shown(self):
        self.assertEqual(BROWSER.ask("(async () => { const c = kptReport.design.source.names; return c.size; })()"), 27)
        record("turned", [associate("a_PLACE_b", "b")])
        write("turned.xml", read("turned.xml").replace("PLACE", "\u202e\u200b"))
        kptdb("report", "turned.xml", "-o", "turned.html")
        self.open(file="turned.html")
        self.assertEqual(self.rows(), ["a_\\u{202e}\\u{200b}_b"])


CONTRAST = """(() => {
  const style = getComputedStyle(document.documentElement);
  const rgb = (name) => { const n = parseInt(style.getPropertyValue(name).trim().slice(1), 16); return [n >> 16, n >> 8 & 255, n & 255]; };
  const light = (c) => { const [r, g, b] = c.map((v) => (v /= 255) <= .04045 ? v / 12.92 : ((v + .055) / 1.055) ** 2.4); return .2126 * r + .7152 * g + .0722 * b; };
  const ratio = (a, b) => { const [x, y] = [light(rgb(a)), light(rgb(b))].sort((p, q) => q - p); return (x + .05) / (y + .05); };
  const pairs = ['--ink', '--muted', '--link', '--wrong', '--look', '--fine'].flatMap((t) => ['--card', '--ground', '--hover'].map((g) => [t, g]));
  pairs.push(...['--mapped', '--constant', '--unused', '--machine'].map((g) => ['--ink', g]));
  return pairs.map(([t, g]) => [`${t} on ${g}`, ratio(t, g)]).filter(([, r]) => r < 4.5);
})()"""


class Looks(Page):
    def ground(self):
        return BROWSER.ask("getComputedStyle(document.body).backgroundColor")

    def test_colours_follow_the_system(self):
        light = self.ground()
        BROWSER.colours("dark")
        self.assertEqual((light, self.ground()), ("rgb(246, 246, 243)", "rgb(20, 24, 27)"))

    def test_colours_can_be_chosen(self):
        BROWSER.click("#theme")
        BROWSER.click("#theme")
        self.assertEqual((self.text("#theme"), self.ground()), ("dark colours", "rgb(20, 24, 27)"))

    def test_text_stands_out_from_its_ground(self):
        for scheme in ("light", "dark"):
            BROWSER.colours(scheme)
            self.assertEqual(BROWSER.ask(CONTRAST), [], scheme)

    def test_print_shows_all_rows_and_no_controls(self):
        BROWSER.ask("void dispatchEvent(new Event('beforeprint'))")
        BROWSER.call("Emulation.setEmulatedMedia", media="print")
        try:
            self.assertEqual(len(self.rows()), 27)
            self.assertEqual(BROWSER.ask("getComputedStyle(document.querySelector('#search').parentElement).display"), "none")
        finally:
            BROWSER.call("Emulation.setEmulatedMedia", media="")

    def test_a_narrow_window_needs_no_scrolling_to_the_side(self):
        BROWSER.size(420, 800)
        try:
            self.assertLessEqual(BROWSER.ask("document.documentElement.scrollWidth"), 420)
        finally:
            BROWSER.size(1400, 1000)


class Access(Page):
    def test_the_keyboard_reaches_a_register_and_comes_back(self):
        BROWSER.key("/")
        BROWSER.type("shift")
        BROWSER.wait("document.querySelector('#count').textContent.startsWith('8 of')")
        BROWSER.key("ArrowDown")
        BROWSER.key("ArrowDown")
        BROWSER.key("Enter")
        BROWSER.wait("!document.querySelector('#register').hidden")
        self.assertEqual((self.text("#page h1"), BROWSER.ask("document.activeElement.tagName")), ("shift[1]", "H1"))
        BROWSER.key("Escape")
        BROWSER.wait("!document.querySelector('#overview').hidden")
        self.assertEqual(self.address(), "#q=shift")

    def test_the_keyboard_walks_the_tree(self):
        BROWSER.ask("document.querySelector('#tree [tabindex=\"0\"]').focus()")
        BROWSER.key("ArrowDown")
        BROWSER.key("ArrowRight")
        BROWSER.key("ArrowDown")
        BROWSER.key("Enter")
        self.assertEqual(self.address(), "#s=top.u_a.")

    def test_everything_that_acts_has_a_name_for_readers(self):
        nodes = BROWSER.call("Accessibility.getFullAXTree")["nodes"]
        acting = {"button", "link", "combobox", "searchbox", "textbox", "treeitem", "tree", "table", "columnheader", "status", "main"}
        roles = {n["role"]["value"] for n in nodes if not n.get("ignored")}
        self.assertLessEqual({"tree", "treeitem", "table", "row", "columnheader", "searchbox", "main", "heading"}, roles)
        nameless = [n["role"]["value"] for n in nodes if not n.get("ignored") and n["role"]["value"] in acting - {"status", "main"}
                    and not n.get("name", {}).get("value")]
        self.assertEqual(nameless, [])


class Large(Page):
    COUNT = 100_000

    @classmethod
    def setUpClass(cls):
        def events():
            for k in range(cls.COUNT):
                yield associate(f"u_tile{k // 4000}.u_core{k % 7}.data_{k // 32}[{k % 32}]", f"_{k * 3}_")
                if k % 20 == 0:
                    yield {"event": "eliminate", "register": f"_{k * 3}_", "reason": ("stuck_at_one", "no_fanout")[k // 20 % 2]}
        record("large", events())
        kptdb("report", "large.xml", "-o", "large.html")

    def setUp(self):
        BROWSER.colours("light")
        self.seconds = self.open(file="large.html")

    def test_a_hundred_thousand_registers_take_little(self):
        size = os.path.getsize(path("large.html")) / self.COUNT
        print(f"{size:.1f} bytes a register, ready after {self.seconds:.2f} s", file=sys.stderr)
        self.assertLess(size, 120)
        self.assertLess(self.seconds, 10)  # 2 s on a machine with nothing else to do
        self.assertEqual(sum(self.words().values()), self.COUNT)

    def test_rows_are_made_as_they_come_into_view(self):
        self.assertLess(BROWSER.ask("document.querySelectorAll('#table .body .tr').length"), 100)
        BROWSER.ask("document.querySelector('#table .body a').focus()")
        BROWSER.key("End")
        BROWSER.wait(f"document.querySelector('#table .body').innerText.includes('data_3124[31]')")
        self.assertLess(BROWSER.ask("document.querySelectorAll('#table .body .tr').length"), 100)

    def test_a_search_answers_while_one_types(self):
        took = BROWSER.ask("(() => { const t = performance.now(); kptReport.go({text: 'data_12'}); return performance.now() - t; })()")
        self.assertLess(took, 2000)
        expected = sum("data_12" in f"data_{k // 32}[" for k in range(self.COUNT))
        self.assertEqual(self.text("#count"), f"{expected:,} of 100,000 registers")


class Command(unittest.TestCase):
    def test_the_same_database_gives_the_same_page(self):
        kptdb("report", "uart.xml", "-o", "again.html", "--title", "uart_tx")
        self.assertEqual(read("again.html"), read("uart.html"))

    def test_a_file_that_is_no_database_is_refused_and_nothing_is_written(self):
        write("bad.xml", "<no_db")
        kptdb("report", "bad.xml", "-o", "bad.html", code=3)
        self.assertFalse(os.path.exists(path("bad.html")))
