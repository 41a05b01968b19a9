"""Runs the tests of a build one by one, and collects the numbers that they record."""

import json
import os
import re
import subprocess
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from .export_lists import ROOT

# The keys that GoogleTest writes for every test; the test recorded all others.
USUAL_KEYS = {"name", "file", "line", "value_param", "type_param", "status", "result", "timestamp", "time",
              "classname", "failures", "skipped"}


def build(preset):
    subprocess.run(["cmake", "--preset", preset], cwd=ROOT, check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", "--preset", preset], cwd=ROOT, check=True)


def tests_of(preset, label, names):
    """Returns the commands of the tests with a label whose names match a regular expression."""
    listing = subprocess.run(
        ["ctest", "--test-dir", f"build/{preset}", "--show-only=json-v1", "-L", f"^{label}$"], cwd=ROOT,
        check=True, capture_output=True, text=True).stdout
    return [test["command"] for test in json.loads(listing)["tests"] if re.search(names, test["name"])]


def recorded(document):
    """Yields the name, seconds and recorded numbers of each test in GoogleTest's report."""
    for suite in document["testsuites"]:
        for test in suite["testsuite"]:
            if test["status"] != "RUN":
                continue
            numbers = {key: int(value) for key, value in test.items() if key not in USUAL_KEYS}
            yield {"name": f"{test['classname']}.{test['name']}", "seconds": float(test["time"].rstrip("s")),
                   "failed": bool(test.get("failures")), "numbers": numbers}


def run_one(command, environment, limit):
    """Returns the results of one command. A test that crashes or does not end has failed."""
    with tempfile.TemporaryDirectory() as folder:
        report = Path(folder) / "report.json"
        started = time.monotonic()
        try:
            done = subprocess.run([*command, f"--gtest_output=json:{report}"], cwd=folder, text=True,
                                  errors="replace", env={**os.environ, **environment}, timeout=limit,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
            output, status = done.stdout, done.returncode
        except subprocess.TimeoutExpired:
            output, status = f"did not end in {limit} s", 1
        results = list(recorded(json.loads(report.read_text()))) if report.exists() else []
    if status != 0 and not any(result["failed"] for result in results):
        name = re.sub(r".*--gtest_filter=(\S+).*", r"\1", " ".join(command))
        results.append({"name": name, "seconds": time.monotonic() - started, "failed": True, "numbers": {}})
    if status != 0:
        print(output[-4000:], flush=True)
    return results


def run_tests(preset, label, environment, names=".", limit=7200, jobs=os.cpu_count()):
    """Runs the tests of a label with the environment. Prints a line for each test and yields its results."""
    with ThreadPoolExecutor(jobs) as pool:
        runs = [pool.submit(run_one, command, environment, limit) for command in tests_of(preset, label, names)]
        for run in runs:
            for result in run.result():
                numbers = ", ".join(f"{count} {name}" for name, count in result["numbers"].items()
                                    if name in ("cases", "struck"))
                print(f"  {'FAILED' if result['failed'] else 'passed'} {result['name']}"
                      f" {numbers} ({result['seconds']:.1f} s)", flush=True)
                yield result
