#!/usr/bin/env python3
"""Prints each figure of ours beside its peers', as a ratio: below 1 we are quicker.

Reads the Google Benchmark reports (*.json) in a folder. There "Parse_core/100000" is
ours and "Parse_inih/100000" a peer's of the same thing; medians count where they are.
"""
import json
import re
import sys
from collections import defaultdict
from pathlib import Path

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def figures(report):
    """{name: nanoseconds} of one report; wall time where the benchmark asked for it."""
    single, medians = {}, {}
    for row in json.loads(report.read_text("utf-8"))["benchmarks"]:
        if "error_occurred" in row:
            continue
        name = row.get("run_name", row["name"])
        time = row["real_time" if "/real_time" in name else "cpu_time"]
        kind = medians if row.get("aggregate_name") == "median" else single
        if kind is medians or row.get("run_type") == "iteration":
            kind[name] = time * NANOSECONDS[row["time_unit"]]
    return {**single, **medians}


def main():
    print(f"\n{'':32}{'ours':>14}  {'peer':24}{'':>14}{'ratio':>8}")
    for report in sorted(Path(sys.argv[1]).glob("*.json")):
        things = defaultdict(dict)
        for name, time in figures(report).items():
            thing, who, size = re.fullmatch(r"([^_/]+)_([^/]+)(/.*)?", name).groups()
            things[thing + (size or "").replace("/real_time", "")][who] = time
        for thing, times in things.items():
            ours = times.pop("core", None)
            for peer, time in times.items() if ours else ():
                print(f"{thing:32}{ours:11.1f} ns  {peer:24}{time:11.1f} ns{ours / time:8.2f}")


if __name__ == "__main__":
    sys.exit(main())
