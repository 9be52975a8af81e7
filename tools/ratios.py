#!/usr/bin/env python3
"""Prints the results of a benchmark run as ratios: below 1, our figure is the smaller one.

    tools/ratios.py NOW                 each aim of benchmarks/aims.json and its result
    tools/ratios.py NOW --before OLD    the effect of a change on each of our figures

NOW and OLD are folders of Google Benchmark reports (*.json), where "Parse_core/100000" is
ours and "Parse_inih/100000" a peer's figure for the same task. A figure is the median of all
its repetitions. The picture is written to NOW/ratios.svg.
"""
import argparse
import json
import re
import statistics
from collections import defaultdict
from pathlib import Path
from typing import NamedTuple
from xml.sax.saxutils import escape

AIMS = Path(__file__).resolve().parents[1] / "benchmarks" / "aims.json"
SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1}
MEASURES = ("bytes_per_second", "processor", "memory", "memory_in_files")


class Row(NamedTuple):
    """One bar. A row without an aim shows a change and is not judged."""
    what: str
    ours: float
    peer: float
    peer_name: str
    ratio: float
    aim: float
    form: str  # the measure, by which its figures are formatted


def figures(folder):
    """{(benchmark, measure): median}; times in seconds, wall time if the benchmark asks for it."""
    values = defaultdict(list)
    for report in sorted(folder.glob("*.json")):
        text = report.read_text("utf-8")  # empty if a filter excludes the whole program
        for row in json.loads(text)["benchmarks"] if text else ():
            if row.get("run_type") != "iteration" or "error_occurred" in row:
                continue
            name = re.sub(r"/(iterations:\d+|repeats:\d+|real_time|manual_time)", "", row["name"])
            wall = re.search("/(real|manual)_time", row["name"])
            time = row["real_time" if wall else "cpu_time"] * SECONDS[row["time_unit"]]
            values[name, "time"].append(time)
            for measure in MEASURES:
                if measure in row:
                    values[name, measure].append(row[measure])
    return {key: statistics.median(found) for key, found in values.items()}


def written(value, measure):
    if measure in ("time", "processor"):
        for unit, size in (("ms", 1e-3), ("µs", 1e-6)):
            if value >= size:
                return f"{value / size:.3g} {unit}"
        return f"{value / 1e-9:.3g} ns"
    if measure == "memory":
        return f"{value / 2**20:.1f} MiB"
    if measure == "bytes_per_second":
        return f"{value / 1e6:.0f} MB/s"
    return f"{value:.2f}"


def aims(now):
    """The rows whose figures were all measured, each with its best peer."""
    for aim in json.loads(AIMS.read_text("utf-8")):
        measure = aim.get("of", "time")
        ours = now.get((aim["ours"], measure))
        peers = {peer: peer if isinstance(peer, (int, float)) else now.get((peer, measure))
                 for peer in aim["peers"]}
        if ours is None or None in peers.values():
            continue
        # Of rates the higher one is better, and the ratio is that of the times.
        rate = measure == "bytes_per_second"
        name, peer = (max if rate else min)(peers.items(), key=lambda entry: entry[1])
        yield Row(aim["what"], ours, peer, str(name).partition("_")[2].partition("/")[0],
                  ours / peer, aim["aim"], measure)


def changes(now, before):
    for (name, measure), value in now.items():
        if "_core" in name and measure != "bytes_per_second" and before.get((name, measure)):
            old = before[name, measure]
            what = name.replace("_core", "") + ("" if measure == "time" else f", {measure}")
            yield Row(what, value, old, "", value / old, 0, measure)


def print_aims(rows):
    print("\n| what | ours | best peer | ratio | aim | |\n|---|---|---|---|---|---|")
    for row in rows:
        verdict = "met" if row.ratio <= row.aim else "missed"
        peer = f"{row.peer_name} {written(row.peer, row.form)}".strip()
        print(f"| {row.what} | {written(row.ours, row.form)} | {peer} | {row.ratio:.2f} "
              f"| {row.aim} | {verdict} |")


def print_changes(rows):
    print("\n| what | before | now | ratio |\n|---|---|---|---|")
    for row in rows:
        print(f"| {row.what} | {written(row.peer, row.form)} | {written(row.ours, row.form)} "
              f"| {row.ratio:.2f} |")


LINE, LEFT, UNIT, LONGEST = 22, 520, 150, 2.2  # pixels, the last one in units


def bar(number, row):
    """One line of the picture; a bar that is too long is cut."""
    top = number * LINE
    colour = "#4c8c4a" if row.ratio <= (row.aim or 1) else "#c0504d"
    shapes = [f'<text x="{LEFT - 8}" y="{top + 15}" text-anchor="end">{escape(row.what)}</text>',
              f'<rect x="{LEFT}" y="{top + 3}" width="{min(row.ratio, LONGEST) * UNIT:.1f}" '
              f'height="{LINE - 8}" fill="{colour}"/>']
    if row.aim:
        aim = LEFT + min(row.aim, LONGEST) * UNIT
        shapes.append(f'<line x1="{aim:.1f}" x2="{aim:.1f}" y1="{top}" y2="{top + LINE - 2}" '
                      'stroke="#222" stroke-width="2"/>')
    end = LEFT + min(max(row.ratio, row.aim), LONGEST) * UNIT
    shapes.append(f'<text x="{end + 6:.1f}" y="{top + 15}">{row.ratio:.2f}</text>')
    return "".join(shapes)


def picture(rows):
    width, height = LEFT + LONGEST * UNIT + 50, len(rows) * LINE + 4
    one = LEFT + UNIT
    bars = "\n".join(bar(number, row) for number, row in enumerate(rows))
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width:.0f}" height="{height}" '
            f'font-family="sans-serif" font-size="13">\n'
            f'<rect width="100%" height="100%" fill="white"/>\n'
            f'<line x1="{one}" x2="{one}" y1="0" y2="{height}" stroke="#bbb"/>\n{bars}\n</svg>\n')


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("now", type=Path)
    parser.add_argument("--before", type=Path)
    arguments = parser.parse_args()
    now = figures(arguments.now)
    if arguments.before:
        rows = list(changes(now, figures(arguments.before)))
        print_changes(rows)
    else:
        rows = list(aims(now))
        print_aims(rows)
    target = arguments.now / "ratios.svg"
    target.write_text(picture(rows), "utf-8")
    print(f"\n{target}: the same as bars")


if __name__ == "__main__":
    main()
