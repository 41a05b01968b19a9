"""The fixtures for pytest. It finds them by itself once the package is installed."""

from __future__ import annotations

import inspect
import pathlib
import sys
import typing

import pytest

from .simulator import Simulator, SimulatorError

_MARKER = "ipod"
_OPTIONS = [name for name, parameter in inspect.signature(Simulator.__init__).parameters.items()
            if parameter.kind is inspect.Parameter.KEYWORD_ONLY]


def pytest_configure(config: pytest.Config) -> None:
    """Explains the marker."""
    config.addinivalue_line(
        "markers", f"{_MARKER}({', '.join(f'{name}=...' for name in _OPTIONS)}): options of the "
        "simulated iPod that the fixture ipod starts")


def _options(request: pytest.FixtureRequest) -> typing.Dict[str, typing.Any]:
    """Returns the options of all markers. That of the test replaces that of its class or module."""
    options: typing.Dict[str, typing.Any] = {}
    for marker in request.node.iter_markers(_MARKER):
        unknown = [name for name in marker.kwargs if name not in _OPTIONS]
        if marker.args or unknown:
            wrong = unknown or ["an option without a name"]
            pytest.fail(f"the marker ipod does not know {', '.join(map(str, wrong))}; "
                        f"its options are {', '.join(_OPTIONS)}", pytrace=False)
        options = {**marker.kwargs, **options}
    return options


def _leave_the_ipod() -> None:
    """Disconnects the library if the test has left it connected in this process."""
    library = sys.modules.get("ipodctl.raw")
    if library is not None:
        library.IpodDisconnect()


@pytest.fixture
def ipod_simulator(request: pytest.FixtureRequest, tmp_path: pathlib.Path,
                   monkeypatch: pytest.MonkeyPatch) -> typing.Iterator[Simulator]:
    """A simulated iPod, to which the library and started programs connect during the test."""
    try:
        simulator = Simulator(tmp_path / "ipodsim", **_options(request))
    except (SimulatorError, TypeError) as error:
        pytest.fail(str(error), pytrace=False)
    try:
        monkeypatch.setenv("IPODCTL_DEVICES", simulator.devices)
        yield simulator
    finally:
        _leave_the_ipod()
        status = simulator.exit_status
        simulator.close()
    if status is not None:
        pytest.fail(f"ipodsim ended during the test with the status {status}, so the test says "
                    f"nothing about the head unit: see {simulator.log}", pytrace=False)


@pytest.fixture
def ipod(ipod_simulator: Simulator) -> Simulator:
    """The same as ipod_simulator."""
    return ipod_simulator
