"""Loading and saving."""
import gzip
import io
import os
import pathlib
import stat
import threading

import pytest

import kpt
from conftest import names


@pytest.fixture
def saved(tmp_path):
    db = kpt.Database("saved")
    db.associate("a", "x")
    db.associate("b", ("u", "e", "t"))
    db["a"].attributes["pass"] = "opt"
    path = tmp_path / "saved.xml"
    db.save(path)
    return path


def assert_is_saved(db):
    assert db.name == "saved" and names(db) == ["a", "b"]
    assert db["b"].equivalents[0].key == ("u", "e", "t")
    assert dict(db["a"].attributes) == {"pass": "opt"}


@pytest.mark.parametrize("form", [str, os.fsencode, pathlib.Path])
def test_a_path_may_come_in_any_form(saved, form):
    db = kpt.load(form(saved))
    assert_is_saved(db)
    db.save(form(saved))
    assert_is_saved(kpt.load(saved))


def test_a_file_object_is_read_from_where_it_stands(saved):
    with open(saved, "rb") as file:
        assert_is_saved(kpt.load(file))
    assert_is_saved(kpt.load(io.BytesIO(saved.read_bytes())))
    shifted = io.BytesIO(b"before" + saved.read_bytes())
    shifted.seek(6)
    assert_is_saved(kpt.load(shifted))


class Pipe:
    """A stream that cannot go back and returns a few bytes at a time."""

    def __init__(self, data, at_a_time=7):
        self._data, self._at_a_time = io.BytesIO(data), at_a_time

    def read(self, size=-1):
        return self._data.read(self._at_a_time if size < 0 else min(size, self._at_a_time))


def test_a_stream_that_cannot_go_back_is_read_once(saved):
    assert_is_saved(kpt.load(Pipe(saved.read_bytes())))
    assert_is_saved(kpt.load(Pipe(saved.read_bytes(), 1)))


def test_a_named_pipe_is_read(saved, tmp_path):
    pipe = tmp_path / "pipe"
    os.mkfifo(pipe)
    writer = threading.Thread(target=lambda: pipe.write_bytes(saved.read_bytes()))
    writer.start()
    assert_is_saved(kpt.load(pipe))
    writer.join()


def test_gzip_is_seen_by_its_content(saved, tmp_path):
    packed = tmp_path / "packed"
    packed.write_bytes(gzip.compress(saved.read_bytes()))
    assert_is_saved(kpt.load(packed))
    assert_is_saved(kpt.load(io.BytesIO(packed.read_bytes())))
    with gzip.open(packed) as file:
        assert_is_saved(kpt.load(file))


def test_a_cut_gzip_file_is_a_format_error(saved, tmp_path):
    packed = tmp_path / "packed.gz"
    packed.write_bytes(gzip.compress(saved.read_bytes())[:-20])
    with pytest.raises(kpt.FormatError, match="not a whole gzip file"):
        kpt.load(packed)


def test_a_path_that_ends_in_gz_is_packed(saved, tmp_path):
    packed = tmp_path / "packed.xml.gz"
    kpt.load(saved).save(packed)
    assert gzip.decompress(packed.read_bytes()) == saved.read_bytes()
    assert_is_saved(kpt.load(packed))
    assert sorted(os.listdir(tmp_path)) == ["packed.xml.gz", "saved.xml"]


def test_saving_keeps_the_mode_of_a_packed_file(saved, tmp_path):
    packed = tmp_path / "packed.gz"
    packed.write_bytes(b"")
    packed.chmod(0o640)
    kpt.load(saved).save(packed)
    assert stat.S_IMODE(packed.stat().st_mode) == 0o640


def test_what_is_not_well_formed_tells_its_place(tmp_path):
    path = tmp_path / "broken.xml"
    path.write_text('<kpt_db name="a">\n  <key_points_set>\n</kpt_db>\n')
    with pytest.raises(kpt.FormatError) as error:
        kpt.load(path)
    assert (error.value.file, error.value.line) == (str(path), 3) and error.value.column > 0
    assert str(error.value) == f"{path}:3:{error.value.column}: {error.value.text}"
    assert "key_points_set" in error.value.text


def test_a_broken_stream_is_named_as_its_file_is(tmp_path):
    path = tmp_path / "broken.xml"
    path.write_text("<kpt_db")
    with open(path, "rb") as file, pytest.raises(kpt.FormatError, match=f"^{path}:1:"):
        kpt.load(file)
    with pytest.raises(kpt.FormatError, match="^<stream>:1:"):
        kpt.load(io.BytesIO(b"<kpt_db"))


@pytest.mark.parametrize("text", ["", "not XML", "<kpt_db/>", "<svg name='picture'><path/></svg>", "\x1f"])
def test_other_files_are_format_errors(tmp_path, text):
    path = tmp_path / "other"
    path.write_text(text)
    with pytest.raises(kpt.FormatError):
        kpt.load(path)
    with pytest.raises(kpt.FormatError):
        kpt.load(io.BytesIO(text.encode()))


def test_a_foreign_root_is_told(tmp_path):
    path = tmp_path / "picture.svg"
    path.write_text('<svg name="picture"/>')
    with pytest.raises(kpt.FormatError, match="its root element is not kpt_db"):
        kpt.load(path)


def test_an_element_that_does_not_belong_is_a_warning(tmp_path):
    db = kpt.Database("odd")
    db.associate("a", "x")
    path = tmp_path / "odd.xml"
    db.save(path)
    path.write_text(path.read_text().replace("transformations_set", "something_else"))
    with pytest.warns(kpt.KptWarning, match="1 unexpected elements are read as transformations"):
        assert kpt.load(path)["a"].fate == "mapped"


def test_a_file_that_is_not_there_is_an_os_error(tmp_path):
    with pytest.raises(FileNotFoundError):
        kpt.load(tmp_path / "nowhere.xml")
    with pytest.raises(IsADirectoryError):
        kpt.load(tmp_path)


def test_a_file_in_text_mode_is_a_wrong_type(saved):
    with open(saved, encoding="utf-8") as file, pytest.raises(TypeError, match="opened in text mode"):
        kpt.load(file)


def test_what_reading_raises_comes_through(saved):
    class Failing(Pipe):
        def read(self, size=-1):
            if self._data.tell() > 100:
                raise OSError("the disk is gone")
            return super().read(size)

    with pytest.raises(OSError, match="the disk is gone"):
        kpt.load(Failing(saved.read_bytes()))


def test_a_stream_may_use_the_module_while_it_is_read(saved):
    class Busy(Pipe):
        def read(self, size=-1):
            inner = kpt.load(saved)
            inner.retime_inverter("x")
            return super().read(size)

    assert_is_saved(kpt.load(Busy(saved.read_bytes(), 1000)))


def test_a_stream_that_gives_too_much_is_a_wrong_value(saved):
    class Generous:
        def __init__(self):
            self.calls = 0

        def read(self, size=-1):
            self.calls += 1
            return b"<k" if self.calls == 1 else b" " * (size + 1)

    with pytest.raises(ValueError, match="more bytes than it was asked for"):
        kpt.load(Generous())


def test_an_earlier_file_stays_until_the_new_one_is_whole(saved):
    before = saved.read_bytes()
    db = kpt.Database("other")
    db.associate("\0", "x")
    with pytest.raises(kpt.Refused, match="cannot be saved"):
        db.save(saved)
    assert saved.read_bytes() == before and os.listdir(saved.parent) == ["saved.xml"]


def test_names_that_xml_needs_escaped_come_back(tmp_path):
    odd = ["count<3>", "a&b", 'say "so"', "]]>", "tab\tand\nline", "ä\N{SNOWMAN}"]
    db = kpt.Database("<odd>")
    db.associate_many(odd, odd)
    db.save(tmp_path / "odd.xml")
    loaded = kpt.load(tmp_path / "odd.xml")
    assert loaded.name == "<odd>" and names(loaded) == names(loaded.transformed) == odd


def test_a_folder_that_is_not_there_is_an_os_error(tmp_path):
    for name in ("db.xml", "db.xml.gz"):
        with pytest.raises(FileNotFoundError):
            kpt.Database("a").save(tmp_path / "nowhere" / name)


def test_a_path_that_cannot_be_written_is_an_os_error(tmp_path):
    (tmp_path / "folder").mkdir()
    with pytest.raises(OSError):
        kpt.Database("a").save(tmp_path / "folder")


def test_a_path_with_a_null_character_is_a_wrong_value():
    for call in (kpt.Database("a").save, kpt.load, kpt.record):
        with pytest.raises(ValueError):
            call("a\0b")


def test_registers_recorded_after_a_load_repeat_no_id(saved):
    db = kpt.load(saved)
    db.associate("later", "later")
    ids = [register.id for register in db]
    assert len(set(ids)) == len(ids)


def test_nothing_is_printed(tmp_path, capfd):
    path = tmp_path / "broken.xml"
    path.write_text("<kpt_db")
    with pytest.raises(kpt.FormatError):
        kpt.load(path)
    with pytest.raises(OSError):
        kpt.Database("a").save(tmp_path)
    assert capfd.readouterr() == ("", "")
