"""What the example scenes are built with: vectors, polyhedra of quads, the text of a scene file."""

import json
import math
import os

FOLDER = os.path.dirname(os.path.abspath(__file__))
WIDTH = 118  # of a line in a scene file


# Vectors and matrices.


def add(a, b):
    return tuple(x + y for x, y in zip(a, b))


def sub(a, b):
    return tuple(x - y for x, y in zip(a, b))


def times(a, s):
    return tuple(x * s for x in a)


def dot(a, b):
    return sum(x * y for x, y in zip(a, b))


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def unit(a):
    return times(a, 1 / math.sqrt(dot(a, a)))


def turn(axis, angle):
    """The right-handed rotation matrix about axis 0, 1 or 2."""
    c, s = math.cos(angle), math.sin(angle)
    i, j = (axis + 1) % 3, (axis + 2) % 3
    m = [[float(r == k) for k in range(3)] for r in range(3)]
    m[i][i], m[i][j], m[j][i], m[j][j] = c, -s, s, c
    return m


def product(a, b):
    return [[sum(a[r][k] * b[k][c] for k in range(3)) for c in range(3)] for r in range(3)]


def apply(m, v):
    return tuple(dot(row, v) for row in m)


def host_angles(m):
    """The angles (ax, ay, az) with Ry(-ay) Rz(-az) Rx(-ax) = m, as the host gives rotations."""
    return (-math.atan2(-m[1][2], m[1][1]), -math.atan2(-m[2][0], m[0][0]), -math.asin(max(-1, min(1, m[1][0]))))


def rounded(v, digits=4):
    values = [round(x, digits) + 0.0 for x in v]
    return [int(x) if x == int(x) else x for x in values]


# Polyhedra. Faces are listed counter-clockwise seen from outside, and turned round when the scene is made.


class Poly:
    def __init__(self, name, layer=None):
        self.name, self.layer = name, layer
        self.vertices, self.uvs, self.faces, self.materials = [], [], [], []

    def add_vertex(self, p):
        self.vertices.append(tuple(rounded(p)))
        return len(self.vertices) - 1

    def add_face(self, corners, uvs, material):
        if material not in self.materials:
            self.materials.append(material)
        self.faces.append(([list(c) for c in zip(corners, uvs)], self.materials.index(material)))

    def surface(self, rings, material, closed=True, repeat=1):
        """Quads between rings of points, each counter-clockwise seen from the end of the sweep; a ring of one point is
        a tip. material: a key, or a function of the ring and the column."""
        columns = max(len(ring) for ring in rings)
        quads = columns if closed else columns - 1
        numbers = [[self.add_vertex(p) for p in ring] for ring in rings]
        first_uv = len(self.uvs)
        for i in range(len(rings)):
            self.uvs += [rounded((repeat * j / quads, i / (len(rings) - 1)), 3) for j in range(quads + 1)]

        def corner(i, j):
            ring = numbers[i]
            return ring[j % len(ring)], first_uv + i * (quads + 1) + j

        for i in range(len(rings) - 1):
            for j in range(quads):
                corners = [corner(i, j), corner(i, j + 1), corner(i + 1, j + 1), corner(i + 1, j)]
                if len(rings[i]) == 1:
                    corners.pop(1)
                elif len(rings[i + 1]) == 1:
                    corners.pop(2)
                key = material(i, j) if callable(material) else material
                self.add_face([c[0] for c in corners], [c[1] for c in corners], key)
        return numbers

    def polygon(self, points, material, uvs=None):
        """A flat face with vertices of its own."""
        first, first_uv = len(self.vertices), len(self.uvs)
        for p in points:
            self.add_vertex(p)
        self.uvs += uvs or [[0, 0], [1, 0], [1, 1], [0, 1]][: len(points)]
        self.add_face(range(first, first + len(points)), range(first_uv, first_uv + len(points)), material)

    def box(self, low, high, material, sides="xXyYzZ"):
        """Some sides of a box, each with vertices of its own so that its edges are sharp."""
        (x, y, z), (X, Y, Z) = low, high
        corners = {
            "x": [(x, Y, z), (x, y, z), (x, y, Z), (x, Y, Z)],
            "X": [(X, y, z), (X, Y, z), (X, Y, Z), (X, y, Z)],
            "y": [(x, y, z), (X, y, z), (X, y, Z), (x, y, Z)],
            "Y": [(X, Y, z), (x, Y, z), (x, Y, Z), (X, Y, Z)],
            "z": [(x, Y, z), (X, Y, z), (X, y, z), (x, y, z)],
            "Z": [(x, y, Z), (X, y, Z), (X, Y, Z), (x, Y, Z)],
        }
        for side in sides:
            self.polygon(corners[side], material)

    def cube(self, low, high, material=None):
        """A closed box with eight shared vertices: a bounds or collision volume."""
        for k in range(8):
            self.add_vertex([(high if k >> axis & 1 else low)[axis] for axis in range(3)])
        self.uvs = [[0, 0]]
        for corners in ((0, 2, 3, 1), (4, 5, 7, 6), (0, 1, 5, 4), (1, 3, 7, 5), (3, 2, 6, 7), (2, 0, 4, 6)):
            self.add_face(corners, [0] * 4, material)

    def place(self, matrix, offset):
        self.vertices = [tuple(rounded(add(apply(matrix, v), offset))) for v in self.vertices]
        return self

    def volume(self):
        """Positive when the faces look outward; measured from the middle, so that open surfaces have one too."""
        middle = times(tuple(map(sum, zip(*self.vertices))), 1 / len(self.vertices))
        total = 0.0
        for corners, _ in self.faces:
            p = [sub(self.vertices[c[0]], middle) for c in corners]
            total += sum(dot(p[0], cross(p[k], p[k + 1])) for k in range(1, len(p) - 1))
        return total / 6

    def triangles(self):
        return sum(len(corners) - 2 for corners, _ in self.faces)

    def node(self, flat=False):
        if not flat:
            assert self.volume() > 0, self.name
        node = {"type": "polyhedron", "name": self.name, "layer": self.layer}
        node["vertices"] = [list(v) for v in self.vertices]
        node["uvs"] = self.uvs
        node["faces"] = []
        for corners, material in self.faces:
            # [a b c d] -> [a d c b]: clockwise, from the same first corner.
            face = {"corners": corners[:1] + corners[:0:-1]}
            if material:
                face["material"] = material
            node["faces"].append(face)
        if self.materials != [None]:
            node["materials"] = self.materials
        return node


def circle(radius, z, n, turn_by=0.0, center=(0, 0)):
    return [
        (
            center[0] + radius * math.cos(2 * math.pi * (j + turn_by) / n),
            center[1] + radius * math.sin(2 * math.pi * (j + turn_by) / n),
            z,
        )
        for j in range(n)
    ]


def oval(center, half_a, half_b, n):
    """Points round center in the plane of two half axes; a x b points along the sweep."""
    return [
        add(center, add(times(half_a, math.cos(2 * math.pi * j / n)), times(half_b, math.sin(2 * math.pi * j / n))))
        for j in range(n)
    ]


# The text of a scene file: short values on one line, as many of a list on a line as fit.


def text_of(value, indent=0):
    flat = json.dumps(value)
    if len(flat) + indent < WIDTH and not (isinstance(value, list) and value and isinstance(value[0], dict)):
        return flat
    pad = " " * (indent + 2)
    if isinstance(value, dict):
        rows = [pad + json.dumps(key) + ": " + text_of(item, indent + 2) for key, item in value.items()]
        return "{\n" + ",\n".join(rows) + "\n" + " " * indent + "}"
    lines, line = [], ""
    for k, item in enumerate(value):
        text = text_of(item, indent + 2) + ("," if k < len(value) - 1 else "")
        if line and ("\n" in text or len(pad) + len(line) + 1 + len(text) > WIDTH):
            lines.append(line)
            line = ""
        line = line + " " + text if line else text
        if "\n" in text:
            lines.append(line)
            line = ""
    if line:
        lines.append(line)
    return "[\n" + "\n".join(pad + row for row in lines) + "\n" + " " * indent + "]"


def save(name, scene):
    scene = {"format": "marrowfen-scene", "version": 1, **scene}
    rows = []
    for key, value in scene.items():
        rows.append("  " + json.dumps(key) + ": " + text_of(value, 2))
    with open(os.path.join(FOLDER, name + ".scene.json"), "w", encoding="ascii", newline="\n") as out:
        out.write("{\n" + ",\n".join(rows) + "\n}\n")


def paint(texture, opacity=255, **more):
    return {"color": [255, 255, 255, opacity], "texture": "D:\\art\\" + texture + ".png", **more}


def environment(sky, mirror, ambient=None):
    parameters = [{"name": "mirror factor", "type": "float", "value": mirror}]
    if ambient is not None:
        parameters.append({"name": "ambient factor", "type": "float", "value": ambient})
    if sky is not None:
        parameters.append({"name": "file name", "type": "text", "value": "D:\\art\\" + sky + ".png"})
    return {"name": "c_envr_map", "parameters": parameters}


def marker(name, layer, location, rotation=(0, 0, 0)):
    """A small cube that becomes a named node."""
    poly = Poly(name, layer)
    poly.cube((-0.05,) * 3, (0.05,) * 3)
    node = poly.node()
    node.update({"location": rounded(location), "rotation": rounded(rotation)})
    node.pop("uvs")
    return node


def volume_node(name, layer, low, high):
    poly = Poly(name, layer)
    poly.cube(low, high)
    node = poly.node()
    node.pop("uvs")
    return node
