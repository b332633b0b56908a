"""The report as its readers see it: made by kptdb, opened from disk in Chromium, looked at and used.

    report_test.py KPTDB SOURCES [unittest options]
"""

import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

from browser import Browser

KPTDB = SOURCES = FOLDER = BROWSER = None
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
    """The example of the README, one register unknown, and names that try to become markup."""
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


def setUpModule():
    global BROWSER
    make_uart()
    BROWSER = Browser()


def tearDownModule():
    BROWSER.__exit__()


class Page(unittest.TestCase):
    """Every test opens a page of its own, and fails for a complaint of the browser or a request."""

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


class Overview(Page):
    def test_counts_are_those_of_info(self):
        info = json.loads(kptdb("info", "uart.xml", "--json"))
        words = self.words()
        self.assertEqual(sum(words.values()), sum(info["registers"]["reference"].values()))
        self.assertEqual(BROWSER.ask("kptReport.design.head.words"), words)
        self.assertEqual(words["unknown"], 1)
        self.assertEqual(words["constant"], info["maps"]["eliminated"]["stuck_at_zero"] + info["maps"]["eliminated"]["stuck_at_one"])
        self.assertEqual(words["without fanout"], info["maps"]["eliminated"]["no_fanout"])
        self.assertEqual(words["machine"], 2)
        for side in ("reference", "transformed"):
            self.assertEqual(BROWSER.ask(f"kptReport.design.side({int(side == 'transformed')}).size"),
                             sum(info["registers"][side].values()))

    def test_design_stage_and_time_stand_on_top(self):
        self.assertEqual(self.text("#design"), "uart_tx")
        self.assertIn("uart uart.xml, 20", self.text("#stages"))
        self.assertEqual(BROWSER.ask("document.querySelector('#written time').dateTime"), "2023-11-14T22:13:20Z")

    def test_share_counts_everything_but_the_unknown(self):
        self.assertEqual(self.text("#covered").split(" accounted")[0], "96.3 % 26 of 27 registers")

    def test_attention_leads_to_the_unknown(self):
        self.assertIn("1 register unknown: no stage says what became of it", self.texts("#attention li"))
        BROWSER.click("#attention li.wrong a")
        BROWSER.wait("document.querySelectorAll('#table .body .tr').length === 1")
        self.assertEqual(self.rows(), ["lost"])

    def test_attention_leads_to_constants_at_one(self):
        BROWSER.click("#attention li.look a")
        BROWSER.wait("document.querySelectorAll('#table .body .tr').length === 1")
        self.assertEqual(self.rows(), ["parity_odd"])
        self.assertEqual(self.texts("#table .body .c-became"), ["constant 1"])

    def test_a_machine_with_unused_codes_is_told(self):
        record("machine", [{"event": "associate_fsm", "reference": ["s[1]", "s[0]"], "transformed": ["a", "b", "c"],
                            "states": [["00", "100"], ["01", "010"], ["10", "001"]]}])
        kptdb("report", "machine.xml", "-o", "machine.html")
        self.open(file="machine.html")
        self.assertEqual(self.texts("#attention li"), ["machine of s[1]: 1 codes taken for unreachable, 3 states used"])
        self.assertEqual(BROWSER.ask("decodeURIComponent(document.querySelector('#attention a').hash)"), "#r=s[1]")

    def test_a_machine_that_uses_all_codes_is_not_told(self):
        self.assertNotIn("machine of", " ".join(self.texts("#attention li")))

    def test_a_register_that_equals_its_inverse_is_told(self):
        record("odd", [associate("a", "b")])
        text = read("odd.xml").replace('</noninverts>\n  </kp_state>\n  </kp_set>\n        <kp_set type="transformed">',
                                       '</noninverts>\n        <inverts>\n            <kp id="0">     </kp>\n        </inverts>\n  </kp_state>\n  </kp_set>\n        <kp_set type="transformed">')
        write("odd.xml", text)
        kptdb("report", "odd.xml", "-o", "odd.html")
        self.open(file="odd.html")
        self.assertEqual(self.texts("#attention li"), ["contradiction: odd says that a equals its own inverse"])

    def test_nothing_to_look_at_is_said(self):
        record("plain", [associate("a", "b")])
        kptdb("report", "plain.xml", "-o", "plain.html")
        self.open(file="plain.html")
        self.assertEqual(self.texts("#attention li"), ["Nothing: every register is accounted for."])

    def test_a_database_without_registers_has_a_page(self):
        record("empty", [])
        kptdb("report", "empty.xml", "-o", "empty.html")
        self.open(file="empty.html")
        self.assertEqual(self.words(), {"mapped": 0, "constant": 0, "without fanout": 0, "machine": 0, "unknown": 0})


class Filters(Page):
    def test_search_finds_text_in_names(self):
        BROWSER.key("/")
        BROWSER.type("shift[")
        BROWSER.wait("document.querySelector('#count').textContent.startsWith('8 of')")
        self.assertEqual(self.rows(), [f"shift[{k}]" for k in range(8)])
        self.assertEqual(self.address(), "#q=shift[")

    def test_small_letters_find_both_cases_and_capitals_one(self):
        record("case", [associate("Alpha", "a"), associate("alpha", "b")])
        kptdb("report", "case.xml", "-o", "case.html")
        self.open("#q=alp", "case.html")
        self.assertEqual(self.rows(), ["Alpha", "alpha"])
        self.go("q=Alp")
        self.assertEqual(self.rows(), ["Alpha"])

    def test_a_glob_matches_whole_names_and_brackets_stand_for_themselves(self):
        self.go("q=baud[?]&m=glob")
        self.assertEqual(self.rows(), [f"baud[{k}]" for k in range(4)])
        self.go("q=baud&m=glob")
        self.assertEqual(self.texts("#table .nothing"), ["No register is left. Clear a filter or the search."])

    def test_a_regular_expression_is_one(self):
        self.go("q=^(tx|busy)$&m=regex")
        self.assertEqual(self.rows(), ["tx", "busy"])

    def test_a_broken_regular_expression_is_told(self):
        self.go("q=(&m=regex")
        self.assertIn("No regular expression", self.text("#problem"))

    def test_a_word_filters_and_lets_go(self):
        BROWSER.click("[data-word=constant]")
        self.assertEqual(self.rows(), ["baud[3]", "parity_odd"])
        self.assertEqual(self.address(), "#w=constant")
        BROWSER.click("[data-word=constant]")
        self.assertEqual(self.text("#count"), "27 of 27 registers")

    def test_a_scope_filters_counts_and_rows(self):
        BROWSER.ask("document.querySelectorAll('#tree [role=treeitem]')[1].querySelector('.row').click()")
        self.assertEqual(self.address(), "#s=top.")
        self.assertEqual(self.words()["mapped"], 2)
        self.assertEqual(self.rows(), ["top.u_a.q[9]", "top.u_a.q[10]"])

    def test_a_click_into_the_map_filters(self):
        BROWSER.ask("[...document.querySelectorAll('#treemap .cell')].find((c) => c.textContent.startsWith('baud[*]')).dispatchEvent(new MouseEvent('click', {bubbles: true}))")
        self.assertEqual(self.rows(), [f"baud[{k}]" for k in range(4)])

    def test_numbers_in_names_sort_as_numbers(self):
        self.go("s=top.&o=name")
        self.assertEqual(self.rows(), ["top.u_a.q[9]", "top.u_a.q[10]"])
        self.go("s=top.&o=-name")
        self.assertEqual(self.rows(), ["top.u_a.q[10]", "top.u_a.q[9]"])

    def test_a_name_of_the_netlist_is_offered(self):
        self.go("q=busy_reg")
        BROWSER.click("#elsewhere button")
        self.assertEqual(self.rows(), ["busy_reg"])
        self.assertEqual(self.texts("#table .body .c-across"), ["busy, ready"])

    def test_names_and_csv_are_copied(self):
        BROWSER.ask("void (navigator.clipboard.writeText = async (text) => { window.copied = text; })")
        self.go("q=^(ready|parity_odd)$&m=regex")
        BROWSER.click("#copy-names")
        BROWSER.wait("window.copied !== undefined")
        self.assertEqual(BROWSER.ask("window.copied"), "ready\nparity_odd")
        BROWSER.click("#copy-csv")
        BROWSER.wait("window.copied.includes(',')")
        self.assertEqual(BROWSER.ask("window.copied").split("\r\n"), ["register,what,netlist,pass,status", "ready,mapped,~busy_reg,,", "parity_odd,constant 1,,,"])


class Register(Page):
    def test_a_link_opens_the_register(self):
        self.open("#r=busy")
        self.assertEqual(self.text("#page h1"), "busy")
        self.assertEqual(self.text(".answer"), "In the netlist: busy_reg.")
        self.assertEqual(self.text(".way li li"), "busy merged with 1 other → busy_reg")

    def test_the_group_is_drawn_with_its_inverse_edges(self):
        self.open("#r=ready")
        self.assertEqual(BROWSER.ask("document.querySelectorAll('.map .edge').length"), 3)
        self.assertEqual(BROWSER.ask("document.querySelectorAll('.map .edge.inverse').length"), 1)
        self.assertEqual(BROWSER.ask("document.querySelector('.map .chosen title').textContent"), "ready")

    def test_a_machine_shows_both_encodings(self):
        self.open("#r=state[0]")
        self.assertEqual(self.texts(".codes tbody tr"), ["0 0 0 0 0 0 1", "1 0 1 0 0 1 0", "2 1 0 0 1 0 0", "3 1 1 1 0 0 0"])
        self.assertEqual(self.texts(".codes th.bit"), ["state[1]", "state[0]", "state_reg[3]", "state_reg[2]", "state_reg[1]", "state_reg[0]"])

    def test_constants_and_unused_registers_say_so(self):
        for name, word, answer in (("baud[3]", "constant 0", "It is always 0; no register of the netlist carries it."),
                                   ("last_byte_sent", "without fanout", "Nothing reads it, so the netlist has no register for it."),
                                   ("lost", "unknown", "No stage says what became of it.")):
            self.open(f"#r={name}")
            self.assertEqual((self.text("#page .word"), self.text(".answer")), (word, answer))

    def test_a_register_of_the_netlist_leads_back(self):
        self.open("#t=busy_reg")
        self.assertEqual(self.texts(".answer a"), ["busy", "ready"])
        BROWSER.click(".answer a")
        BROWSER.wait("location.hash === '#r=busy'")

    def test_a_block_instance_tells_its_kind(self):
        self.open("#r=fifo/head&k=1")
        self.assertEqual(self.text("#page .over"), "register of the source, instance of fifo, register dffe")

    def test_a_name_that_is_not_there_is_said(self):
        self.open("#r=nobody")
        self.assertEqual(self.text(".answer"), "The source has no register of this name.")

    def test_the_way_back_keeps_the_filter(self):
        self.go("w=constant")
        BROWSER.click("#table .body a")
        BROWSER.wait("!document.querySelector('#register').hidden")
        BROWSER.click("#back")
        BROWSER.wait("!document.querySelector('#overview').hidden")
        self.assertEqual(self.address(), "#w=constant")


class Stages(Page):
    """Two stages, put together by their composition."""

    file = "two.html"

    @classmethod
    def setUpClass(cls):
        for stage in ("synthesis", "optimisation"):
            shutil.copy(os.path.join(SOURCES, f"examples/events/uart_tx_{stage}.jsonl"), path(f"{stage}.jsonl"))
            kptdb("record", f"{stage}.jsonl", "-o", f"{stage}.xml")
        kptdb("report", "synthesis.xml", "optimisation.xml", "-o", "two.html")

    def test_words_are_of_all_stages_together(self):
        # The second stage does not mention the registers of the machine, so what became of them is not known.
        self.assertEqual(self.words(), {"mapped": 17, "constant": 3, "without fanout": 1, "machine": 0, "unknown": 2})

    def test_a_register_has_its_way_through_the_stages(self):
        self.open("#r=ready", self.file)
        self.assertEqual(self.texts(".way li li"), ["ready merged with 1 other, inverted → busy_reg", "busy_reg kept → busy_q"])
        self.assertEqual(self.text(".answer"), "In the netlist: the inverse of busy_q.")
        # On the way, the sense is that of the source's register.
        self.assertEqual(BROWSER.ask("[...document.querySelectorAll('.way li li')].map((n) => n.querySelectorAll('.bubble').length)"), [1, 2])
        self.open("#r=shift[0]", self.file)
        self.assertEqual(self.texts(".way li li")[1], "shift_reg[0] replicated to 2 → shift_q[0], shift_q[0]_dup")

    def test_a_register_that_a_stage_forgot_says_so(self):
        self.open("#r=state[0]", self.file)
        self.assertEqual(self.texts(".way li li")[1], "state_reg[3] not known to this stage")
        self.assertEqual(self.text(".answer"), "No stage says what became of it.")

    def test_a_register_of_the_last_netlist_leads_to_the_first(self):
        self.open("#t=shift_q[0]_dup", self.file)
        self.assertEqual(self.text(".answer"), "In the source: shift[0].")

    def test_stages_that_do_not_follow_each_other_are_refused(self):
        kptdb("report", "optimisation.xml", "synthesis.xml", "-o", "swapped.html", code=1)
        self.assertFalse(os.path.exists(path("swapped.html")))

    def test_stages_that_contradict_each_other_have_a_page_that_says_so(self):
        record("first", [associate("p", "x"), {"event": "replicate", "register": "x", "replica": "y"}])
        record("second", [associate("x", "u"), associate("y", "v"), {"event": "retime_inverter", "register": "v"},
                          {"event": "merge", "kept": "u", "merged": "v"}])
        kptdb("report", "first.xml", "second.xml", "-o", "odds.html")
        self.open(file="odds.html")
        self.assertTrue(self.texts("#attention li")[0].startswith("contradiction: stages 1 and 2 say that these are equal and inverse: "), self.texts("#attention li"))
        self.assertEqual(self.words()["unknown"], 1)


class Against(Page):
    def test_what_an_older_database_says_differently_is_listed(self):
        record("older", [associate("a", "a_reg"), associate("b", "b_reg"), associate("gone", "gone_reg")])
        record("newer", [associate("a", "a_reg"), associate("b", "b_new")])
        kptdb("report", "newer.xml", "--against", "older.xml", "-o", "newer.html")
        self.open(file="newer.html")
        listed = len(kptdb("diff", "older.xml", "newer.xml", code=1).splitlines())
        self.assertEqual(self.text("#changed p"), f"Against older.xml: {listed} registers changed.")
        self.assertIn("source b 1:1 with b_reg 1:1 with b_new", self.texts("#changed tbody tr"))
        self.assertIn("source gone 1:1 with gone_reg no such register", self.texts("#changed tbody tr"))
        self.assertEqual(BROWSER.ask("[...document.querySelectorAll('#changed a')].map((a) => a.hash)"), ["#r=b", "#t=b_new"])

    def test_without_an_older_database_there_is_no_such_part(self):
        self.assertTrue(BROWSER.ask("document.querySelector('#changes').hidden"))


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


if __name__ == "__main__":
    if shutil.which("chromium") is None:
        print("SKIPPED: chromium is missing; it is a Debian package of this name")
        sys.exit(77)
    KPTDB, SOURCES = os.path.abspath(sys.argv.pop(1)), os.path.abspath(sys.argv.pop(1))
    with tempfile.TemporaryDirectory(prefix="kpt-report-") as FOLDER:
        unittest.main()
