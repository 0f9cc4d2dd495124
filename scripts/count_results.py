#!/usr/bin/env python3
"""What the tests of a build came to, from the reports that CTest and the programs of GoogleTest left in its folder.

CTest's own last line calls a skipped test passed and counts a program of GoogleTest as one test.
"""
import pathlib
import sys
import xml.etree.ElementTree as ElementTree


def read_results(folder):
    """The tests as (name, result, seconds); result is "passed", "failed" or "skipped"."""
    for case in cases_of(folder / "test-results.xml"):
        name = case.get("name")
        report = folder / "test-results" / (name.removeprefix("whole.") + ".xml")
        if not name.startswith("whole."):
            yield name, result_in_ctest(case), float(case.get("time"))
        elif not report.exists():
            # It ended before it could write. That may hide tests, and it is no success whatever CTest says.
            yield name, "failed", float(case.get("time"))
        else:
            yield from read_program(report, case)


def read_program(report, case):
    failed = False
    for test in cases_of(report):
        result = result_in_program(test)
        failed = failed or result == "failed"
        # A test with a clock of its own can seem to take longer than its program did.
        seconds = min(float(test.get("time")), float(case.get("time")))
        yield f"{test.get('classname')}.{test.get('name')}", result, seconds
    # A program can fail outside of its tests, for example at a leak that a sanitizer finds at the end.
    if result_in_ctest(case) == "failed" and not failed:
        yield case.get("name"), "failed", 0.0


def cases_of(report):
    """The tests of a report. What is no report stops the check, since it may hide failures."""
    # GoogleTest writes the bytes of a test's parameters as they are, and these need be no text.
    return ElementTree.fromstring(report.read_bytes().decode("utf-8", "replace")).iter("testcase")


def result_in_ctest(case):
    if case.get("status") in ("notrun", "disabled") or case.find("skipped") is not None:
        return "skipped"
    return "passed" if case.get("status") == "run" else "failed"


def result_in_program(test):
    if test.find("failure") is not None:
        return "failed"
    return "passed" if test.get("status") == "run" and test.get("result") == "completed" else "skipped"


def main():
    what, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    results = list(read_results(folder)) if (folder / "test-results.xml").exists() else []
    if what == "count" and results:
        number = {kind: sum(result == kind for _, result, _ in results) for kind in ("passed", "failed", "skipped")}
        print(f"{number['passed']} passed, {number['failed']} failed, {number['skipped']} skipped")
    if what == "slowest" and results:
        print("The slowest tests:")
        for name, _, seconds in sorted(results, key=lambda each: -each[2])[:10]:
            print(f"{seconds:8.1f} s  {name}")


main()
