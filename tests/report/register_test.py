"""The page of a register, with one stage and with several, and the changes against an older database."""

import os
import shutil

from page import BROWSER, SOURCES, Page, associate, kptdb, path, record


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
    """Two stages and their composition."""

    file = "two.html"

    @classmethod
    def setUpClass(cls):
        for stage in ("synthesis", "optimisation"):
            shutil.copy(os.path.join(SOURCES, f"examples/events/uart_tx_{stage}.jsonl"), path(f"{stage}.jsonl"))
            kptdb("record", f"{stage}.jsonl", "-o", f"{stage}.xml")
        kptdb("report", "synthesis.xml", "optimisation.xml", "-o", "two.html")

    def test_words_are_of_all_stages_together(self):
        # The second stage does not mention the registers of the machine, so they are unknown.
        self.assertEqual(self.words(), {"mapped": 17, "constant": 3, "without fanout": 1, "machine": 0, "unknown": 2})

    def test_a_register_has_its_way_through_the_stages(self):
        self.open("#r=ready", self.file)
        self.assertEqual(self.texts(".way li li"), ["ready merged with 1 other, inverted → busy_reg", "busy_reg kept → busy_q"])
        self.assertEqual(self.text(".answer"), "In the netlist: the inverse of busy_q.")
        # On its path, the polarity is that of the source's register.
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
