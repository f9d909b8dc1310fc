#!/usr/bin/env python3
"""Runs the benchmarks and puts their figures into the tables of docs/performance.md.

bench/tables.py [--print] [SECTION ...]: all sections, or strip, decimate, levels, sort, collapse, export, worst, growth.
Build first: scripts/build bench marrowfen_bench
"""

import json
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs/performance.md"
PROGRAM = ROOT / "build/bench/bench/marrowfen_bench"

# By section: which benchmarks, and the columns after the name: heading and counter; "time" is that of ours.
SECTIONS = {
    "strip": ("^strip", [("faces", "faces"), ("strips", "strips"), ("indices", "indices"), ("rival's", "peer_indices"),
                         ("ours, µs", "time"), ("x_plain", "x_plain"), ("x_peer", "x_peer")]),
    "decimate": ("^decimate[^F]", [("faces", "faces"), ("left", "left"), ("rival's", "peer_left"), ("ours, µs", "time"),
                                  ("x_plain", "x_plain"), ("x_peer", "x_peer")]),
    "levels": ("^decimateFour", [("faces", "faces"), ("ours, µs", "time"), ("x_deepest", "x_deepest")]),
    "sort": ("^sort", [("faces", "faces"), ("ours, µs", "time"), ("x_plain", "x_plain")]),
    "collapse": ("^(collapse|normals|encode)", [("vertices", "argument"), ("ours, µs", "time"), ("x_plain", "x_plain")]),
    "export": ("^(merge|export)", [("size", "argument"), ("ours, µs", "time"), ("x_plain", "x_plain")]),
    "worst": ("^worst", [("faces", "faces"), ("ours, ms", "time")]),
    "growth": ("^growth", [("faces", "faces"), ("ours, ms", "time"), ("exponent", "exponent")]),
}


def figure(value):
    if value is None:
        return ""
    if isinstance(value, str):
        return value
    return f"{value:,.0f}" if value >= 100 or value == int(value) else f"{value:.3g}"


def table(section):
    pattern, columns = SECTIONS[section]
    command = [PROGRAM, f"--benchmark_filter={pattern}", "--benchmark_format=json"]
    output = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    lines = ["| benchmark | " + " | ".join(heading for heading, _ in columns) + " |",
             "|---|" + "---:|" * len(columns)]
    for run in json.loads(output)["benchmarks"]:
        parts = run["name"].split("/")
        numbers = [p for p in parts if p.isdigit()]
        values = dict(run, time=run["real_time"], argument=" × ".join(f"{int(n):,}" for n in numbers))
        name = f"{parts[1]}, {parts[2]}" if section in ("worst", "growth") else parts[0]
        lines.append(f"| {name} | " + " | ".join(figure(values.get(counter)) for _, counter in columns) + " |")
    return "\n".join(lines)


def main():
    arguments = [a for a in sys.argv[1:] if a != "--print"]
    for section in arguments or SECTIONS:
        text = table(section)
        if "--print" in sys.argv:
            print(f"{section}\n\n{text}\n")
            continue
        page = PAGE.read_text()
        start, end = f"<!-- {section} -->\n", "<!-- end -->"
        if start not in page:
            sys.exit(f"error: {PAGE} has no line {start.strip()}")
        page = re.sub(re.escape(start) + ".*?" + re.escape(end), lambda _: start + text + "\n" + end, page, flags=re.S)
        PAGE.write_text(page)


if __name__ == "__main__":
    main()
