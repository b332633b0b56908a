"""Puts measured figures into a page, between the marks of the script that measured them."""


def replace(page, script, text):
    """`page` is a path; `script` names the marks."""
    begin, end = (f"<!-- measured by {script}: {what} -->" for what in ("begin", "end"))
    old = page.read_text()
    page.write_text(old.split(begin)[0] + begin + "\n\n" + text.strip("\n") + "\n\n" + end + old.split(end)[1])
