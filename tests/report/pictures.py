"""Makes the pictures of docs/report.md from reports.

    pictures.py ELEVATOR.html DES.html FOLDER
"""

import os
import sys

from browser import Browser

elevator, des, folder = sys.argv[1:]
with Browser(width=1180, height=840) as browser:
    for page, anchor, colours, name in ((elevator, "", "light", "elevator.png"), (elevator, "#r=state[0]", "dark", "register.png"),
                                        (des, "#s=round1.", "light", "des.png")):
        browser.colours(colours)
        browser.open(page, anchor)
        browser.ask("new Promise((r) => setTimeout(r, 100))")
        browser.screenshot(os.path.join(folder, name))
    assert not browser.problems, browser.problems
