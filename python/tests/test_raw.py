"""The 35 functions, and what the package makes of wrong arguments."""

import ctypes
import os
import pathlib
import re
import subprocess
import sys

import pytest

import ipodctl
from ipodctl import raw, texts

PACKAGE = pathlib.Path(ipodctl.__file__).parent
DEFINITION = os.environ.get("IPODCTL_DEF") or str(
    pathlib.Path(__file__).resolve().parents[2] / "src/api/ipodctl.def")


def exported_names():
    text = pathlib.Path(DEFINITION).read_text(encoding="ascii")
    return re.findall(r"^ +(\w+) @\d+$", text, re.MULTILINE)


def test_raw_has_every_exported_function_and_no_other():
    own = [name for name in vars(raw) if re.match(r"(is)?Ipod", name)]
    assert sorted(own) == sorted(exported_names())
    assert len(own) == 35


def test_the_package_uses_every_function():
    source = "".join(file.read_text() for file in PACKAGE.glob("*.py") if file.name != "raw.py")
    assert [name for name in exported_names() if f"raw.{name}" not in source] == []


@pytest.mark.parametrize("call", [
    lambda: raw.IpodCommand("play"),
    lambda: raw.IpodCommand(1.0),
    lambda: raw.IpodCommand(None),
    lambda: raw.IpodCommand(),
    lambda: raw.IpodConnect(1),
    lambda: raw.IpodGetTrackIndex(0),
    lambda: raw.IpodGetTrackIndex(ctypes.c_short()),
    lambda: raw.IpodGetName("name", 4),
    lambda: raw.IpodGetName((ctypes.c_ubyte * 8)(), 4),
    lambda: ipodctl.Ipod(attempts="2"),
    lambda: ipodctl.Ipod(pause=None),
    lambda: ipodctl.Ipod().command("play"),
    lambda: ipodctl.Ipod().play(3),
    lambda: setattr(ipodctl.Ipod(), "shuffle", "off"),
    lambda: ipodctl.Cursor().open("artists"),
])
def test_a_wrong_type_is_a_type_error(call):
    with pytest.raises(TypeError):
        call()


@pytest.mark.parametrize("call", [
    lambda: raw.IpodCommand(2**31),
    lambda: raw.IpodCommand(-2**31 - 1),
    lambda: raw.IpodGetName((ctypes.c_ushort * 8)(), 9),
    lambda: raw.IpodGetItemName(0, (ctypes.c_ushort * 9)(), (ctypes.c_ushort * 8)(), 9),
    lambda: ipodctl.Ipod(attempts=0),
    lambda: ipodctl.Ipod(pause=-1),
    lambda: ipodctl.Ipod().command(15),
    lambda: setattr(ipodctl.Ipod(), "repeat", 4),
    lambda: ipodctl.Cursor().open(9),
])
def test_a_wrong_number_is_a_value_error(call):
    with pytest.raises(ValueError):
        call()


def test_a_pointer_is_false_when_it_is_null():
    assert not raw.IpodGetFirstItem(0, 9, 0)


def test_units_are_latin_1_until_the_first_that_was_not_written():
    units = texts.buffer()
    units[0:3] = [0x41, 0xE9, 0]
    assert texts.text_of(units) == "A\u00e9\0"
    assert texts.text_of(texts.buffer()) == ""


def test_a_missing_library_is_an_import_error_that_says_what_to_do(tmp_path):
    package = tmp_path / "ipodctl"
    package.mkdir()
    for file in PACKAGE.glob("*.py"):
        (package / file.name).write_text(file.read_text())
    run = subprocess.run([sys.executable, "-B", "-c", "import ipodctl"], cwd=tmp_path, timeout=60,
                         env={**os.environ, "PYTHONPATH": str(tmp_path),
                              "IPODCTL_LIBRARY": "/nowhere/libipodctl.so.1"},
                         capture_output=True, text=True, check=False)
    assert run.returncode == 1
    last = run.stderr.splitlines()[-1]
    assert last.startswith("ImportError: ipodctl cannot load its library /nowhere/libipodctl.so.1")
    assert last.endswith("or set IPODCTL_LIBRARY to the path of a libipodctl.so.1.")
