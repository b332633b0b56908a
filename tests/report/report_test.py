"""The report as its readers see it: kptdb makes it, and Chromium opens it from disk and uses it.

    report_test.py KPTDB SOURCES [unittest options]
"""

import shutil
import sys
import unittest

if shutil.which("chromium") is None:
    print("SKIPPED: chromium is missing; it is a Debian package of this name")
    sys.exit(77)

from facts_test import *
from manners_test import *
from overview_test import *
from register_test import *

unittest.main()
