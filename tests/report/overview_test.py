"""The first parts of the report: counts, attention, the hierarchy and the table."""

import json

from page import BROWSER, Page, associate, kptdb, read, record, write


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

    def test_a_kind_of_instance_filters(self):
        self.assertEqual(self.texts("#kind option"), ["any kind", "instance of fifo, register dffe", "instance of fifo, register sdffe", "signal"])
        BROWSER.ask("(() => { const n = document.querySelector('#kind'); n.value = 'instance of fifo, register dffe'; n.dispatchEvent(new Event('change')); })()")
        self.assertEqual(self.rows(), ["fifo/head"])
        self.assertEqual(self.address(), "#i=instance of fifo, register dffe")

    def test_signals_alone_offer_no_kind(self):
        record("signals", [associate("a", "b")])
        kptdb("report", "signals.xml", "-o", "signals.html")
        self.open(file="signals.html")
        self.assertTrue(BROWSER.ask("document.querySelector('#kind').closest('label').hidden"))

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
