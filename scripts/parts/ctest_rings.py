"""Runs the tests of a build ring by ring and says which one fails first."""

import json
import pathlib
import subprocess
import tempfile
import xml.etree.ElementTree

# The labels of the tests, and how many of them run at once for each job: those that have real ports
# and semaphores mostly wait. The cheap ones come first.
RINGS = {"unit": 2, "device": 5, "virtual": 2, "race": 3, "session": 6, "endurance": 1}
# Their programs may load the library that they test.
LOADING = ("race", "session", "endurance")
AGAIN = 3
ENDS = {"Timeout": "does not end", "SEGFAULT": "crashes", "Subprocess aborted": "aborts"}


class Red:
    """A test that has failed, and how."""

    def __init__(self, name, how):
        self.name = name
        self.how = ENDS.get(how, "")

    def __str__(self):
        return f"{self.name} ({self.how})" if self.how else self.name


class Suite:
    """The tests of a build folder that are built."""

    def __init__(self, folder, jobs, programs=()):
        """`programs` are those whose tests count; without any all do."""
        self.folder = folder
        self.jobs = jobs
        self.programs = programs
        shown = subprocess.run(["ctest", "--test-dir", folder, "--show-only=json-v1"],
                               capture_output=True, check=True)
        self.tests = json.loads(shown.stdout)["tests"]

    def numbers(self, ring, newer_than):
        """The tests of a ring, without those whose program was linked before a time: they cannot
        have changed."""
        for number, test in enumerate(self.tests, 1):
            if ring_of(test) == ring and self.is_of_a_program(test):
                if ring in LOADING or may_have_changed(test, self.folder, newer_than):
                    yield number

    def is_of_a_program(self, test):
        return not self.programs or pathlib.Path(test["command"][0]).name in self.programs

    def first_red(self, ring, newer_than):
        """The first test of a ring that is red again when it runs alone; None when there is none.
        On a busy machine a test can be red once without a reason."""
        left = list(self.numbers(ring, newer_than))
        while red := self.run(left, self.jobs * RINGS[ring]):
            number = self.number_of(red)
            if any(self.run([number], 1) for _ in range(AGAIN)):
                return red
            left.remove(number)
        return None

    def number_of(self, red):
        names = [plain(test["name"]) for test in self.tests]
        return names.index(plain(red.name)) + 1

    def run(self, numbers, at_once):
        """Runs tests until one is red."""
        chosen = ",".join(str(number) for number in numbers)
        if not chosen:
            return None
        with tempfile.NamedTemporaryFile(suffix=".xml") as report:
            subprocess.run(["ctest", "--test-dir", self.folder, "-I", f"0,0,0,{chosen}",
                            "--stop-on-failure", "-j", str(at_once), "--output-junit",
                            report.name], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                           check=False)
            return first_failure(xml.etree.ElementTree.parse(report.name))


def plain(name):
    """Without what CTest adds of the parameter: an address in it is another one in each build."""
    return name.partition("  # ")[0]


def ring_of(test):
    labels = next((each["value"] for each in test.get("properties", [])
                   if each["name"] == "LABELS"), [])
    return labels[0] if labels and "command" in test else None


def may_have_changed(test, folder, time):
    program = pathlib.Path(test["command"][0])
    if folder not in program.parents:
        return True
    return program.is_file() and program.stat().st_mtime >= time


def first_failure(report):
    for case in report.iter("testcase"):
        failure = case.find("failure")
        if failure is not None:
            return Red(case.get("name"), failure.get("message"))
    return None
