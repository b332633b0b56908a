"""The exceptions of kpt."""


class Refused(Exception):
    """An event, or another change, that was refused; str() is the library's own line.

    index: in a call that records several events, the number that were recorded before; otherwise None.
    event: for an event file, the event in words; otherwise None.
    file, line: for an event file, its name and the line, from 1; otherwise None.
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

    file: its name. line, column: the position, from 1; 0 when it is not known. text: what is wrong.
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
    """The object of a handle does not exist: a map that was absorbed or deleted, or the map of a register without one."""


class NotSaved(Exception):
    """The library's message for a file that it could not write; save() raises a better exception instead."""


class UnknownRegister(KeyError):
    """No register has that name, entity and type; str() lists the nearest names.

    key: the unknown name. nearest: up to three names that are near to it, nearest first. The first read of `nearest`
    searches for them, among the registers of that moment.
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
