#!/usr/bin/python3
"""Compares the blocks of docs/format.md with the files that the library writes and reads.

  check_format_guide.py DOCS DATA KPTDB WORK
"""
import pathlib
import re
import subprocess
import sys

DOCS, DATA, KPTDB, WORK = (pathlib.Path(word).resolve() for word in sys.argv[1:])
# The terminals that the grammar describes in words.
TERMINALS = {
    "NAME": r'[^<"]+', "TEXT": r"(?:[^<]*)", "ID": r"(?:-?\d+)", "COUNT": r"(?:\d+)",
}
# Files that the library wrote.
WRITTEN = ["empty.xml", "three_maps.xml", "state_machine.xml", "inverting_groups.xml", "elimination_words.xml"]


def kptdb(*arguments):
    return subprocess.run([KPTDB, *arguments], text=True, capture_output=True, cwd=WORK)


def blocks():
    """The blocks of the page, in their order."""
    return re.findall(r"^```(\w*)\n(.*?)^```", (DOCS / "format.md").read_text(), re.DOTALL | re.MULTILINE)


def rules_of(grammar):
    """The right side of each rule, by its name."""
    rules = {}
    for line in grammar.splitlines():
        # A line that begins a rule, a line of terminals, or a line that continues the rule before it.
        starts = re.findall(r"(?:^|  )([A-Za-z-]+) *= ((?:'[^']*'|\"[^\"]*\"|[^='\"])*?)(?=  +[A-Z]+ *=|$)", line)
        for name, right in starts:
            rules[name] = right
        if not starts and line.strip():
            rules[name] += " " + line
    return rules


def pattern_of(name, rules):
    """A regular expression for the texts of a rule, without blanks between the parts."""
    if name in TERMINALS:
        return TERMINALS[name]
    parts = []
    for literal, word, sign in re.findall(r"""('[^']*'|"[^"]*")|([A-Za-z-]+)|([*?|])""", rules[name]):
        if literal:
            parts.append(re.escape(literal[1:-1]))
        elif word:
            parts.append(pattern_of(word, rules))
        else:
            parts.append(sign)
    return "(?:" + "".join(parts) + ")"


def without_blanks(text):
    return re.sub(r"\s+<", "<", re.sub(r">\s+", ">", text))


def check_grammar(block):
    file = re.compile(pattern_of("file", rules_of(block)))
    for name in WRITTEN:
        text = without_blanks((DATA / name).read_text())
        assert file.fullmatch(text), f"{name} is not what the grammar says"
        for wrong in (text.replace('"transformed"', '"other"', 1), text.replace("</transformations_set>", "", 1)):
            assert not file.fullmatch(wrong), f"the grammar allows a change of {name}"


def check_example(block):
    """The example is the file of which the text speaks, and what it says of its maps holds."""
    assert block == (DATA / "three_maps.xml").read_text()
    (WORK / "example.xml").write_text(block)
    run = kptdb("list", "example.xml")
    assert run.returncode == 0, run.stderr
    told = [re.split("  +", line.strip()) for line in run.stdout.splitlines()[1:]]
    assert ["reference", "instance", "mapped", "1:1", "q_a (u1, dff)", "q_a (u1, dff)"] in told, told
    assert ["reference", "signal", "constant", "eliminated", "clk_en", "always 0"] in told, told
    assert ["transformed", "instance", "unknown", "open", "s_0 (u2, dff)"] in told, told


def check_refusal(block):
    """A file that is not well-formed is refused with the message."""
    (WORK / "wrong.xml").write_text('<kpt_db name="top">\n</kpt_bd>\n')
    run = kptdb("info", "wrong.xml")
    assert run.returncode == 3 and run.stdout == "", run
    message = re.escape(block.strip()).replace("FILE", r"wrong\.xml").replace("line\\ number\\ L", "line\\ number\\ 2")
    message = message.replace("number\\ C", r"number\ \d+").replace("TEXT", ".+")
    assert re.fullmatch("kptdb: " + message + "\n", run.stderr), (message, run.stderr)


def check_attribute(block, example):
    """The element is what a save writes, and a load keeps it in a register and in a map."""
    (WORK / "pass.jsonl").write_text('{"event": "associate", "reference": "a", "transformed": "b", "pass": "opt_dff"}\n')
    run = kptdb("record", "pass.jsonl", "-o", "pass.xml")
    assert run.returncode == 0, run.stderr
    assert block.strip() in (WORK / "pass.xml").read_text()
    map_with_it = example.replace("  </transformation>", block + "  </transformation>", 1)
    assert map_with_it != example
    (WORK / "attribute.xml").write_text(map_with_it)
    run = kptdb("list", "attribute.xml", "--pass", "opt_dff")
    assert run.returncode == 0 and run.stdout.count("q_a (u1, dff)  q_a (u1, dff)") == 2, run
    findings = [re.sub(r"^\w+\.xml:\d+", "", kptdb("check", name).stdout) for name in ("attribute.xml", "example.xml")]
    assert findings[0] == findings[1], findings


def main():
    WORK.mkdir(parents=True, exist_ok=True)
    found = blocks()
    assert [kind for kind, _ in found] == ["", "xml", "", "xml"], "a block that nothing checks"
    texts = [text for _, text in found]
    check_grammar(texts[0])
    check_example(texts[1])
    check_refusal(texts[2])
    check_attribute(texts[3], texts[1])
    print(f"{len(texts)} blocks hold")


if __name__ == "__main__":
    main()
