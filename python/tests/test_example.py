"""The example, as a program."""

import pathlib
import subprocess
import sys

EXAMPLE = pathlib.Path(__file__).resolve().parents[1] / "examples/now_playing.py"


def run_example(*arguments):
    return subprocess.run([sys.executable, "-B", EXAMPLE, *arguments], capture_output=True,
                          text=True, timeout=60, check=False)


def test_the_example_shows_what_plays(ipod):
    run = run_example("1")
    assert run.returncode == 0 and "Traceback" not in run.stderr
    assert "Demo iPod: 83 artists\n" in run.stdout
    assert "Aalto Varispeed: " in run.stdout and ", playing at 0:0" in run.stdout
    assert ipod.wait_until(extended=False)["state"] == "paused"


def test_the_example_says_what_to_do_without_an_ipod(ipod):
    ipod.unplug()
    run = run_example("1")
    assert run.returncode == 1 and "Traceback" not in run.stderr
    assert "Check the cable" in run.stdout
