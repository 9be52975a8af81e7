#!/usr/bin/env python3
"""Adds up the results in a folder and prints them, ending with "N passed, N failed".

The folder contains CTest's JUnit reports (*.xml); for GoogleTest programs that are a single
test for CTest, their reports as REPORT/TEST.xml; and, for steps without a test runner,
steps.tsv, with "passed" or "failed", a tab and a name on each line.
Exits with 1 if anything failed or nothing was run.
"""
import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path


def program_cases(report, label):
    """Yields (verdict, name, reason) for every test of one GoogleTest program."""
    for case in ElementTree.parse(report).getroot().iter("testcase"):
        name = f"{label} {case.get('classname')}.{case.get('name')}"
        failure = case.find("failure")
        if failure is not None:
            yield "failed", name, failure.get("message", "").split("\n")[0]
        elif case.get("result") == "skipped":
            yield "skipped", name, ""
        elif case.get("status") == "run":
            yield "passed", name, ""


def cases(folder):
    """Yields (verdict, name, reason) for everything that was run."""
    for report in sorted(folder.glob("*.xml")):
        for case in ElementTree.parse(report).getroot().iter("testcase"):
            name = f"{report.stem}: {case.get('name')}"
            program = folder / report.stem / f"{case.get('name')}.xml"
            if program.exists():
                told = list(program_cases(program, name))
                yield from told
                # If the program passed, or its own tests failed, its report says everything.
                failed = any(verdict == "failed" for verdict, _, _ in told)
                if told and (failed or case.get("status") == "run"):
                    continue
            skipped = case.find("skipped")
            if case.get("status") == "run":
                yield "passed", name, ""
            elif skipped is not None and "SKIP_" in skipped.get("message", ""):
                yield "skipped", name, ""
            else:
                # A test that could not even be started has failed.
                said = skipped if skipped is not None else case.find("failure")
                yield "failed", name, said.get("message", "") if said is not None else ""
    steps = folder / "steps.tsv"
    if steps.exists():
        for line in steps.read_text(encoding="utf-8").splitlines():
            verdict, name = line.split("\t", 1)
            yield verdict, name, ""


def main():
    count = {"passed": 0, "skipped": 0, "failed": 0}
    remarks = []
    for verdict, name, reason in cases(Path(sys.argv[1])):
        count[verdict] += 1
        if verdict != "passed":
            remarks.append(f"{verdict.upper()} {name}{' (' + reason + ')' if reason else ''}")
    if not sum(count.values()):
        count["failed"] = 1
        remarks.append("FAILED nothing was run")
    print("\n".join(["", *remarks]))
    skipped = f", {count['skipped']} skipped" if count["skipped"] else ""
    print(f"{count['passed']} passed, {count['failed']} failed{skipped}")
    return 1 if count["failed"] else 0


if __name__ == "__main__":
    sys.exit(main())
