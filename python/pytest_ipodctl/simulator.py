"""Runs an ipodsim and controls it."""

from __future__ import annotations

import importlib.util
import json
import os
import pathlib
import shutil
import socket
import subprocess
import time
import typing

Status = typing.Dict[str, typing.Any]

# Seconds. A simulated iPod needs a fraction of one.
_START_LIMIT = 20.0
_END_LIMIT = 5.0
_ANSWER_LIMIT = 10.0


class SimulatorError(Exception):
    """The simulated iPod did not do what it should. The message says what to do next."""


def find_ipodsim() -> pathlib.Path:
    """Returns the program of the wheel, else that of IPODCTL_IPODSIM, else that of the PATH."""
    package = importlib.util.find_spec("ipodctl")  # not imported: it would load the library
    if package and package.origin:
        in_wheel = pathlib.Path(package.origin).parent / "native/bin/ipodsim"
        if in_wheel.exists():
            return in_wheel
    found = shutil.which(os.environ.get("IPODCTL_IPODSIM") or "ipodsim")
    if found is None:
        raise SimulatorError("ipodsim is not installed: install the wheel of ipodctl, which "
                             "contains it, or set IPODCTL_IPODSIM to its path.")
    return pathlib.Path(found).resolve()


class Simulator:
    """A simulated iPod. It ends with close(), and with the process that started it.

    `folder` receives the link that a head unit opens, and the log. `faults` and `settings` are
    those of `ipodsim --help-faults` and `--help-personalities`. `library` is a JSON file or its
    content. `tracks` cuts or copies the music to this number.
    """

    def __init__(self, folder: pathlib.Path, *, personality: str = "classic",
                 faults: typing.Sequence[str] = (), library: typing.Any = None,
                 tracks: typing.Optional[int] = None, name: typing.Optional[str] = None,
                 settings: typing.Optional[typing.Mapping[str, typing.Any]] = None,
                 seed: int = 1, serial: bool = False) -> None:
        if isinstance(faults, str):
            raise TypeError("faults is a list of texts, such as [\"lost@04:0018\"]")
        program = find_ipodsim()
        self.folder = folder = folder.absolute()
        folder.mkdir(parents=True, exist_ok=True)
        self.link = folder / "ipod"
        self.log = folder / "ipodsim.log"
        command = [str(program), "--link", "ipod", "--control", "control", "--interactive",
                   "--personality", personality, "--seed", str(seed)]
        for fault in faults:
            command += ["--fault", fault]
        for key, value in (settings or {}).items():
            command += ["--set", f"{key}={value}"]
        if library is not None:
            command += ["--library", str(self._library_file(library))]
        if tracks is not None:
            command += ["--tracks", str(tracks)]
        if name is not None:
            command += ["--name", name]
        if serial:
            command.append("--serial")
        self._serial = serial
        self._answers: typing.Optional[typing.TextIO] = None
        self._socket: typing.Optional[socket.socket] = None
        self._start(command)

    def _library_file(self, library: typing.Any) -> pathlib.Path:
        if isinstance(library, (str, os.PathLike)):
            return pathlib.Path(library).absolute()
        file = self.folder / "library.json"
        file.write_text(json.dumps(library), encoding="utf-8")
        return file

    def _start(self, command: typing.List[str]) -> None:
        with open(self.log, "wb") as log:
            # The end of the pipe, also when this process is killed, ends the program. In its
            # folder it has short names: the path of a socket has at most 107 bytes.
            self._process = subprocess.Popen(command, cwd=self.folder, stdin=subprocess.PIPE,
                                             stdout=log, stderr=subprocess.STDOUT)
        try:
            self._await_ready()
            self._connect()
        except BaseException:
            self.close()
            raise

    def _said(self) -> str:
        return self.log.read_text(encoding="utf-8", errors="replace").strip()

    def _await_ready(self) -> None:
        end = time.monotonic() + _START_LIMIT
        while "iPod ready on " not in self._said():
            if self._process.poll() is not None:
                raise SimulatorError(f"ipodsim did not start: {self._said()}")
            if time.monotonic() > end:
                raise SimulatorError(f"ipodsim was not ready in {_START_LIMIT:.0f} s: see {self.log}")
            time.sleep(0.01)

    def _connect(self) -> None:
        client = self._socket = socket.socket(socket.AF_UNIX)
        client.settimeout(_ANSWER_LIMIT)
        folder = os.open(self.folder, os.O_PATH)
        try:
            client.connect(f"/proc/self/fd/{folder}/control")
        finally:
            os.close(folder)
        self._answers = client.makefile("r", encoding="utf-8")

    def __enter__(self) -> Simulator:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def close(self) -> None:
        """Ends the program. It is killed when it does not end in time."""
        for open_end in (self._answers, self._socket):
            if open_end is not None:
                open_end.close()
        self._answers = self._socket = None
        self._process.terminate()
        try:
            self._process.communicate(timeout=_END_LIMIT)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.communicate()

    @property
    def exit_status(self) -> typing.Optional[int]:
        """The status with which ipodsim has ended, the negative signal that ended it, or None."""
        return self._process.poll()

    @property
    def devices(self) -> str:
        """The value of IPODCTL_DEVICES with which the library finds this iPod."""
        return f"IPD1:={'serial:' if self._serial else ''}{self.link}{'@57600' if self._serial else ''}"

    # ---------------------------------------------------------------- the iPod in the hand

    def do(self, verb: str, **keys: typing.Any) -> Status:
        """Sends a verb of `ipodsim --help-control` and returns the answer. Raises SimulatorError."""
        if self._socket is None or self._answers is None:
            raise SimulatorError("the simulated iPod is closed")
        try:
            self._socket.sendall((json.dumps({"do": verb, **keys}) + "\n").encode())
            line = self._answers.readline()
        except OSError as error:
            raise SimulatorError(f"ipodsim did not answer {verb} ({error}): see {self.log}") from None
        if not line:
            raise SimulatorError(f"ipodsim has closed its socket: see {self.log}")
        answer: Status = json.loads(line)
        if not answer["ok"]:
            raise SimulatorError(f"{verb}: {answer['error']['message']}")
        return answer

    def status(self) -> Status:
        """Returns what the iPod does: state, track, position_ms, plugged, extended, ..."""
        return self.do("status")

    def unplug(self) -> None:
        """Pulls the cable."""
        self.do("unplug")

    def plug(self, personality: typing.Optional[str] = None) -> None:
        """Plugs it in again, or another model."""
        self.do("plug", **({} if personality is None else {"personality": personality}))

    def press(self, button: str) -> None:
        """Presses a button: play, pause, play-pause, next, previous, menu or select."""
        self.do("press", button=button)

    def seek(self, position_ms: int) -> None:
        """Moves within the track."""
        self.do("seek", position_ms=position_ms)

    def add_fault(self, fault: str) -> None:
        """Adds a fault, as `ipodsim --fault` does."""
        self.do("fault", fault=fault)

    def clear_faults(self) -> None:
        """Removes all faults."""
        self.do("fault", clear=True)

    def wait_until(self, *, timeout: float = 5.0, **conditions: typing.Any) -> Status:
        """Waits until all conditions are true at the same moment, and returns the status.

        The conditions are state, extended, accessory, plugged, title and position_ms. Raises
        SimulatorError after the timeout, which is at most 60 seconds; give it in seconds.
        """
        if self._socket is not None:
            self._socket.settimeout(timeout + _ANSWER_LIMIT)
        try:
            return self.do("wait-until", timeout_ms=round(timeout * 1000), **conditions)
        finally:
            if self._socket is not None:
                self._socket.settimeout(_ANSWER_LIMIT)
