#!/usr/bin/env python3
"""Reads a built plug-in library and checks what a host and Windows see of it: exports, imports, protections, dialogs,
pictures, version.

Usage: check_dll.py MARROWFEN.DLL TSXAPI.DEF
"""

import re
import struct
import sys

EXPORTS = ["tsxDeactivate", "tsxGetData", "tsxGetVersion", "tsxOnLeftClick", "tsxOnRightClick"]
SYSTEM_LIBRARIES = {"comctl32.dll", "comdlg32.dll", "kernel32.dll", "msvcrt.dll", "user32.dll"}
DYNAMIC_BASE, NX_COMPAT, HIGH_ENTROPY = 0x40, 0x100, 0x20

# id, class, text, position and size; 80 button, 82 static, 85 combo box.
PANEL = [
    (1005, 0x80, "Node Helper", 7, 7, 180, 28), (1000, 0x85, "", 13, 17, 108, 69),
    (1001, 0x80, "Add Node", 128, 16, 50, 14), (1004, 0x80, "Export Shape", 7, 38, 93, 49),
    (1006, 0x80, "Export With Animation", 13, 47, 84, 11), (1002, 0x80, "Export", 21, 65, 59, 13),
    (1013, 0x80, "Export DSQ", 112, 46, 62, 14), (1003, 0x80, "About", 113, 68, 60, 12),
]
PROGRESS = [(1010, 0x82, "", 7, 7, 172, 12), (1009, "msctls_progress32", "", 7, 20, 172, 11)]
ABOUT = [(-1, 0x82, 111, 7, 7, 242, 82), (1, 0x80, "OK", 103, 90, 50, 14)]
POPUP, VISIBLE, CAPTION, SYSMENU, MODALFRAME, CENTER = 0x80000000, 0x10000000, 0xC00000, 0x80000, 0x80, 0x800
TOOLWINDOW = 0x80
DIALOGS = {  # caption, size, controls, styles that are set, extended styles
    107: ("Marrowfen", (194, 94), PANEL, POPUP | VISIBLE | CAPTION | SYSMENU | MODALFRAME | CENTER, 0),
    109: ("Exporting...", (186, 38), PROGRESS, POPUP | VISIBLE | CAPTION | MODALFRAME, TOOLWINDOW),
    112: ("Dialog", (256, 110), ABOUT, POPUP | CAPTION, 0),
}
STYLES = {  # control id: low 4 bits of a button's style, or bits that are set
    1002: 1, 1001: 0, 1003: 0, 1013: 0, 1004: 7, 1005: 7, 1006: 3,  # 1 default button, 7 group box, 3 automatic check box
    1000: 0x200042,  # vertical scroll bar, automatic horizontal scrolling, drop-down
    1009: 0x800000,  # border
    -1: 0x0E,  # picture
}
BITMAPS = {101: (30, 22), 111: (363, 133)}
failures = []


def check(what, seen, expected):
    if seen != expected:
        failures.append(f"{what}: {seen!r}, expected {expected!r}")


class Image:
    def __init__(self, path):
        self.data = open(path, "rb").read()
        header = self.u32(0x3C)
        check("signature", self.data[header : header + 4], b"PE\0\0")
        sections, optional_size = self.u16(header + 6), self.u16(header + 20)
        self.is_dll = self.u16(header + 22) & 0x2000 != 0
        optional = header + 24
        self.is_64 = self.u16(optional) == 0x20B
        self.characteristics = self.u16(optional + 70)
        directories = optional + (112 if self.is_64 else 96)
        self.directories = [self.u32(directories + 8 * i) for i in range(16)]
        table = optional + optional_size
        self.sections = [struct.unpack_from("<8xIIII", self.data, table + 40 * i) for i in range(sections)]

    def u16(self, at):
        return struct.unpack_from("<H", self.data, at)[0]

    def u32(self, at):
        return struct.unpack_from("<I", self.data, at)[0]

    def offset(self, address):
        for size, start, raw_size, raw in self.sections:
            if start <= address < start + max(size, raw_size):
                return address - start + raw
        raise ValueError(f"address {address:#x} is in no section")

    def text(self, address):
        at = self.offset(address)
        return self.data[at : self.data.index(b"\0", at)].decode()

    def exports(self):
        at = self.offset(self.directories[0])
        names = self.offset(self.u32(at + 32))
        check("number of exported functions", self.u32(at + 20), len(EXPORTS))
        return [self.text(self.u32(names + 4 * i)) for i in range(self.u32(at + 24))]

    def imports(self):
        found = {}
        at = self.offset(self.directories[1])
        while self.u32(at + 12):
            entry, size = self.offset(self.u32(at)), 8 if self.is_64 else 4
            names = []
            while self.u32(entry):
                names.append(self.text(self.u32(entry) + 2))
                entry += size
            found[self.text(self.u32(at + 12)).lower()] = names
            at += 20
        return found

    def resources(self):
        """{(type, id): bytes}, whatever the language."""
        root = self.offset(self.directories[2])
        found = {}

        def walk(at, path):
            for i in range(self.u16(at + 12) + self.u16(at + 14)):
                name, to = self.u32(at + 16 + 8 * i), self.u32(at + 20 + 8 * i)
                if to & 0x80000000:
                    walk(root + (to & 0x7FFFFFFF), path + [name])
                else:
                    start = self.offset(self.u32(root + to))
                    found[tuple(path)] = self.data[start : start + self.u32(root + to + 4)]

        walk(root, [])
        return found


class Template:
    """An extended dialog template."""

    def __init__(self, data):
        self.data, self.at = data, 0
        self.version, _, _, self.extended, self.style, count, _, _, *self.size = self.take("<HHIIIHhhhh")
        self.menu, self.window_class, self.caption = self.name(), self.name(), self.name()
        self.font_size, _, _, _ = self.take("<HHBB")
        self.font = self.name()
        self.controls = [self.control() for _ in range(count)]

    def take(self, layout):
        values = struct.unpack_from(layout, self.data, self.at)
        self.at += struct.calcsize(layout)
        return values

    def name(self):
        (first,) = self.take("<H")
        if first == 0xFFFF:
            return self.take("<H")[0]
        text = ""
        while first:
            text += chr(first)
            (first,) = self.take("<H")
        return text

    def control(self):
        self.at = (self.at + 3) & ~3
        _, _, style, *place, number = self.take("<IIIhhhhi")
        kind, text = self.name(), self.name()
        (extra,) = self.take("<H")
        self.at += extra
        if isinstance(kind, str):  # letter case doesn't count, and the classic classes have numbers
            kind = {"static": 0x82}.get(kind.lower(), kind.lower())
        if number in STYLES:
            mask = 0xF if kind in (0x80, 0x82) else STYLES[number]
            check(f"style of control {number}", style & mask, STYLES[number] & mask)
        return (number, kind, text, *place)


def check_resources(resources):
    bitmap, dialog, version = 2, 5, 16
    for number, (caption, size, controls, style, extended) in DIALOGS.items():
        template = Template(resources[dialog, number])
        what = f"dialog {number}"
        check(what + " caption", template.caption, caption)
        check(what + " font", (template.font, template.font_size), ("MS Sans Serif", 8))
        check(what + " size", tuple(template.size), size)
        check(what + " styles", template.style & style, style)
        check(what + " extended styles", template.extended & extended, extended)
        check(what + " controls", template.controls, controls)
    for number, size in BITMAPS.items():
        header = struct.unpack_from("<IiiHH", resources[bitmap, number])
        check(f"bitmap {number}", (header[1:3], header[4]), (size, 8))
    text = resources[version, 1].decode("utf-16-le", "replace")
    for part in ("Quelland", "1.1.0", "marrowfen.dll", "ProductName"):
        check(f"version information has {part}", part in text, True)


def main():
    image = Image(sys.argv[1])
    check("is a library", image.is_dll, True)
    check("exports", image.exports(), EXPORTS)
    imports = image.imports()
    listed = re.findall(r"^    (tsx\w+)$", open(sys.argv[2]).read(), re.M)
    check("imports of the host that aren't listed", sorted(set(imports.pop("tsxapi.dll")) - set(listed)), [])
    check("imported libraries beyond the system's", sorted(set(imports) - SYSTEM_LIBRARIES), [])
    protections = DYNAMIC_BASE | NX_COMPAT | (HIGH_ENTROPY if image.is_64 else 0)
    check("protections", image.characteristics & protections, protections)
    check("can be moved", image.directories[5] != 0, True)
    check_resources(image.resources())
    for failure in failures:
        print(f"{sys.argv[1]}: {failure}")
    print(f"{sys.argv[1]}: {'64' if image.is_64 else '32'}-bit, {'FAILED' if failures else 'as it should be'}")
    return 1 if failures else 0


sys.exit(main())
