#!/usr/bin/env python3
"""Makes random scene files with something of everything that an export may hold: make_scenes.py COUNT FOLDER.

The same count makes the same scenes. Most can be exported; those that are refused leave a log to compare.
"""

import json
import math
import os
import random
import sys

DETAIL_TAGS = ["no_strip", "sort", "billboard", "billboardz", "merge", "env", "frob", "size=x"]
COLLISIONS = ["collision", "collision:box", "collision:sphere", "collision:cylinder", "loscollision:mesh", "LosCollision: box"]
CLIP_TAGS = ["fps=12", "fps=0", "blend", "priority=3", "cyclic", "bled"]
SHADERS = ["phong", "metal", "glass"]


class Maker:
    def __init__(self, seed):
        self.random = random.Random(seed)
        self.layers, self.nodes, self.polyhedra, self.bones = [None], [], [], []

    def number(self, most=4.0):
        value = self.random.uniform(-most, most)
        return self.random.choice([value, round(value), round(value, 2), 0.0])

    def point(self, most=4.0):
        return [self.number(most) for _ in range(3)]

    def some(self, things, most):
        return self.random.sample(things, self.random.randint(0, min(most, len(things))))

    def pose(self):
        pose = {}
        if self.random.random() < 0.6:
            pose["location"] = self.point()
        if self.random.random() < 0.5:
            pose["rotation"] = [self.random.choice([self.number(math.pi), math.pi / 2, math.pi, 0.0]) for _ in range(3)]
        return pose

    def surface(self):
        """Vertices and faces of a bent grid, a fan or a soup."""
        kind, n = self.random.randrange(3), self.random.randint(1, 6)
        if kind == 0:
            vertices = [[x, y, self.number(0.3)] for y in range(n + 1) for x in range(n + 1)]
            quads = [y * (n + 1) + x for y in range(n) for x in range(n)]
            return vertices, [[q, q + n + 1, q + n + 2, q + 1] for q in quads]
        if kind == 1:
            vertices = [[0, 0, 1]] + [[math.cos(i), math.sin(i), self.number(0.1)] for i in range(n + 2)]
            return vertices, [[0, i + 2, i + 1] for i in range(n + 1)]
        vertices = [self.point() for _ in range(3 + n)]
        return vertices, [self.random.sample(range(3 + n), 3) for _ in range(2 * n)]

    def polyhedron(self, layer):
        vertices, faces = self.surface()
        uvs = [[self.number(2), self.number(2)] for _ in range(self.random.randint(0, 4))]
        node = {"type": "polyhedron", "name": f"p{len(self.polyhedra)}", "layer": layer, "vertices": vertices,
                "materials": self.random.choices(["plain", "glass", "skin", None], k=2),
                "faces": [{"corners": [[v, self.random.randrange(len(uvs)) if uvs else 0] for v in face],
                           "material": self.random.randrange(3)} for face in faces]}
        if uvs:
            node["uvs"] = uvs
        node.update(self.pose())
        self.polyhedra.append((node["name"], len(vertices)))
        return node

    def bound_vertices(self):
        return {name: sorted(self.random.sample(range(count), self.random.randint(0, count)))
                for name, count in self.some(self.polyhedra, 2)}

    def bone(self, layer, depth):
        name = f"b{len(self.bones)}"
        self.bones.append(name)
        joint = {"type": "joint", "name": f"j {name}", "layer": layer, "tendon": self.bound_vertices()}
        children = [joint] + [self.bone(layer, depth - 1) for _ in range(self.random.randint(0, depth))]
        return {"type": "bone", "name": name, "layer": layer, "children": children,
                "muscles": [{"joint": joint["name"], "vertices": self.bound_vertices()}], **self.pose()}

    def clip(self, i):
        start, length = self.random.choice([0, 1, 2.5]), self.random.randint(0, 8)
        keys = {node: [{"frame": start + f, **self.pose()} for f in sorted(self.random.sample(range(9), 2))]
                for node in self.some(self.bones, 3)}
        return {"name": ":".join([f"clip{i}"] + [",".join(self.some(CLIP_TAGS, 2))]), "start": start,
                "end": start + length, "keys": keys, "loop": self.random.randint(0, 1), "enabled": self.random.random() < 0.9}

    def scene(self):
        sizes = sorted(self.random.sample(range(1, 400), self.random.randint(1, 3)), reverse=True)
        for i, size in enumerate(sizes):
            tags = [f"size={size}"] + self.some(DETAIL_TAGS, 2)
            if i and self.random.random() < 0.5:
                tags.append(f"autolod={self.random.randint(1, 99)}")
            self.layers.append("Detail:" + ",".join(tags))
        self.layers += self.some(COLLISIONS, 3)
        for layer in range(1, len(self.layers)):
            self.nodes += [self.polyhedron(layer) for _ in range(self.random.randint(1, 2))]
        if self.random.random() < 0.5:
            self.layers.append("nodes")
            self.nodes.append(self.polyhedron(len(self.layers) - 1))
        if self.random.random() < 0.6:
            bones = [self.bone(1, 2) for _ in range(self.random.randint(1, 2))]
            self.nodes.append({"type": "skeleton", "name": "rig", "layer": 1, "children": bones})
        self.random.shuffle(self.nodes)
        shader = {"name": self.random.choice(SHADERS), "parameters": [{"name": "Reflection", "type": "float", "value": 0.3}]}
        return {"format": "marrowfen-scene", "version": 1, "layers": self.layers, "nodes": self.nodes,
                "materials": {"plain": {"texture": "wood.png"}, "glass": {"color": [1, 2, 3, 90], "shader": shader},
                              "skin": {"texture": "skin.jpg", "reflection": [9, 9, 9, 9]}},
                "clips": [self.clip(i) for i in range(self.random.randint(0, 3))]}


def main():
    count, folder = int(sys.argv[1]), sys.argv[2]
    os.makedirs(folder, exist_ok=True)
    for seed in range(count):
        with open(os.path.join(folder, f"random{seed}.scene.json"), "w", encoding="utf-8") as file:
            json.dump(Maker(seed).scene(), file)


main()
