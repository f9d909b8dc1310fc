#!/usr/bin/env python3
"""Paints the plug-in's pictures, icon.bmp (30 x 22) and about.bmp (363 x 133), as bitmaps of 8 bits per pixel.

Usage: make_pictures.py FOLDER

Everything is a shape with a signed distance in pixels (negative inside), painted over what is there with the soft edge
that the distance gives. The finished picture is reduced to 256 colours by median cut and error diffusion.
"""

import math
import os
import struct
import sys

SKY = [(0, (12, 26, 42)), (48, (30, 70, 88)), (78, (150, 128, 104)), (94, (240, 178, 96))]
HORIZON = 94
CREAM = (246, 236, 212)
NIGHT = (8, 18, 26)


def mix(a, b, t):
    return tuple(x + (y - x) * t for x, y in zip(a, b))


def gradient(stops, at):
    for (low, a), (high, b) in zip(stops, stops[1:]):
        if at <= high:
            return mix(a, b, max(0.0, (at - low) / (high - low)))
    return stops[-1][1]


class Canvas:
    def __init__(self, width, height):
        self.width, self.height = width, height
        self.pixels = [[(0.0, 0.0, 0.0)] * width for _ in range(height)]

    def fill(self, color):
        for y in range(self.height):
            for x in range(self.width):
                self.pixels[y][x] = color(x, y)

    def paint(self, distance, color, box=None, opacity=1.0):
        left, top, right, bottom = box or (0, 0, self.width, self.height)
        for y in range(max(0, int(top)), min(self.height, int(bottom) + 1)):
            for x in range(max(0, int(left)), min(self.width, int(right) + 1)):
                cover = min(1.0, max(0.0, 0.5 - distance(x + 0.5, y + 0.5))) * opacity
                if cover > 0:
                    self.pixels[y][x] = mix(self.pixels[y][x], color, cover)


def segment_distance(px, py, a, b):
    ax, ay = a
    dx, dy = b[0] - ax, b[1] - ay
    length = dx * dx + dy * dy
    t = 0.0 if length == 0 else min(1.0, max(0.0, ((px - ax) * dx + (py - ay) * dy) / length))
    return math.hypot(px - ax - t * dx, py - ay - t * dy)


def stroke(canvas, points, radius, color, opacity=1.0):
    """A line of round ends; a radius per point may be given as a list."""
    radii = radius if isinstance(radius, list) else [radius] * len(points)
    for (a, b), r in zip(zip(points, points[1:]), radii):
        box = (min(a[0], b[0]) - r - 1, min(a[1], b[1]) - r - 1, max(a[0], b[0]) + r + 1, max(a[1], b[1]) + r + 1)
        canvas.paint(lambda x, y: segment_distance(x, y, a, b) - r, color, box, opacity)


def polygon(canvas, corners, color):
    """A convex polygon, corners counter-clockwise on the screen's downward y."""
    edges = []
    for (ax, ay), (bx, by) in zip(corners, corners[1:] + corners[:1]):
        length = math.hypot(bx - ax, by - ay) or 1.0
        edges.append((ax, ay, (by - ay) / length, (ax - bx) / length))
    xs, ys = [c[0] for c in corners], [c[1] for c in corners]
    box = (min(xs) - 1, min(ys) - 1, max(xs) + 1, max(ys) + 1)
    # A third of a pixel wider, so that neighbours leave no seam.
    canvas.paint(lambda x, y: max((x - ax) * nx + (y - ay) * ny for ax, ay, nx, ny in edges) - 0.33, color, box)


# A ball of flat triangles: what the exporter is about.


def ball_faces(subdivisions):
    g = (1 + 5**0.5) / 2
    points = [(-1, g, 0), (1, g, 0), (-1, -g, 0), (1, -g, 0), (0, -1, g), (0, 1, g)]
    points += [(0, -1, -g), (0, 1, -g), (g, 0, -1), (g, 0, 1), (-g, 0, -1), (-g, 0, 1)]
    numbers = "0b5 051 017 07a 0ab 159 5b4 ba2 a76 718 394 342 326 368 389 495 24b 62a 867 981"
    faces = [[points[int(c, 16)] for c in face] for face in numbers.split()]
    for _ in range(subdivisions):
        finer = []
        for a, b, c in faces:
            ab, bc, ca = ([(p + q) / 2 for p, q in zip(u, v)] for u, v in ((a, b), (b, c), (c, a)))
            finer += [[a, ab, ca], [ab, b, bc], [ca, bc, c], [ab, bc, ca]]
        faces = finer
    return [[unit(p) for p in face] for face in faces]


def unit(p):
    length = math.sqrt(sum(x * x for x in p))
    return tuple(x / length for x in p)


def turned(p, about_y, about_x):
    x, y, z = p
    x, z = x * math.cos(about_y) + z * math.sin(about_y), z * math.cos(about_y) - x * math.sin(about_y)
    y, z = y * math.cos(about_x) - z * math.sin(about_x), z * math.cos(about_x) + y * math.sin(about_x)
    return x, y, z


def ball(canvas, cx, cy, radius, subdivisions, lines):
    light = unit((-0.55, 0.65, 0.6))
    for face in ball_faces(subdivisions):
        face = [turned(p, 0.45, 0.3) for p in face]
        normal = unit([sum(p[i] for p in face) for i in range(3)])
        if normal[2] <= 0.1:  # too thin to be seen
            continue
        shine = max(0.0, sum(a * b for a, b in zip(normal, light)))
        color = mix((120, 62, 58), (255, 226, 150), shine**0.9)
        corners = [(cx + radius * p[0], cy - radius * p[1]) for p in face]
        area = sum(a[0] * b[1] - b[0] * a[1] for a, b in zip(corners, corners[1:] + corners[:1]))
        polygon(canvas, corners if area > 0 else corners[::-1], color)
        if lines:
            stroke(canvas, corners + corners[:1], 0.3, mix(color, (70, 36, 40), 0.6), 0.5)


# Letters of single strokes on a grid with y upward: the lower-case body is 0.6 high.


def arc(cx, cy, rx, ry, begin, end):
    steps = 14
    angles = [math.radians(begin + (end - begin) * i / steps) for i in range(steps + 1)]
    return [(cx + rx * math.cos(a), cy + ry * math.sin(a)) for a in angles]


ARCH = arc(0.26, 0.34, 0.26, 0.26, 180, 0) + [(0.52, 0)]
BOWL = arc(0.28, 0.3, 0.28, 0.3, 0, 360)
LETTERS = {  # width, strokes
    "M": (0.8, [[(0, 0), (0, 1), (0.4, 0.3), (0.8, 1), (0.8, 0)]]),
    "a": (0.55, [BOWL, [(0.56, 0.6), (0.56, 0)]]),
    "r": (0.32, [[(0, 0), (0, 0.6)], arc(0.28, 0.3, 0.28, 0.3, 180, 78)]),
    "o": (0.56, [BOWL]),
    "w": (0.76, [[(0, 0.6), (0.2, 0), (0.38, 0.55), (0.56, 0), (0.76, 0.6)]]),
    "f": (0.38, [[(0.14, 0), (0.14, 0.76)] + arc(0.36, 0.76, 0.22, 0.26, 180, 70), [(0, 0.6), (0.34, 0.6)]]),
    "e": (0.56, [[(0.02, 0.31), (0.56, 0.31)] + arc(0.28, 0.3, 0.28, 0.3, 5, 318)]),
    "n": (0.52, [[(0, 0), (0, 0.6)], ARCH]),
    "h": (0.52, [[(0, 0), (0, 1)], ARCH]),
    "s": (0.42, [arc(0.21, 0.45, 0.19, 0.15, 35, 270) + arc(0.21, 0.15, 0.21, 0.15, 90, -145)]),
    "p": (0.56, [[(0, 0.6), (0, -0.3)], BOWL]),
    "x": (0.46, [[(0, 0.6), (0.46, 0)], [(0.46, 0.6), (0, 0)]]),
    "t": (0.34, [[(0.14, 0.85), (0.14, 0.14)] + arc(0.3, 0.14, 0.16, 0.14, 180, 275), [(0, 0.6), (0.34, 0.6)]]),
    "1": (0.3, [[(0.02, 0.8), (0.22, 1), (0.22, 0)]]),
    "0": (0.54, [arc(0.27, 0.5, 0.27, 0.5, 0, 360)]),
    ".": (0.1, [[(0.05, 0.02), (0.06, 0.02)]]),
    " ": (0.3, []),
}


def write(canvas, text, left, base, size, radius, color, gap=0.2, opacity=1.0):
    for letter in text:
        width, strokes = LETTERS[letter]
        for points in strokes:
            stroke(canvas, [(left + size * x, base - size * y) for x, y in points], radius, color, opacity)
        left += size * (width + gap)


def reed(canvas, root, height, lean, color, head):
    points, radii = [], []
    for i in range(9):
        t = i / 8
        points.append((root + lean * t * t, 134 - height * t))
        radii.append(1.5 - 1.1 * t)
    stroke(canvas, points, radii, color)
    if head:
        x, y = points[-2]
        stroke(canvas, [(x, y), (x + lean * 0.06, y - 9)], 2.1, color)


def hill(base, height, seed):
    def edge(x):
        return base - height * (0.5 + 0.3 * math.sin(x * 0.021 + seed) + 0.2 * math.sin(x * 0.053 + 2.3 * seed))

    return lambda x, y: edge(x) - y


def water(x, y):
    mirrored = gradient(SKY, HORIZON - (y - HORIZON) * 1.6)
    ripple = 0.5 + 0.5 * math.sin(y * 1.9 + 0.9 * math.sin(x * 0.05 + y))
    glow = math.exp(-(((x - 304 - 3 * math.sin(y * 1.3)) / (9 + 0.45 * (y - HORIZON))) ** 2)) * ripple
    return mix(mix(mirrored, NIGHT, 0.45 + 0.1 * ripple), (255, 206, 128), 0.75 * glow)


def paint_about(version):
    canvas = Canvas(363, 133)
    canvas.fill(lambda x, y: gradient(SKY, y))
    for i in range(46):  # stars, scattered by a fixed rule
        x, y = (i * 97 + i * i * 13) % 363, (i * 53 + i * i * 7) % 58
        canvas.paint(lambda px, py: math.hypot(px - x, py - y) - 0.55, CREAM, (x - 2, y - 2, x + 2, y + 2), 0.25 + 0.1 * (i % 5))
    ball(canvas, 304, 55, 37, 1, True)
    canvas.paint(hill(101, 24, 0.4), (58, 74, 82), opacity=0.85)
    canvas.paint(hill(104, 17, 2.1), (30, 48, 56))
    for y in range(HORIZON + 4, canvas.height):
        for x in range(canvas.width):
            canvas.pixels[y][x] = water(x, y)
    for root, height, lean, head in [(6, 74, 10, True), (14, 52, -8, False), (20, 62, 12, True), (28, 36, 9, False),
                                     (344, 66, -10, True), (352, 84, -6, True), (358, 48, 6, False), (336, 38, -12, False),
                                     (225, 24, 6, False), (231, 32, 4, True), (236, 20, -6, False)]:
        reed(canvas, root, height, lean, NIGHT, head)
    write(canvas, "Marrowfen", 43, 65, 33, 2.9, NIGHT, opacity=0.6)
    write(canvas, "Marrowfen", 42, 63.5, 33, 2.5, CREAM)
    write(canvas, f"shape exporter  {version}", 44, 86, 12, 0.8, CREAM, gap=0.24)
    return canvas


def paint_icon():
    canvas = Canvas(30, 22)
    canvas.fill(lambda x, y: gradient([(0, (24, 54, 74)), (15, (70, 120, 126))], y))
    ball(canvas, 15, 9.2, 7.4, 0, False)
    canvas.paint(lambda x, y: 16.2 + 0.9 * math.sin(x * 0.7) - y, (20, 48, 58))
    canvas.paint(lambda x, y: 18.9 + 0.7 * math.sin(x * 0.8 + 2) - y, (12, 30, 40))
    stroke(canvas, [(4.5, 22), (4.2, 10)], 0.6, NIGHT)
    stroke(canvas, [(4.3, 10.5), (4.2, 7.5)], 1.2, (92, 60, 36))
    stroke(canvas, [(25.5, 22), (26, 12)], 0.6, NIGHT)
    stroke(canvas, [(26, 12.2), (26.1, 9.6)], 1.2, (92, 60, 36))
    return canvas


# 256 colours.


def median_cut(pixels, count):
    boxes = [pixels]
    while len(boxes) < count:
        ranges = [max((max(p[i] for p in box) - min(p[i] for p in box), i) for i in range(3)) + (n,) for n, box in enumerate(boxes)]
        width, axis, number = max(ranges, key=lambda r: r[0] * math.sqrt(len(boxes[r[2]])))
        if width == 0:
            break
        box = sorted(boxes.pop(number), key=lambda p: p[axis])
        boxes += [box[: len(box) // 2], box[len(box) // 2 :]]
    return [tuple(round(sum(p[i] for p in box) / len(box)) for i in range(3)) for box in boxes]


def reduce_colors(canvas):
    rounded = sorted({tuple(round(c) for c in pixel) for row in canvas.pixels for pixel in row})
    palette = median_cut(rounded, 256)
    nearest = {}

    def find(color):
        key = tuple(min(255, max(0, int(c))) & ~1 for c in color)
        if key not in nearest:
            nearest[key] = min(range(len(palette)), key=lambda n: sum((a - b) ** 2 for a, b in zip(palette[n], key)))
        return nearest[key]

    rest = [list(row) for row in canvas.pixels]
    rows = []
    for y in range(canvas.height):
        row = []
        for x in range(canvas.width):
            number = find(rest[y][x])
            row.append(number)
            error = [a - b for a, b in zip(rest[y][x], palette[number])]
            for dx, dy, share in ((1, 0, 7 / 16), (-1, 1, 3 / 16), (0, 1, 5 / 16), (1, 1, 1 / 16)):
                if 0 <= x + dx < canvas.width and y + dy < canvas.height:
                    rest[y + dy][x + dx] = tuple(c + e * share for c, e in zip(rest[y + dy][x + dx], error))
        rows.append(row)
    return palette, rows


def save(canvas, path):
    palette, rows = reduce_colors(canvas)
    palette += [(0, 0, 0)] * (256 - len(palette))
    stride = (canvas.width + 3) // 4 * 4
    offset = 14 + 40 + 4 * 256
    size = stride * canvas.height
    with open(path, "wb") as file:
        file.write(struct.pack("<2sIHHI", b"BM", offset + size, 0, 0, offset))
        file.write(struct.pack("<IiiHHIIiiII", 40, canvas.width, canvas.height, 1, 8, 0, size, 2835, 2835, 256, 0))
        for red, green, blue in palette:
            file.write(bytes((blue, green, red, 0)))
        for row in reversed(rows):
            file.write(bytes(row).ljust(stride, b"\0"))


folder, version = sys.argv[1:]
os.makedirs(folder, exist_ok=True)
save(paint_icon(), os.path.join(folder, "icon.bmp"))
save(paint_about(version), os.path.join(folder, "about.bmp"))
