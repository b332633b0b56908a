"""The exceptions of kpt."""


class Refused(Exception):
    """An event, or another change, that was not made; str() is the library's own line.

    index: how many were recorded before it, of a call that records several; else None.
    event: the event in words, of an event file; else None.
    file, line: where it stands in an event file, the line from 1; else None.
    """

    def __init__(self, reason, *, index=None, event=None, file=None, line=None):
        super().__init__(reason)
        self.reason = reason
        self.index = index
        self.event = event
        self.file = file
        self.line = line

    def __str__(self):
        place = "" if self.line is None else f"{self.file}:{self.line}: {self.event}: "
        return place + self.reason


class FormatError(ValueError):
    """A database or event file that cannot be read.

    file: its name. line, column: the place, from 1; 0 where it is not known. text: what is wrong.
    """

    def __init__(self, file, line, column, text):
        super().__init__(file, line, column, text)
        self.file = file
        self.line = line
        self.column = column
        self.text = text

    def __str__(self):
        place = "".join(f":{number}" for number in (self.line, self.column) if number)
        return f"{self.file}{place}: {self.text}"


class Gone(LookupError):
    """What a handle stood for is there no more: a map that was absorbed or deleted, or a register without one."""


class NotSaved(Exception):
    """What the library says of a file that it could not write; save() makes a better exception of it."""


class UnknownRegister(KeyError):
    """No register of that name, entity and type; str() names the nearest.

    key: what was asked for. nearest: up to three names that are near to it, nearest first. They are looked for when
    they are first asked for, among the registers of that moment.
    """

    def __init__(self, registers, key):
        super().__init__(key)
        self.key = key
        self._registers = registers
        self._nearest = None

    @property
    def nearest(self):
        """Up to three names that are near to it, nearest first."""
        if self._nearest is None:
            try:
                self._nearest = tuple(self._registers._nearest(self.key))
            except Gone:
                self._nearest = ()
            self._registers = None  # the database need not live as long as its exceptions
        return self._nearest

    def __str__(self):
        hint = " or ".join(self.nearest)
        return f"no register {self.key!r}" + (f"; did you mean {hint}?" if hint else "")

    def __reduce__(self):
        return KeyError, (str(self),)
