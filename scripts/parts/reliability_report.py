"""Writes the results of scripts/endurance to docs/reliability-tables.md, their totals to reliability.md."""

import json
import re
from collections import defaultdict

from .ctest_rings import plain
from .export_lists import ROOT, promised_ordinals

PAGE = ROOT / "docs/reliability.md"
TABLES = ROOT / "docs/reliability-tables.md"
BOUND, LONGEST = "bound_ms_", "longest_us_"


def table(head, rows):
    lines = [head, ["---:" if title.endswith(":") else "---" for title in head], *rows]
    lines[0] = [title.rstrip(":") for title in head]
    return "\n".join("| " + " | ".join(str(cell) for cell in line) + " |" for line in lines)


def grouped(number):
    return f"{number:,}"


def words(name):
    """Returns "AllScripts/ByteSweep.SpoilsEveryByte/2" as "byte sweep: spoils every byte"."""
    parts = [part for part in name.split("/") if "." in part]
    suite, _, test = (parts[0] if parts else name).partition(".")
    spaced = [re.sub(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", " ", each) for each in (suite, test)]
    return ": ".join(text if text.isupper() else text.lower() for text in spaced)


def duration(seconds):
    return f"{seconds / 3600:.1f} h" if seconds >= 5400 else f"{seconds / 60:.0f} min" if seconds >= 90 \
        else f"{seconds:.1f} s"


def ran(record):
    build = f"`{record['preset']}` build, " if "preset" in record else ""
    stopped = ", stopped before its end" if record.get("unfinished") else ""
    return f"{build}commit {record['commit']}, {record['date']}, {duration(record['seconds'])}{stopped}."


def by_test(records):
    """Returns cases, strikes, seconds and failures of the tests that count cases, one row for each body."""
    rows = defaultdict(lambda: [0, 0, 0.0, 0])
    for record in records:
        for test in record["tests"]:
            row = rows[words(test["name"])]
            row[0] += test["numbers"].get("cases", 0)
            row[1] += test["numbers"].get("struck", 0)
            row[2] += test["seconds"]
            row[3] += test["failed"]
    return {name: row for name, row in sorted(rows.items()) if row[0] or row[3]}


def case_table(records):
    rows = by_test(records)
    total = [sum(row[column] for row in rows.values()) for column in range(4)]
    lines = [[name, grouped(row[0]), grouped(row[1]), duration(row[2]), row[3]] for name, row in rows.items()]
    lines.append(["**all**", *(f"**{cell}**" for cell in
                               (grouped(total[0]), grouped(total[1]), duration(total[2]), total[3]))])
    return table(["what", "cases:", "the fault struck:", "time:", "failures:"], lines)


def sweeps(records):
    used = [records[name] for name in ("sweeps", "schedules", "races") if name in records]
    return "\n".join([*(f"{name}: {ran(records[name])}<br>" for name in ("sweeps", "schedules", "races")
                        if name in records), "", case_table(used)])


def bounds(records):
    """Returns the longest call of each export on the deterministic platform, and its bound."""
    limits, longest = {}, defaultdict(int)
    for name in ("sweeps", "schedules", "months"):
        for test in records.get(name, {}).get("tests", []):
            for key, value in test["numbers"].items():
                if key.startswith(BOUND):
                    limits[key[len(BOUND):]] = value
                elif key.startswith(LONGEST):
                    longest[key[len(LONGEST):]] = max(longest[key[len(LONGEST):]], value)
    rows = [[f"`{name}`", grouped(limits[name]), f"{longest[name] / 1000:,.1f}"] for name in promised_ordinals()]
    return table(["export", "bound, ms:", "longest seen, ms:"], rows)


def counted(numbers):
    """Returns the numbers of one test as text; those of its start and its end are joined."""
    texts = []
    for key, value in numbers.items():
        name, _, when = key.rpartition("_")
        if when == "end" and f"{name}_start" in numbers:
            continue
        if when == "start" and f"{name}_end" in numbers:
            texts.append(f"{name.replace('_', ' ')} {grouped(value)} → {grouped(numbers[f'{name}_end'])}")
        else:
            texts.append(f"{grouped(value)} {key.replace('_', ' ')}")
    return ", ".join(texts)


def life(records):
    rows = []
    for name in ("cycles", "months", "serve"):
        for test in records.get(name, {}).get("tests", []):
            numbers = {key: value for key, value in test["numbers"].items() if not key.startswith((BOUND, LONGEST))}
            if numbers or test["failed"]:
                rows.append([words(test["name"]), counted(numbers), duration(test["seconds"]), int(test["failed"])])
    head = [f"{name}: {ran(records[name])}<br>" for name in ("cycles", "months", "serve") if name in records]
    return "\n".join([*head, "", table(["what", "counted (at the start → at the end)", "time:", "failures:"], rows)])


def fuzzers(records):
    record = records["fuzz"]
    rows = [[f"`{run['target']}`", grouped(run["runs"]), duration(run["seconds"]), grouped(run["edges"]),
             len(run["findings"])] for run in record["numbers"]["targets"]]
    return "\n".join([ran(record), "", table(["fuzzer", "runs:", "time:", "edges reached:", "findings:"], rows)])


def mutants(records):
    record = records["mutants"]
    rows = [[mutant["name"].replace("_", " "), mutant["layer"], mutant["ring"] or "-",
             plain(mutant["found_by"] or mutant["error"] or "**nothing**")] for mutant in record["numbers"]]
    return "\n".join([ran(record), "", table(["mutant", "in", "ring", "found by"], rows)])


def coverage(records):
    record = records["coverage"]
    total = record["numbers"]["total"]
    share = [[what, grouped(total[f"{what}_run"]), grouped(total[what]), f"{100 * total[f'{what}_run'] / total[what]:.2f} %"]
             for what in ("lines", "branches")]
    return "\n".join([ran(record), "", table(["of src/", "covered:", "of:", "share:"], share)])


# Each needs the records of these steps.
SECTIONS = {sweeps: ("sweeps", "schedules", "races"), bounds: ("sweeps",), life: ("cycles", "months", "serve"), fuzzers: ("fuzz",),
            mutants: ("mutants",), coverage: ("coverage",)}


def rows_of(text, name):
    """Returns the cells of the rows of a section's table, without the bold ones and the head."""
    section = text.partition(mark_of(name))[2].partition(END)[0]
    rows = [[cell.strip() for cell in line.strip("|").split("|")]
            for line in section.splitlines() if line.startswith("|")]
    return [row for row in rows[2:] if not row[0].startswith("**")]


def sum_of(cells, words=""):
    """Returns the sum of the numbers in the cells; with `words`, of those before the words."""
    found = (re.search(rf"([\d,]+){words}(?!\w)", cell) for cell in cells)
    return sum(int(match[1].replace(",", "")) for match in found if match)


def totals(tables):
    """Returns the table of totals, counted in the other tables."""
    cases, limits, lives, fuzzed, changes, shares = (
        rows_of(tables, section.__name__) for section in SECTIONS)
    counts = [row[1] for row in lives]
    late = sum(float(row[2].replace(",", "")) > sum_of([row[1]]) for row in limits)
    lines = [
        ["cases of sweeps, orders and races", grouped(sum_of(row[1] for row in cases)),
         f"{sum_of(row[4] for row in cases)} failed"],
        ["exports", len(limits), f"{late} took longer than their bound"],
        ["connections and loads on the real platform", grouped(sum_of(counts, " cycles")),
         f"{sum_of(row[3] for row in lives)} left anything open"],
        ["simulated days of a head unit", grouped(sum_of(counts, " virtual days")),
         f"{grouped(sum_of(counts, ' calls'))} calls, {grouped(sum_of(counts, ' drives'))} drives"],
        ["inputs of the fuzzers", grouped(sum_of(row[1] for row in fuzzed)),
         f"{sum_of(row[4] for row in fuzzed)} findings"],
        ["mutants", len(changes), f"{sum('**nothing**' not in row for row in changes)} found by a test"],
        *([f"{what} of `src/`", of, f"{share} covered"] for what, _, of, share in shares)]
    return table(["what", "tried:", "result"], lines)


END = "<!-- end -->"


def mark_of(name):
    return f"<!-- {name}: written by scripts/endurance -->"


def fill(text, name, content):
    """Returns `text` with the section between its two marks."""
    before, mark, rest = text.partition(mark_of(name))
    if not mark or END not in rest:
        raise SystemExit(f"reliability_report: no marks for the section {name}; restore them in docs/")
    return before + mark + "\n" + content + "\n" + rest[rest.index(END):]


def write(folder):
    """Writes both documents. Sections whose steps have never run stay as they are."""
    records = {path.stem: json.loads(path.read_text()) for path in folder.glob("*.json")}
    text = TABLES.read_text()
    for section, needed in SECTIONS.items():
        if any(name in records for name in needed):
            text = fill(text, section.__name__, section(records))
    TABLES.write_text(text)
    PAGE.write_text(fill(PAGE.read_text(), "totals", totals(text)))
    print(f"Wrote {TABLES.relative_to(ROOT)} and {PAGE.relative_to(ROOT)}.")
