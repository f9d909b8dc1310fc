#!/usr/bin/env python3
"""Checks what a host and Windows see of a built plug-in library, as the tools of binutils read it: exports, imports,
protections, and the dialogs, pictures and version of resources.txt beside this.

Usage: check_dll.py MARROWFEN.DLL TSXAPI.DEF
"""

import difflib
import os
import re
import subprocess
import sys

EXPORTS = ["tsxDeactivate", "tsxGetData", "tsxGetVersion", "tsxOnLeftClick", "tsxOnRightClick"]
SYSTEM_LIBRARIES = {"comctl32.dll", "comdlg32.dll", "kernel32.dll", "msvcrt.dll", "user32.dll"}
failures = []


def check(what, seen, expected):
    if seen != expected:
        failures.append(f"{what}: {seen!r}, expected {expected!r}")


def output(tool, *arguments):
    return subprocess.run(["x86_64-w64-mingw32-" + tool, *arguments], check=True, capture_output=True, text=True).stdout


def resources(path):
    """As a resource script, of pictures only their heads: sizes and bits a pixel."""
    return re.sub(r"(BEGIN\n  0x.*\n)(?:  0x.*\n)+", r"\1", output("windres", "--output-format=rc", path))


def main():
    path, definitions = sys.argv[1:]
    image = output("objdump", "-p", path)
    is_64 = "(PE32+)" in image
    check("is a library", bool(re.search(r"^\tDLL$", image, re.M)), True)
    names = image.partition("[Ordinal/Name Pointer] Table")[2].partition("\n\n")[0]
    check("exports", re.findall(r"\[ *\d+\] (?:\+base\[ *\d+\] +\w+ )?(\w+)$", names, re.M), EXPORTS)
    imports = {name.lower(): re.findall(r"^\t\w+\t +\d+ +(\w+)", rest, re.M)
               for name, rest in re.findall(r"DLL Name: (\S+)\n((?:.+\n)*)", image)}
    listed = re.findall(r"^    (tsx\w+)$", open(definitions).read(), re.M)
    called = imports.pop("tsxapi.dll")
    check("calls of the host", len(called) > 50, True)
    check("imports of the host that aren't listed", sorted(set(called) - set(listed)), [])
    check("imported libraries beyond the system's", sorted(set(imports) - SYSTEM_LIBRARIES), [])
    for protection in ["DYNAMIC_BASE", "NX_COMPAT"] + ["HIGH_ENTROPY_VA"] * is_64:
        check(protection, bool(re.search(rf"^\t+{protection}$", image, re.M)), True)
    check("can't be moved", re.findall(r"^Entry 5 0+ ", image, re.M), [])
    with open(os.path.join(os.path.dirname(__file__), "resources.txt"), encoding="utf-8") as file:
        check("resources", list(difflib.unified_diff(file.read().split("\n"), resources(path).split("\n"), n=0)), [])
    for failure in failures:
        print(f"{path}: {failure}")
    print(f"{path}: {'64' if is_64 else '32'}-bit, {'FAILED' if failures else 'as it should be'}")
    return 1 if failures else 0


sys.exit(main())
