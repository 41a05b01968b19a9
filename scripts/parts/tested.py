"""build/tested: which tree passed every step of scripts/test, when it was as it is in git."""

import json
import subprocess
import sys

from .export_lists import ROOT

RECORD = ROOT / "build/tested"
COMPILERS = ("g++", "clang++-14", "arm-none-eabi-g++", "arm-linux-gnueabi-g++",
             "x86_64-w64-mingw32-g++-posix", "i686-w64-mingw32-g++-posix")


def git(*arguments):
    return subprocess.run(["git", *arguments], cwd=ROOT, check=True, capture_output=True, text=True).stdout.strip()


def tree():
    """The hash of the committed tree; None when files differ from it."""
    return None if git("status", "--porcelain") else git("rev-parse", "HEAD^{tree}")


def first_line(compiler):
    done = subprocess.run([compiler, "--version"], check=True, capture_output=True, text=True)
    return done.stdout.splitlines()[0]


def forget():
    RECORD.unlink(missing_ok=True)


def record(begun_with, steps):
    """Writes the record unless files differ from git, or changed meanwhile. Returns whether it did."""
    if begun_with is None or tree() != begun_with:
        return False
    compilers = {name: first_line(name) for name in COMPILERS}
    RECORD.write_text(json.dumps({"tree": begun_with, "steps": steps, "compilers": compilers}, indent=1) + "\n")
    return True


def require():
    """Returns the record of this tree. Ends the program when there is none."""
    now = tree()
    if now is None:
        sys.exit("release: there are changes that are not committed; commit them, run scripts/test, and try again")
    tested = json.loads(RECORD.read_text()) if RECORD.exists() else {}
    if tested.get("tree") != now:
        sys.exit("release: scripts/test has not passed for this commit; run it without arguments, and try again")
    return tested
