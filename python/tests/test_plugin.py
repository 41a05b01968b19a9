"""The plugin in the tests of another project."""

import os
import pathlib
import signal
import subprocess
import sys
import time

import pytest
from pytest_ipodctl import Simulator, SimulatorError, simulator


def wait_for(condition, limit=20.0):
    end = time.monotonic() + limit
    while not condition():
        assert time.monotonic() < end
        time.sleep(0.01)


def is_running(process):
    """A zombie, which nobody has waited for yet, does not run."""
    try:
        status = pathlib.Path(f"/proc/{process}/stat").read_text(encoding="ascii")
    except FileNotFoundError:
        return False
    return status.rpartition(")")[2].split()[0] != "Z"


def test_a_missing_ipodsim_fails_with_what_to_install(other_project, monkeypatch):
    monkeypatch.setattr(simulator.importlib.util, "find_spec", lambda name: None)
    monkeypatch.setenv("IPODCTL_IPODSIM", "/nowhere/ipodsim")
    other_project.makepyfile("def test_it(ipod): pass")
    result = other_project.runpytest_inprocess()
    result.assert_outcomes(errors=1)
    result.stdout.fnmatch_lines(["ipodsim is not installed: install the wheel of ipodctl*"])


@pytest.mark.parametrize("marker, message", [
    ("traks=3", "the marker ipod does not know traks; its options are personality, *"),
    ("3", "the marker ipod does not know an option without a name; *"),
    ("faults='lost@04:0018'", "faults is a list of texts*"),
    ("faults=['nothing']", "*ipodsim did not start: ipodsim: *nothing*"),
    ("personality='zune'", "*ipodsim did not start: ipodsim: *zune*"),
])
def test_a_wrong_marker_fails_with_one_line(other_project, marker, message):
    other_project.makepyfile(f"import pytest\n@pytest.mark.ipod({marker})\ndef test_it(ipod): pass")
    result = other_project.runpytest_inprocess()
    result.assert_outcomes(errors=1)
    result.stdout.fnmatch_lines([message])


def test_the_nearest_marker_wins(other_project):
    other_project.makepyfile("""
        import pytest
        pytestmark = pytest.mark.ipod(personality="mini", name="Far")

        @pytest.mark.ipod(name="Near")
        def test_it(ipod):
            assert (ipod.status()["name"], ipod.status()["personality"]) == ("Near", "mini")
    """)
    other_project.runpytest_inprocess().assert_outcomes(passed=1)


def test_a_failed_test_leaves_no_process_and_no_connection(other_project):
    other_project.makepyfile("""
        import os, pathlib, ipodctl

        def test_fails(ipod, request):
            pathlib.Path(request.config.rootpath, "pid").write_text(str(ipod._process.pid))
            ipodctl.Ipod(pause=0.05).connect()
            assert False

        def test_begins_without_a_connection():
            assert not ipodctl.Ipod().is_connected and "IPODCTL_DEVICES" not in os.environ
    """)
    other_project.runpytest_inprocess().assert_outcomes(failed=1, passed=1)
    assert not is_running(int((other_project.path / "pid").read_text()))


def test_a_killed_test_run_leaves_no_process(tmp_path):
    code = ("import pathlib, sys, time\nfrom pytest_ipodctl import Simulator\n"
            "running = Simulator(pathlib.Path(sys.argv[1]))\n"
            "print(running._process.pid, flush=True)\ntime.sleep(60)")
    with subprocess.Popen([sys.executable, "-B", "-c", code, str(tmp_path)],
                          stdout=subprocess.PIPE, text=True,
                          env={**os.environ, "PYTHONPATH": os.pathsep.join(sys.path)}) as run:
        ipodsim = int(run.stdout.readline())
        assert is_running(ipodsim)
        run.send_signal(signal.SIGKILL)
    wait_for(lambda: not is_running(ipodsim))


def test_a_wait_ends(ipod):
    started = time.monotonic()
    with pytest.raises(SimulatorError, match="wait-until"):
        ipod.wait_until(state="playing", timeout=0.2)
    assert 0.2 <= time.monotonic() - started < 10
    assert ipod.status()["state"] == "stopped"


def test_what_the_ipod_refuses_is_an_error_with_its_reason(ipod):
    with pytest.raises(SimulatorError, match="jump"):
        ipod.press("jump")
    with pytest.raises(SimulatorError, match="needs a track|Nothing plays|nothing plays"):
        ipod.seek(1000)


def test_faults_can_be_added_and_removed(ipod):
    ipod.add_fault("lost@04:0018")
    assert ipod.status()["faults"] == ["lost@04:0018"]
    ipod.clear_faults()
    assert ipod.status()["faults"] == []


def test_a_long_path_is_no_obstacle(tmp_path):
    with Simulator(tmp_path / ("long" * 40)) as running:
        assert running.status()["plugged"] and running.link.is_symlink()
    assert not running.link.is_symlink()
    with pytest.raises(SimulatorError, match="closed"):
        running.status()


def test_an_ended_ipodsim_is_reported(other_project):
    other_project.makepyfile("""
        import pytest
        from pytest_ipodctl import SimulatorError

        def test_it(ipod):
            ipod._process.kill()
            ipod._process.wait(timeout=10)
            with pytest.raises(SimulatorError, match="has closed its socket|did not answer"):
                ipod.status()
    """)
    result = other_project.runpytest_inprocess()
    result.assert_outcomes(passed=1, errors=1)
    result.stdout.fnmatch_lines(["ipodsim ended during the test with the status -9, *"])
