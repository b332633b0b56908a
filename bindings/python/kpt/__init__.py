"""The keypoint database of a logic-synthesis flow: what became of the registers of a design.

A design has two netlists: the reference netlist is the design as written, and the transformed netlist is the design
after optimisation. A Database records how the registers of one became those of the other. A flow records its passes:

    >>> import kpt
    >>> db = kpt.Database("counter")
    >>> db.associate("count", "count_reg")
    >>> db.retime_inverter("count_reg")
    >>> db.save("counter.xml")

A consumer asks for a register:

    >>> count = kpt.load("counter.xml")["count"]
    >>> count.inverted
    True
    >>> [register.name for register in count.inverted_equivalents]
    ['count_reg']

Names are str. Bytes of a file that are not UTF-8 become lone surrogates, and the same bytes are written. A database
exists as long as any handle to it. Only one thread at a time runs inside the library. Loading, saving, uniting,
composing and calls for many registers let other Python threads run during the call.
"""
import gzip as _gzip
import json as _json
import os as _os
import stat as _stat
import tempfile as _tempfile
import warnings as _warnings
from collections.abc import Mapping as _Mapping
from collections.abc import MutableMapping as _MutableMapping

from . import _kpt
from ._errors import FormatError, Gone, NotSaved as _NotSaved, Refused, UnknownRegister
from ._kpt import Bits, Database, Group, Map, Maps, Register, Registers, StateTable, __version__, trackers

__all__ = [
    "Attributes", "Bits", "Database", "FormatError", "Gone", "Group", "KptWarning", "Map", "Maps", "Refused", "Register",
    "Registers", "StateTable", "UnknownRegister", "__version__", "compose", "load", "record", "trackers"
]

_GZIP = b"\x1f\x8b"


class KptWarning(UserWarning):
    """A problem that is not a failure: an unexpected element in a file, or a fact that a composition loses."""


class Attributes(_MutableMapping):
    """The attributes of a Register or a Map: a mapping from str to str. Changes go to the database.

    save() keeps them. The tools use the names pass, stage, status and note. Raises Gone when its owner does.
    """

    def __init__(self, owner):
        self._owner = owner

    def __getitem__(self, name):
        return dict(self._owner._get_attributes())[name]

    def __setitem__(self, name, value):
        self._owner._set_attribute(name, value)

    def __delitem__(self, name):
        if not self._owner._remove_attribute(name):
            raise KeyError(name)

    def __iter__(self):
        return (name for name, _ in self._owner._get_attributes())

    def __len__(self):
        return len(self._owner._get_attributes())

    def __repr__(self):
        return f"<kpt.Attributes: {dict(self)}>"


# ---- files ----


def load(source):
    """The Database in a file.

    source: a path, or a file object that is open for reading bytes. Either may be compressed by gzip, which is
    recognised by the content. Other Python threads run during the call. Raises FormatError, with the position, for a
    file that is not a database file, and OSError when the file cannot be opened or read. Issues a KptWarning for
    unexpected elements below the root, which the library reads as transformations.
    """
    if hasattr(source, "read"):
        return _load_stream(source, str(getattr(source, "name", "<stream>")))
    path = _os.fsdecode(source)
    with open(path, "rb") as file:
        is_plain = _stat.S_ISREG(_os.fstat(file.fileno()).st_mode) and file.read(2) != _GZIP
        if not is_plain:
            if file.seekable():
                file.seek(0)
            return _load_stream(file, path)
        return _warned(*_kpt._load_file(_os.fsencode(path), path, file, lambda: file.seek(0)), path)


def _load_stream(stream, shown):
    start, prefix = _start_of(stream)
    if prefix != _GZIP:
        whole = stream if start is not None else _Prefixed(prefix, stream)
        return _loaded(whole, start, shown)
    packed = stream if start is not None else _Prefixed(prefix, stream)
    try:
        with _gzip.GzipFile(fileobj=packed, mode="rb") as file:
            return _loaded(file, None if start is None else 0, shown)
    except (EOFError, _gzip.BadGzipFile, _gzip.zlib.error) as problem:
        raise FormatError(shown, 0, 0, f"not a whole gzip file: {problem}") from problem


def _start_of(stream):
    """The position at which the bytes begin, None for a stream that cannot go back, and the first two bytes."""
    seekable = getattr(stream, "seekable", None)
    start = stream.tell() if seekable is not None and seekable() else None
    prefix = _two_bytes(stream)
    if start is not None:
        stream.seek(start)
    return start, prefix


def _two_bytes(stream):
    prefix = stream.read(2)
    if not isinstance(prefix, bytes):
        raise TypeError(f"the file was opened in text mode: read() gave a {type(prefix).__name__}")
    while len(prefix) < 2:
        more = stream.read(2 - len(prefix))
        if not more:
            break
        prefix += more
    return prefix


class _Prefixed:
    """A stream, and the bytes that were already read from it."""

    def __init__(self, prefix, stream):
        self._prefix = prefix
        self._stream = stream

    def read(self, size=-1):
        if not self._prefix:
            return self._stream.read(size)
        taken = self._prefix if size < 0 else self._prefix[:size]
        self._prefix = self._prefix[len(taken):]
        return taken + (self._stream.read() if size < 0 else b"")


def _loaded(stream, start, shown):
    rewind = None if start is None else lambda: stream.seek(start)
    return _warned(*_kpt._load_stream(stream, rewind, shown), shown)


def _warned(db, unexpected, shown):
    if unexpected:
        _warnings.warn(f"{shown}: {unexpected} unexpected elements are read as transformations", KptWarning,
                       stacklevel=4)
    return db


def _save(self, path):
    """Writes the database file completely or not at all: an earlier file stays until the new one is on the disk.

    A path that ends in .gz makes a file compressed by gzip. Other Python threads run during the call. Raises Refused
    for a name that no file can hold, and OSError when the file cannot be written.
    """
    path = _os.fsdecode(path)
    if "\0" in path:
        raise ValueError("a path has no null character")
    if not path.endswith(".gz"):
        _save_plain(self, path)
        return
    with _tempfile.TemporaryDirectory(dir=_os.path.dirname(path) or ".", prefix=".kpt-") as folder:
        plain = _os.path.join(folder, "plain")
        packed = _os.path.join(folder, "packed")
        _save_plain(self, plain)
        _pack(plain, packed)
        _keep_mode(path, packed)
        _os.replace(packed, path)


def _save_plain(db, path):
    try:
        db._save(_os.fsencode(path))
    except _NotSaved as problem:
        reason = str(problem)
    else:
        return
    _os.stat(_os.path.dirname(path) or ".")  # the usual reason has an exception of its own
    if "cannot be saved" in reason:
        raise Refused(reason)
    raise OSError(reason)


def _pack(plain, packed):
    with open(plain, "rb") as source, open(packed, "wb") as target:
        with _gzip.GzipFile(filename="", fileobj=target, mode="wb", mtime=0) as file:
            while block := source.read(1 << 20):
                file.write(block)
        target.flush()
        _os.fsync(target.fileno())


def _keep_mode(path, packed):
    try:
        mode = _os.stat(path).st_mode
    except FileNotFoundError:
        mode = _os.stat(_os.path.join(_os.path.dirname(packed), "plain")).st_mode
    _os.chmod(packed, _stat.S_IMODE(mode))


# ---- several databases ----


def compose(stages, name=None, *, least_share=0.5, keeps_unrecorded=False):
    """A new Database with what successive stages, from first to last, say together. It is exact, and the stages do not
    change.

    name: the name of the result, by default that of the first stage.
    least_share: the least share, 0 to 1, of a stage's first registers that the stage before has to know.
    keeps_unrecorded: whether a stage does not change a register that it does not mention.

    Raises Refused, with the reason, when two stages do not fit or contradict each other. Issues a KptWarning for each
    fact that the stages say and the composition leaves out. Other Python threads run during the call.
    """
    stages = list(stages)
    if name is None:
        name = stages[0].name if stages else "composition"
    composed, _, losses = _kpt._compose(stages, name, least_share, keeps_unrecorded)
    for loss in losses:
        _warnings.warn(loss, KptWarning, stacklevel=2)
    return composed


# ---- event files ----


def record(events, name=None):
    """A new Database with the events of an event file.

    events: a path, whose file may be compressed by gzip; or an iterable of lines, str or bytes, or of events as dicts.
    name: the name of the database, by default that of the file without its endings.

    The first refused line raises Refused, and the first line that is not an event raises FormatError. Both exceptions
    have the position.
    """
    if name is None:
        if not isinstance(events, (str, bytes, _os.PathLike)):
            raise TypeError("a database from an iterable of events needs a name")
        name = _os.path.basename(_os.fsdecode(events)).removesuffix(".gz").rsplit(".", 1)[0]
    db = Database(name)
    db.record(events)
    return db


_LINES_A_CALL = 4096


def _record(self, events):
    """Records the events of an event file: a path, or an iterable of lines or of dicts, as for kpt.record.

    Returns the number of events. Events before the first line that is refused, or is not an event, stay recorded.
    """
    if isinstance(events, (str, bytes, _os.PathLike)):
        path = _os.fsdecode(events)
        with open(path, "rb") as file:
            packed = file.read(2) == _GZIP
        with (_gzip.open if packed else open)(path, "rb") as file:
            return _record_lines(self, path, file)
    return _record_lines(self, "<events>", events)


def _record_lines(db, shown, lines):
    recorder = db._recorder()
    batch = []
    for number, line in enumerate(lines, 1):
        text = _line_of(line)
        if text and not text.isspace():
            batch.append((number, text))
        if len(batch) == _LINES_A_CALL:
            _record_batch(recorder, shown, batch)
            batch = []
    _record_batch(recorder, shown, batch)
    return recorder.recorded


def _line_of(line):
    if isinstance(line, _Mapping):
        return _json.dumps(dict(line))
    if isinstance(line, (bytes, bytearray)):
        return line.decode(errors="surrogateescape")
    if not isinstance(line, str):
        raise TypeError(f"an event is a line or a dict, not {type(line).__name__}")
    return line


def _record_batch(recorder, shown, batch):
    refusal = recorder.take([text for _, text in batch])
    if refusal is None:
        return
    at, event, reason = refusal
    number = batch[at][0]
    if not event:
        raise FormatError(shown, number, 0, reason)
    raise Refused(reason, index=recorder.recorded, event=event, file=shown, line=number)


def _events(self):
    """A list of dicts: events from which kpt.record builds a database that gives the same answers as this one.

    The last event has the number of the others. json.dumps(event) is one line of an event file. Raises Refused if a
    name of the database cannot be written in an event. Other Python threads run during the call.
    """
    return [_json.loads(line) for line in self._event_lines()]


# ---- tables ----

_NUMBERS = {"id": "int64", "map": "int64", "inverted": "int8", "constant": "int8"}


def _to_records(self, side="reference", *, numpy=None):
    """A dict of columns with a row for each register of a side. pandas.DataFrame and polars.DataFrame accept it.

    side: "reference" or "transformed". numpy: whether the columns are numpy arrays; by default they are if numpy is
    installed. Otherwise they are lists. The columns:

    name, entity, type: str; entity and type are empty for a signal.
    id: the register's number in a file.
    fate: "mapped", "machine", "constant", "without_fanout" or "unknown", like Map.fate.
    map: the number of its map; 0 without a map.
    counterpart: the name of the register's representative in the other netlist; empty when there is none.
    inverted, constant: 0 or 1, as in Map; -1 when that is not known.

    Other Python threads run during the call.
    """
    records = self._records(side)
    if numpy is None:
        numpy = _has_numpy()
    if not numpy:
        return records
    import numpy as np

    return {name: np.array(values, dtype=_NUMBERS.get(name, object)) for name, values in records.items()}


def _has_numpy():
    try:
        import numpy  # noqa: F401
    except ImportError:
        return False
    return True


def _adopt():
    """Moves the classes of the extension module into this module, and adds the parts that are written in Python."""
    for value in (Bits, Database, Group, Map, Maps, Register, Registers, StateTable, trackers):
        if isinstance(value, type):
            value.__module__ = __name__
    for error in (FormatError, Gone, Refused, UnknownRegister):
        error.__module__ = __name__
    for function, name in ((_save, "save"), (_record, "record"), (_events, "events"), (_to_records, "to_records")):
        function.__name__ = name
        function.__qualname__ = f"Database.{name}"
        setattr(Database, name, function)
    for owner in (Map, Register):
        owner.attributes = property(Attributes, doc="The Attributes of this object. Changes go to the database.")


_adopt()
