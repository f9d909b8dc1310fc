#!/usr/bin/env python3
"""Holds the code to the table of folders in docs/design.md: no include goes against it or around in a circle, its rows
stand in order, each header compiles on its own, and links lead from the README to every page.

    check_layout.py COMPILER [LAUNCHER]
"""

import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile

TOP = pathlib.Path(__file__).resolve().parents[2]
UNLISTED = ("bench/", "examples/", "fuzz/", "tests/")  # may include anything
WINDOWS = "<windows.h>"  # stands in the table for all of Windows' headers


def table():
    """{folder: what it may include}, from the top down."""
    rows = re.findall(r"^\| (`.*?) \|.*\| (.*?) \|$", (TOP / "docs/design.md").read_text(), re.MULTILINE)
    return {folder: re.findall(r"`([^`]+)`", allowed) for cell, allowed in rows for folder in re.findall(r"`(.+?)`", cell)}


def sources():
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "*.h", "*.cpp"], cwd=TOP, text=True, check=True,
                            capture_output=True)
    return [name for name in sorted(set(listed.stdout.split())) if (TOP / name).exists()]


def includes_of(text):
    ours = re.findall(r'^#include "(.+)"', text, re.MULTILINE)
    return ours + ([WINDOWS] if re.search(r"^#include <(windows|comm\w+)\.h>", text, re.MULTILINE) else [])


def folder_of(name, folders):
    return max((folder for folder in folders if name.startswith(folder)), key=len, default=None)


def faults_of_includes(folders, includes):
    for name, included in includes.items():
        if name.startswith(UNLISTED):
            continue
        own = folder_of(name, folders)
        if own is None:
            yield f"{name}: its folder is not in the table of docs/design.md"
            continue
        for other in included:
            if not other.startswith((own, *folders[own])):
                yield f"{name} includes {other}: {own} may include {', '.join(folders[own]) or 'nothing of ours'}"


def faults_of_order(folders):
    order = list(folders)
    for at, (folder, allowed) in enumerate(folders.items()):
        for other in allowed:
            if other != WINDOWS and not any(below.startswith(other) or other.startswith(below) for below in order[at + 1:]):
                yield f"docs/design.md: {folder} may include {other}, which does not stand below it"


def faults_of_circles(includes):
    done = set()

    def walk(name, path):
        if name in path:
            yield "a circle of includes: " + " -> ".join([*path[path.index(name):], name])
        elif name not in done:
            for other in includes.get(name, []):
                yield from walk(other, [*path, name])
            done.add(name)

    for name in includes:
        yield from walk(name, [])


def fault_of_header(name, compile_command, scratch):
    output = f"{scratch}/{name.replace('/', '.')}.o"
    done = subprocess.run([*compile_command, "-o", output, "-c", "-x", "c++", name], cwd=TOP, text=True, capture_output=True,
                          check=False)
    first = next((line for line in done.stderr.splitlines() if "error:" in line), "the compiler fails")
    return f"{name} does not compile on its own: {first}" if done.returncode else None


def faults_of_headers(headers, compiler):
    flags = ["-std=c++20", "-O0", "-w", "-I.", "-Istandin/windows/include"]
    with tempfile.TemporaryDirectory() as scratch, concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        yield from filter(None, pool.map(lambda name: fault_of_header(name, [*compiler, *flags], scratch), headers))


def faults_of_pages():
    reached, found = [TOP / "README.md"], []
    for page in reached:
        for link in re.findall(r"\]\(([^)#:]+)\)", page.read_text()):
            target = (page.parent / link).resolve()
            if not target.exists():
                found.append(f"{page.relative_to(TOP)} links to {link}, which is not there")
            elif target.suffix == ".md" and target not in reached:
                reached.append(target)
    return found + [f"docs/{page.name}: no link leads there" for page in (TOP / "docs").glob("*.md") if page not in reached]


def main():
    compiler = sys.argv[2:] + sys.argv[1:2]
    names = sources()
    includes = {name: includes_of((TOP / name).read_text()) for name in names}
    folders = table()
    # The headers of the stand-in for Windows bear Windows' names; those of the Wine tests want the real ones.
    headers = [name for name in names if name.endswith(".h") and not name.startswith(("standin/windows/include/", "tests/wine/"))]
    faults = [*faults_of_includes(folders, includes), *faults_of_order(folders), *faults_of_circles(includes),
              *faults_of_headers(headers, compiler), *faults_of_pages()]
    for fault in faults:
        print(fault)
    print(f"{len(folders)} folders, {len(names)} files, {len(headers)} headers: {len(faults)} faults")
    return 1 if faults or not folders or not headers else 0


if __name__ == "__main__":
    sys.exit(main())
