"""The attributes of maps on the page: passes, statuses, notes and the transitions of a machine."""

from page import BROWSER, Page, associate, kptdb, read, record, write


def with_attributes(text, of, **attributes):
    """The database with attributes on the map that lists a register of the source, as save_atomically writes them."""
    number = text.split(f"<name>{of}</name>")[0].rsplit('id="', 1)[1].split('"')[0]
    at = text.index(f'<kp id="{number}">')
    end = text.index("</transformation>", at)
    elements = "".join(f'<attribute name="{name}" value="{value}"> </attribute>' for name, value in attributes.items())
    return text[:end] + elements + text[end:]


class Facts(Page):
    file = "facts.html"

    @classmethod
    def setUpClass(cls):
        codes = [["00", "001"], ["01", "010"], ["10", "100"]]
        record("facts", [associate("a", "a_reg"), associate("b", "b_reg"), associate("c", "c_reg"), associate("d", "d_reg"),
                         {"event": "associate_fsm", "reference": ["s[1]", "s[0]"], "transformed": ["h[2]", "h[1]", "h[0]"], "states": codes}])
        text = read("facts.xml")
        text = with_attributes(text, "a", **{"pass": "opt_dff", "status": "proved"})
        text = with_attributes(text, "b", **{"pass": "opt_merge", "status": "refuted", "note": "&lt;b&gt;wrong&lt;/b&gt;"})
        text = with_attributes(text, "c", status="claimed")
        text = with_attributes(text, "s[1]", transitions="0&gt;1 1&gt;2 2&gt;0 2&gt;2")
        write("facts.xml", text)
        kptdb("report", "facts.xml", "-o", "facts.html")

    def test_the_table_has_pass_and_status(self):
        cells = dict(zip(self.rows(), zip(self.texts("#table .body .c-pass"), self.texts("#table .body .c-status"))))
        self.assertEqual(cells, {"a": ("opt_dff", "proved"), "b": ("opt_merge", "refuted"), "c": ("", "claimed"), "d": ("", ""),
                                 "s[0]": ("", ""), "s[1]": ("", "")})

    def test_the_passes_of_the_database_can_be_chosen(self):
        self.assertEqual(self.texts("#pass option")[1:], ["opt_dff", "opt_merge"])
        self.go("p=opt_dff")
        self.assertEqual(self.rows(), ["a"])

    def test_a_status_can_be_chosen(self):
        self.go("st=claimed")
        self.assertEqual(self.rows(), ["c"])

    def test_attention_leads_to_refuted_facts(self):
        self.assertIn("1 register with a refuted fact", self.texts("#attention li"))
        BROWSER.ask("[...document.querySelectorAll('#attention a')].find((a) => a.innerText.includes('refuted')).click()")
        BROWSER.wait("location.hash === '#st=refuted'")
        self.assertEqual(self.rows(), ["b"])

    def test_a_register_shows_its_pass_its_status_and_its_note(self):
        self.open("#r=b", self.file)
        self.assertEqual(self.texts(".way li li"), ["b kept → b_reg pass opt_merge refuted"])
        self.assertEqual(self.texts("#page table.plain tr"), ["group note <b>wrong</b>", "group pass opt_merge", "group status refuted"])

    def test_known_transitions_are_drawn_as_the_graph_of_states(self):
        self.open("#r=s[0]", self.file)
        self.assertEqual(BROWSER.ask("document.querySelector('svg.states').getAttribute('aria-label')"),
                         "State graph: 0 to 1, 1 to 2, 2 to 0, 2 to 2")
        self.assertEqual(BROWSER.ask("document.querySelectorAll('svg.states .arrow').length"), 4)
        self.assertEqual(BROWSER.ask("[...document.querySelectorAll('svg.states title')].map((n) => n.textContent)"),
                         ["state 0: 00", "state 1: 01", "state 2: 10"])

    def test_transitions_that_name_no_state_are_not_drawn(self):
        for number, transitions in enumerate(("0&gt;3", "zero", "")):
            write("lame.xml", with_attributes(read("facts.xml").replace('name="transitions"', 'name="former"'), "s[1]", transitions=transitions))
            kptdb("report", "lame.xml", "-o", f"lame{number}.html")
            self.open("#r=s[0]", f"lame{number}.html")
            self.assertEqual(BROWSER.ask("document.querySelectorAll('.codes tbody tr').length"), 3)
            self.assertIsNone(BROWSER.ask("document.querySelector('svg.states')"))
