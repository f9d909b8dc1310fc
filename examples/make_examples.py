#!/usr/bin/env python3
"""Makes the example scenes beside this file: python3 examples/make_examples.py

Only needed when an example changes. The result is the same on every machine, and each polyhedron is checked for faces
that are turned inside out. Lengths are metres, Z is up, the creature looks along +Y.
"""

import math

from scene_kit import (
    Poly, add, apply, circle, environment, host_angles, marker, oval, paint, product, rounded, save, sub, times, turn,
    volume_node,
)

# The lighthouse.

SIDES = 12  # of the tower
BANDS = 6  # red and white, from the plinth to the gallery
TOWER_FOOT, TOWER_TOP = 2.2, 12.2
FOOT_RADIUS, TOP_RADIUS = 1.9, 1.15


def tower_radius(z):
    """Narrows faster near the foot."""
    t = (z - TOWER_FOOT) / (TOWER_TOP - TOWER_FOOT)
    return TOP_RADIUS + (FOOT_RADIUS - TOP_RADIUS) * (1 - t) ** 1.6


def rock(name, layer, sides, rings):
    """A cragged island: rings of (radius, height) pushed in and out by waves."""
    poly = Poly(name, layer)

    def cragged(radius, z, i):
        points = circle(1, z, sides, 0.5 * (i % 2))
        shift = [1 + 0.16 * math.sin(3.7 * j + 2.1 * i) + 0.07 * math.sin(7.3 * j + i) for j in range(sides)]
        rise = [0.3 * math.sin(5.1 * j + 1.3 * i) * (0 < i < len(rings) - 1) for j in range(sides)]
        return [(p[0] * radius * s, p[1] * radius * s, z + r) for p, s, r in zip(points, shift, rise)]

    outline = [cragged(radius, z, i) for i, (radius, z) in enumerate(rings)]
    peak = [(0, 0, rings[-1][1] + 0.05)]
    poly.surface(outline + [peak], lambda i, j: "grass" if i >= len(rings) - 1 else "rock", repeat=4)
    return poly


def tower(layer, sides, bands):
    poly = Poly("tower", layer)
    heights = [TOWER_FOOT + (TOWER_TOP - TOWER_FOOT) * k / bands for k in range(bands + 1)]
    rings = [circle(tower_radius(z), z, sides) for z in heights]
    poly.surface(rings, lambda i, j: "paint_red" if i % 2 else "paint_white", repeat=4)
    return poly


def plinth(layer):
    poly = Poly("plinth", layer)
    poly.surface([circle(2.35, 1.4, SIDES), circle(2.3, 2.05, SIDES)], "stone", repeat=6)
    poly.surface([circle(2.3, 2.05, SIDES), circle(1.9, 2.25, SIDES)], "stone", repeat=6)
    return poly


def door(layer):
    poly = Poly("door", layer)
    front = -2.42
    poly.box((-0.62, front + 0.12, 1.35), (0.62, front + 1.2, 3.45), "stone", "xXyZ")
    poly.box((-0.42, front, 1.35), (0.42, front + 0.4, 3.2), "wood_dark", "xXyZ")
    for k in range(2):
        poly.box((-0.8, front - 0.55 + 0.3 * k, 0.9), (0.8, front + 0.3, 1.14 + 0.2 * k), "stone", "xXyZ")
    return poly


def window(layer, name, side, z):
    """A framed window that looks away from the axis, side sixteenths of a turn from the front."""
    poly = Poly(name, layer)
    depth = tower_radius(z + 0.4)
    poly.box((-0.3, -depth - 0.1, z), (0.3, -depth + 0.4, z + 0.85), "stone", "xXyzZ")
    corners = ((-0.2, 0.1), (0.2, 0.1), (0.2, 0.75), (-0.2, 0.75))
    poly.polygon([(x, -depth - 0.11, z + h) for x, h in corners], "window_dark")
    return poly.place(turn(2, math.pi / 8 * side), (0, 0, 0))


def gallery(layer):
    poly = Poly("gallery", layer)
    top = TOWER_TOP + 0.55
    poly.surface([circle(TOP_RADIUS, TOWER_TOP - 0.25, SIDES), circle(1.75, top - 0.22, SIDES)], "stone", repeat=4)
    poly.surface([circle(1.75, top - 0.22, SIDES), circle(1.75, top, SIDES)], "paint_white", repeat=4)
    poly.surface([circle(1.75, top, SIDES), circle(0.9, top, SIDES)], "stone", repeat=4)
    rail = [circle(r, top + h, SIDES) for r, h in ((1.62, 0.7), (1.70, 0.74), (1.62, 0.78), (1.62, 0.7))]
    poly.surface(rail, "iron_black", repeat=8)
    for x, y, _ in circle(1.65, 0, 8):
        post = [[(x + p[0], y + p[1], z) for p in circle(0.035, 0, 3)] for z in (top, top + 0.74)]
        poly.surface(post, "iron_black")
    return poly


def lantern(layer):
    """The glass room on top, its lamp inside, the copper roof over it."""
    base, eaves = TOWER_TOP + 0.55, TOWER_TOP + 2.35
    low = Poly("lantern base", layer)
    low.surface([circle(0.95, base, 8), circle(0.95, base + 0.5, 8)], "paint_red", repeat=4)
    low.surface([circle(0.95, base + 0.5, 8), circle(0.8, base + 0.5, 8)], "paint_red")
    for x, y, _ in circle(0.86, 0, 8):
        bar = [[(x + p[0], y + p[1], z) for p in circle(0.045, 0, 3)] for z in (base + 0.5, eaves)]
        low.surface(bar, "iron_black")

    lamp = Poly("lamp", layer)
    lamp.surface([[(0, 0, base + 0.55)], circle(0.32, base + 0.9, 6), circle(0.32, base + 1.4, 6),
                  [(0, 0, base + 1.7)]], "lamp_yellow")
    glass = Poly("lantern glass", layer)
    glass.surface([circle(0.84, base + 0.5, 8), circle(0.84, eaves, 8)], "lantern_glass", repeat=8)

    roof = Poly("roof", layer)
    roof.surface([circle(0.8, eaves, SIDES), circle(1.15, eaves - 0.05, SIDES), circle(1.15, eaves + 0.06, SIDES)],
                 "roof_copper", repeat=4)
    roof.surface([circle(1.15, eaves + 0.06, SIDES), circle(0.65, eaves + 0.63, SIDES),
                  circle(0.1, eaves + 1.05, SIDES)], "roof_copper", repeat=4)
    knob = [(0.1, 1.0), (0.2, 1.2), (0.03, 1.42)]
    roof.surface([circle(r, eaves + z, 6) for r, z in knob] + [[(0, 0, eaves + 2.2)]], "iron_black")
    return [low, lamp, glass, roof]


def lighthouse():
    layers = [None, "Detail:size=300", "Detail:size=120,autolod=45", "Detail:size=40", "Detail:size=8,billboard",
              "nodes", "bounds:no_mipmap_trans", "collision", "collision rock", "loscollision:box"]
    materials = {
        "paint_white": paint("paint_white"),
        "paint_red": paint("paint_red"),
        "stone": paint("stone_grey"),
        "rock": paint("rock_brown"),
        "grass": paint("grass_green"),
        "wood_dark": paint("wood_brown"),
        "window_dark": paint("window_blue", shader=environment("sky", 0.5)),
        "iron_black": paint("iron_black"),
        "lamp_yellow": paint("lamp_yellow", shader=environment(None, 0, ambient=1)),
        "lantern_glass": paint("glass_blue", 90, shader=environment("sky", 0.4)),
        "roof_copper": paint("copper_green", shader=environment("sky", 0.25)),
        "postcard": paint("lighthouse_white", 120),
    }

    island = [(4.9, -1.2), (4.6, 0.1), (3.7, 0.8), (2.9, 1.35)]
    windows = [window(1, "window 1", 1, 4.4), window(1, "window 2", 6, 6.6), window(1, "window 3", 0, 10.4)]
    detailed = [rock("rock", 1, 15, island), plinth(1), tower(1, SIDES, BANDS), door(1), *windows, gallery(1),
                *lantern(1)]

    # From afar: one tower, its head in one piece, a rock of few faces.
    head = Poly("far head", 3)
    base = TOWER_TOP + 0.55
    head.surface([circle(TOP_RADIUS, TOWER_TOP, 8), circle(1.7, base, 8), circle(0.9, base, 8)], "stone")
    head.surface([circle(0.9, base, 8), circle(0.9, base + 1.8, 8)], "lamp_yellow")
    head.surface([circle(1.15, base + 1.8, 8), [(0, 0, base + 3.2)]], "roof_copper")
    far = [rock("far rock", 3, 9, [island[0], island[2]]), tower(3, 8, BANDS), head]

    card = Poly("postcard", 4)
    card.polygon([(-5, 0, -1), (5, 0, -1), (5, 0, 16.4), (-5, 0, 16.4)], "postcard")

    group = {"type": "group", "name": "lighthouse", "layer": 1, "children": [poly.node() for poly in detailed]}
    nodes = [group] + [poly.node() for poly in far] + [card.node(flat=True)]
    nodes += [
        marker("light0", 5, (0, 0, base + 1.15)),
        marker("mount0", 5, (0, -2.9, 1.56), (0, 0, math.pi)),
        marker("eye", 5, (0, -1.35, base + 1.7), (0.2, 0, 0)),
        volume_node("bounds", 6, (-6, -6, -1.2), (6, 6, 17)),
    ]
    hull = Poly("tower hull", 7)
    hull.surface([[(0, 0, 1)], circle(2.35, 1, 8), circle(TOP_RADIUS, TOWER_TOP, 8), circle(1.75, base, 8),
                  circle(1.15, base + 1.8, 8), [(0, 0, base + 3.2)]], None)
    rocks = rock("rock hull", 8, 9, [island[0], island[1], island[3]])
    rocks.materials, rocks.faces = [None], [(corners, 0) for corners, _ in rocks.faces]
    nodes += [hull.node(), rocks.node()]
    save("lighthouse", {"layers": layers, "materials": materials, "nodes": nodes})
    return detailed


# The greenhouse.


def pane(poly, points, material):
    """Glass that is seen from both sides."""
    poly.polygon(points, material)
    poly.polygon(points[::-1], material)


def greenhouse_glass(layer):
    """Walls from 0.6 to 2, a gable roof up to 3; the ridge runs along y."""
    poly = Poly("panes", layer)
    bays = [(-3.0 + 1.5 * k, -1.5 + 1.5 * k) for k in range(4)]
    for k, (y, Y) in enumerate(bays):
        wall = "glass_clear" if k % 2 else "glass_tinted"
        pane(poly, [(2, y, 0.6), (2, Y, 0.6), (2, Y, 2), (2, y, 2)], wall)
        pane(poly, [(-2, Y, 0.6), (-2, y, 0.6), (-2, y, 2), (-2, Y, 2)], wall)
        pane(poly, [(2, y, 2), (2, Y, 2), (0, Y, 3), (0, y, 3)], "glass_clear")
        pane(poly, [(-2, Y, 2), (-2, y, 2), (0, y, 3), (0, Y, 3)], "glass_clear")
    for y, side in ((-3, 1), (3, -1)):
        pane(poly, [(-2 * side, y, 0.6), (0, y, 0.6), (0, y, 2), (-2 * side, y, 2)], "glass_clear")
        pane(poly, [(0, y, 0.6), (2 * side, y, 0.6), (2 * side, y, 2), (0, y, 2)], "glass_tinted")
        pane(poly, [(-2 * side, y, 2), (2 * side, y, 2), (0, y, 3)], "glass_glow")
    return poly


def greenhouse_inside(layer):
    poly = Poly("wall and beds", layer)
    poly.box((-2.1, -3.1, 0), (2.1, 3.1, 0.6), "brick", "xXyY")
    inner = [[(-2, -3, z), (-2, 3, z), (2, 3, z), (2, -3, z)] for z in (0, 0.6)]
    poly.surface(inner, "brick")
    poly.surface([[(2.1, -3.1, 0.6), (2.1, 3.1, 0.6), (-2.1, 3.1, 0.6), (-2.1, -3.1, 0.6)],
                  [(2, -3, 0.6), (2, 3, 0.6), (-2, 3, 0.6), (-2, -3, 0.6)]], "brick")
    poly.polygon([(-0.7, -3, 0), (0.7, -3, 0), (0.7, 3, 0), (-0.7, 3, 0)], "stone")
    poly.box((-1.9, -2.9, 0), (-0.7, 2.9, 0.5), "soil", "XZ")
    poly.box((0.7, -2.9, 0), (1.9, 2.9, 0.5), "soil", "xZ")
    for k, (x, y) in enumerate([(-1.3, -2), (1.3, -1.2), (-1.3, 0.6), (1.3, 1.9)]):
        height = 1.1 + 0.2 * k
        for dx, dy in ((0.5, 0.2), (-0.2, 0.5)):
            pane(poly, [(x - dx, y - dy, 0.5), (x + dx, y + dy, 0.5), (x + dx, y + dy, 0.5 + height),
                        (x - dx, y - dy, 0.5 + height)], "leaves")
    return poly


def greenhouse():
    layers = [None, "Detail:size=150,sort", "Detail:size=40,no_strip", "bounds:no_black_border", "nodes",
              "collision:box"]
    materials = {
        "glass_clear": paint("glass_white", 70, shader=environment("sky", 0.3)),
        "glass_tinted": paint("glass_green", 120, reflection=[0, 0, 0.5, 0]),
        "glass_glow": paint("glass_yellow", 100, reflection=[0, 0, 1, 0]),
        "leaves": paint("leaves_green", 170),
        "brick": paint("brick_red"),
        "stone": paint("stone_grey"),
        "soil": paint("soil_brown"),
    }
    shell = Poly("shell", 2)
    outline = [[(2, -3, z), (2, 3, z), (-2, 3, z), (-2, -3, z)] for z in (0, 2)]
    shell.surface(outline, lambda i, j: "glass_tinted")
    roof = [(2, -3, 2), (2, 3, 2), (-2, 3, 2), (-2, -3, 2), (0, -3, 3), (0, 3, 3)]
    for face in ((0, 1, 5, 4), (2, 3, 4, 5), (3, 0, 4), (1, 2, 5)):
        shell.polygon([roof[k] for k in face], "glass_clear")
    parts = [greenhouse_inside(1), greenhouse_glass(1)]
    nodes = [part.node(flat=True) for part in parts] + [shell.node()]
    nodes += [volume_node("bounds", 3, (-2.2, -3.2, 0), (2.2, 3.2, 3.1)), marker("mount0", 4, (0, -3.2, 0))]
    save("greenhouse", {"layers": layers, "materials": materials, "nodes": nodes})
    return parts


# The creature: a fox.

BONES = {  # name: parent and where the bone begins
    "hips": (None, (0, -0.34, 0.60)),
    "chest": ("hips", (0, 0.02, 0.58)),
    "neck": ("chest", (0, 0.36, 0.66)),
    "head": ("neck", (0, 0.51, 0.83)),
    "tail1": ("hips", (0, -0.44, 0.63)),
    "tail2": ("tail1", (0, -0.68, 0.52)),
}
LEGS = {  # name: parent bone, side, joints from shoulder or hip to toe, in the plane of the leg
    "fl": ("chest", -1, ((0.28, 0.54), (0.25, 0.30), (0.28, 0.04))),
    "fr": ("chest", 1, ((0.28, 0.54), (0.25, 0.30), (0.28, 0.04))),
    "bl": ("hips", -1, ((-0.33, 0.56), (-0.25, 0.32), (-0.37, 0.04))),
    "br": ("hips", 1, ((-0.33, 0.56), (-0.25, 0.32), (-0.37, 0.04))),
}
LEG_SPREAD = 0.085
for leg, (parent, side, points) in LEGS.items():
    BONES["upper_" + leg] = (parent, (side * LEG_SPREAD, *points[0]))
    BONES["lower_" + leg] = ("upper_" + leg, (side * LEG_SPREAD, *points[1]))


def along_y(sections, n, tips=(None, None)):
    """Ovals across the y axis: (y, z, half height, half width); tips are (y, z)."""
    rings = [oval((0, y, z), (0, 0, h), (w, 0, 0), n) for y, z, h, w in sections]
    first, last = tips
    return ([[(0, *first)]] if first else []) + rings + ([[(0, *last)]] if last else [])


def fox_body(layer):
    poly = Poly("fox_body", layer)
    sections = [(-0.44, 0.61, 0.07, 0.065), (-0.34, 0.60, 0.135, 0.12), (-0.16, 0.585, 0.13, 0.115),
                (0.04, 0.575, 0.14, 0.12), (0.24, 0.58, 0.17, 0.135), (0.37, 0.61, 0.14, 0.11),
                (0.44, 0.65, 0.07, 0.06)]
    rings = along_y(sections, 10, ((-0.465, 0.615), (0.46, 0.665)))
    poly.surface(rings, lambda i, j: "fur_white" if j in (4, 5) else "fur_orange", repeat=2)
    return poly


def fox_head(layer):
    poly = Poly("fox_head", layer)
    neck = [((0, 0.32, 0.66), 0.12, 0.10), ((0, 0.42, 0.76), 0.10, 0.085), ((0, 0.52, 0.86), 0.085, 0.08)]
    up, out = (0, -0.66, 0.75), (1, 0, 0)
    poly.surface([oval(c, times(up, h), times(out, w), 8) for c, h, w in neck],
                 lambda i, j: "fur_white" if j in (3, 4) else "fur_orange", repeat=2)
    skull = [(0.47, 0.89, 0.06, 0.065), (0.53, 0.895, 0.10, 0.11), (0.61, 0.885, 0.10, 0.115),
             (0.68, 0.86, 0.065, 0.07), (0.79, 0.835, 0.035, 0.036)]
    poly.surface(along_y(skull, 8, ((0.44, 0.885), (0.82, 0.835))),
                 lambda i, j: "fur_dark" if i >= 5 else "fur_white" if j in (2, 3, 4, 5) else "fur_orange", repeat=2)
    for side in (-1, 1):
        x = side * 0.07
        base = oval((x, 0.545, 0.955), (side * 0.052, 0.012, -0.02 * side), (0, side * 0.03, 0), 6)
        tip = [(x + side * 0.03, 0.525, 1.085)]
        poly.surface([base, tip], lambda i, j: "fur_dark" if j in (0, 1, 2) else "fur_orange")
        eye = [(side * 0.075, 0.655, 0.905), (0.014, 0.022)]
        ring = oval(eye[0], (0, 0, eye[1][1]), (eye[1][1], 0, 0), 6)
        poly.surface([ring, [add(eye[0], (side * 0.012, 0.022, 0.004))]], "eye_black")
    return poly


def fox_tail(layer):
    poly = Poly("fox_tail", layer)
    path = [((0, -0.42, 0.63), 0.035), ((0, -0.52, 0.59), 0.06), ((0, -0.64, 0.52), 0.095), ((0, -0.77, 0.46), 0.11),
            ((0, -0.90, 0.43), 0.08)]
    # The tail runs along -y: the half axes are turned so that their product does too.
    rings = [oval(c, (r, 0, 0), (0, r * 0.3, r * 0.95), 8) for c, r in path]
    poly.surface(rings + [[(0, -1.03, 0.43)]], lambda i, j: "fur_white" if i >= 3 else "fur_orange", repeat=2)
    return poly


# Rings of a leg, from the shoulder to the toes: which part of which bone, half length and half width.
LEG_RINGS = [(0, -0.05, 0.085, 0.05), (0, 0.45, 0.062, 0.043), (0, 1, 0.04, 0.034), (1, 0.35, 0.031, 0.028),
             (1, 0.82, 0.026, 0.026), (1, 0.95, 0.045, 0.036)]
KNEE_RING = 2


def fox_leg(name, layer):
    _, side, points = LEGS[name]
    poly = Poly("leg_" + name, layer)
    thick = 1.25 if name[0] == "b" else 1.0
    rings = []
    for k, (part, t, length, width) in enumerate(LEG_RINGS):
        (y0, z0), (y1, z1) = points[part], points[part + 1]
        forward = 0.02 if k == len(LEG_RINGS) - 1 else 0
        center = (side * LEG_SPREAD, y0 + (y1 - y0) * t + forward, z0 + (z1 - z0) * t)
        grow = thick if k < KNEE_RING else 1
        rings.append(oval(center, (0, length * grow, 0), (width * grow, 0, 0), 8))
    y, z = points[2]
    sole = oval((side * LEG_SPREAD, y + 0.025, 0), (0, 0.052, 0), (0.038, 0, 0), 8)
    top = [(side * LEG_SPREAD * 0.7, points[0][0], points[0][1] + 0.09)]
    poly.surface([top] + rings + [sole, [(side * LEG_SPREAD, y + 0.025, 0)]],
                 lambda i, j: "fur_dark" if i > KNEE_RING + 1 else "fur_orange", repeat=2)
    return poly


def bone_of_vertices(polys):
    """{bone or "joint:" + bone that begins there: {polyhedron: vertices}}."""
    held = {}

    def hold(key, poly, vertex):
        held.setdefault(key, {}).setdefault(poly.name, []).append(vertex)

    for poly in polys:
        for v, (_, y, z) in enumerate(poly.vertices):
            if poly.name == "fox_body":
                key = "hips" if y < -0.17 else "joint:chest" if y < 0 else "chest"
            elif poly.name == "fox_head":
                key = "neck" if y < 0.40 and z < 0.84 else "joint:head" if v < 16 else "head"
            elif poly.name == "fox_tail":
                key = "tail1" if y > -0.6 else "joint:tail2" if y > -0.68 else "tail2"
            else:
                ring = (v - 1) // 8
                leg = poly.name[4:]
                key = "upper_" if ring < KNEE_RING else "joint:lower_" if ring == KNEE_RING else "lower_"
                key += leg
            hold(key, poly, v)
    return held


def bone_node(name, layer, held):
    """A bone, below it a joint for each bone that it carries, or for its own end."""
    children = [child for child, (parent, _) in BONES.items() if parent == name]
    location = rounded(BONES[name][1])
    node = {"type": "bone", "name": name, "layer": layer, "location": location, "muscles": [], "children": []}
    for child in children or ["end of " + name]:
        at = BONES[child][1] if child in BONES else BONES[name][1]
        joint = {"type": "joint", "name": "joint " + child, "layer": layer, "location": rounded(at)}
        tendon = held.get("joint:" + child)
        if tendon:
            joint["tendon"] = tendon
        if child in BONES:
            joint["children"] = [bone_node(child, layer, held)]
        # The muscle to the first joint holds what the bone carries.
        node["muscles"].append({"joint": "joint " + child, "vertices": {} if node["muscles"] else held.get(name, {})})
        node["children"].append(joint)
    return node


def posed(turns, hips_offset=(0, 0, 0)):
    """Where every bone is when its own turns (ax, ay, az), about its own axes, are added to the rest pose."""
    poses = {}
    for name, (parent, at) in BONES.items():
        ax, ay, az = turns.get(name, (0, 0, 0))
        own = product(turn(2, az), product(turn(0, ax), turn(1, ay)))
        if parent is None:
            poses[name] = (own, add(at, hips_offset))
        else:
            matrix, origin = poses[parent]
            offset = apply(matrix, sub(at, BONES[parent][1]))
            poses[name] = (product(matrix, own), add(origin, offset))
    return poses


def keys_of(frames, pose_at, moved=None):
    """The clip's keys of the bones, and of the saddle marker that goes with the chest."""
    keys = {}
    for frame in frames:
        poses = pose_at(frame)
        for name, (matrix, location) in poses.items():
            if moved is None or name in moved:
                key = {"frame": frame, "location": rounded(location), "rotation": rounded(host_angles(matrix))}
                keys.setdefault(name, []).append(key)
        if moved is None:
            matrix, origin = poses["chest"]
            saddle = add(origin, apply(matrix, sub(SADDLE, BONES["chest"][1])))
            key = {"frame": frame, "location": rounded(saddle), "rotation": rounded(host_angles(matrix))}
            keys.setdefault("mount0", []).append(key)
    return keys


SADDLE = (0, 0.05, 0.72)
WALK_FRAMES, STRIDE = 24, 0.5
GAIT = {"bl": 0.0, "fl": 0.25, "br": 0.5, "fr": 0.75}  # part of the cycle by which each leg lags


def walk_pose(frame):
    phase = 2 * math.pi * frame / WALK_FRAMES
    turns = {
        "hips": (0, 0.03 * math.sin(phase), 0.05 * math.sin(phase)),
        "chest": (0.02 * math.sin(2 * phase), -0.05 * math.sin(phase), -0.08 * math.sin(phase)),
        "neck": (0.05 * math.sin(2 * phase + 1), 0, 0.02 * math.sin(phase)),
        "head": (-0.05 * math.sin(2 * phase + 1), 0, 0.01 * math.sin(phase)),
        "tail1": (0.06 * math.sin(2 * phase), 0, 0.18 * math.sin(phase + 0.6)),
        "tail2": (0.08 * math.sin(2 * phase - 0.7), 0, 0.22 * math.sin(phase - 0.2)),
    }
    for name, lag in GAIT.items():
        swing = phase - 2 * math.pi * lag
        lift = max(0.0, math.cos(swing))  # while the leg moves forward
        turns["upper_" + name] = (STRIDE * math.sin(swing) + (0.2 * lift if name[0] == "b" else 0.1 * lift), 0, 0)
        turns["lower_" + name] = (-0.9 * lift + 0.1, 0, 0) if name[0] == "f" else (-0.6 * lift, 0, 0)
    return posed(turns, (0, 0, 0.012 * math.cos(2 * phase)))


def sit_pose(frame):
    t = frame / 20
    t = t * t * (3 - 2 * t)
    pitch = 0.47 * t
    turns = {
        "hips": (pitch, 0, 0),
        "chest": (0.12 * t, 0, 0),
        "neck": (-0.25 * t, 0, 0),
        "head": (-0.28 * t, 0, 0),
        "tail1": (-0.3 * t, 0, 0.35 * t),
        "tail2": (0.05 * t, 0, 0.7 * t),
    }
    for side in "lr":
        turns["upper_f" + side] = (-pitch - 0.16 * t, 0, 0)
        turns["lower_f" + side] = (0.12 * t, 0, 0)
        turns["upper_b" + side] = (0.9 * t - pitch, 0, 0)
        turns["lower_b" + side] = (-1.12 * t, 0, 0)
    return posed(turns, (0, 0, -0.25 * t))


def nod_pose(frame):
    dip = math.sin(math.pi * frame / 16) ** 2
    return posed({"neck": (-0.25 * dip, 0, 0), "head": (-0.35 * dip, 0, 0)})


def creature():
    layers = [None, "Detail:size=200", "Detail:size=48,autolod=45", "nodes", "bounds", "collision:cylinder"]
    materials = {
        "fur_orange": paint("fur_orange"),
        "fur_white": paint("fur_white"),
        "fur_dark": paint("fur_brown"),
        "eye_black": paint("eye_black", shader=environment("sky", 0.6)),
    }
    polys = [fox_body(1), fox_head(1), fox_tail(1)] + [fox_leg(name, 1) for name in LEGS]
    skeleton = {"type": "skeleton", "name": "skeleton", "layer": 1,
                "children": [bone_node("hips", 1, bone_of_vertices(polys))]}
    nodes = [poly.node() for poly in polys] + [skeleton]
    nodes += [
        marker("mount0", 3, SADDLE),
        marker("eye", 3, (0, 0.72, 0.92)),
        marker("cam", 3, (0, -2.5, 1.4), (0.2, 0, 0)),
        volume_node("bounds", 4, (-0.4, -1.1, 0), (0.4, 0.95, 1.2)),
    ]
    nod_frames = (0, 2, 4, 6, 8, 10, 12, 14, 16)
    clips = [
        {"name": "walk:fps=24,priority=2", "start": 0, "end": WALK_FRAMES, "loop": 1, "enabled": False,
         "keys": keys_of(range(0, WALK_FRAMES + 1, 2), walk_pose)},
        {"name": "nod:blend", "start": 0, "end": 16, "enabled": False,
         "keys": keys_of(nod_frames, nod_pose, ("neck", "head"))},
        {"name": "sit", "start": 0, "end": 20, "enabled": False, "keys": keys_of(range(0, 21, 2), sit_pose)},
    ]
    save("creature", {"host": {"frameRate": 30}, "layers": layers, "materials": materials, "nodes": nodes,
                      "clips": clips})
    return polys


if __name__ == "__main__":
    for make in (lighthouse, greenhouse, creature):
        print(make.__name__, sum(poly.triangles() for poly in make()), "triangles")
