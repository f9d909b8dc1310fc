"""Makes the watchman in Blender, by the names that Marrowfen reads, and exports it, as binary glTF or as FBX.

    blender --background --factory-startup --python examples/blender/watchman.py -- watchman.glb [picture.png]

Two levels of detail on one armature, a box to bump into, markers for a mount and the eye, and two actions. Blender's own
front, -Y, is glTF's +Z and the engine's +Y.
"""

import math
import sys

import bpy
from mathutils import Vector

FRAMES_PER_SECOND = 24
COLOURS = {"brass": (0.72, 0.45, 0.12, 1), "slate": (0.12, 0.16, 0.22, 1), "lamp": (1.0, 0.85, 0.4, 1)}

# name: parent, head, tail (metres)
BONES = {
    "hips": (None, (0, 0, 0.9), (0, 0, 1.1)),
    "chest": ("hips", (0, 0, 1.1), (0, 0, 1.5)),
    "head": ("chest", (0, 0, 1.5), (0, 0, 1.85)),
    "arm.L": ("chest", (0.3, 0, 1.45), (0.3, 0, 0.85)),
    "arm.R": ("chest", (-0.3, 0, 1.45), (-0.3, 0, 0.85)),
    "leg.L": ("hips", (0.13, 0, 0.9), (0.13, 0, 0)),
    "leg.R": ("hips", (-0.13, 0, 0.9), (-0.13, 0, 0)),
}

# bone, material, middle, size; the head and its lamp are balls
BOXES = [
    ("hips", "slate", (0, 0, 0.95), (0.4, 0.24, 0.2)),
    ("chest", "brass", (0, 0, 1.28), (0.48, 0.28, 0.44)),
    ("arm.L", "slate", (0.3, 0, 1.15), (0.12, 0.14, 0.6)),
    ("arm.R", "slate", (-0.3, 0, 1.15), (0.12, 0.14, 0.6)),
    ("leg.L", "brass", (0.13, -0.02, 0.43), (0.16, 0.2, 0.86)),
    ("leg.R", "brass", (-0.13, -0.02, 0.43), (0.16, 0.2, 0.86)),
]
BALLS = [("head", "brass", (0, 0, 1.68), 0.17), ("head", "lamp", (0, -0.15, 1.7), 0.07), ("arm.R", "lamp", (-0.3, -0.1, 0.82), 0.1)]

# action: bone, axis of its turn, degrees at even parts of the action
ACTIONS = {
    "walk": (24, [("leg.L", 30), ("leg.R", -30), ("arm.L", -25), ("arm.R", 25)], [0, 1, 0, -1, 0]),
    "salute": (36, [("arm.R", 150), ("head", 12)], [0, 1, 1, 0]),
}


def material(name):
    made = bpy.data.materials.get(name)
    if made is None:
        made = bpy.data.materials.new(name)
        made.use_nodes = True
        shader = made.node_tree.nodes["Principled BSDF"]
        shader.inputs["Base Color"].default_value = COLOURS[name]
        made.use_backface_culling = True
    return made


def finish_part(bone, colour, smooth):
    part = bpy.context.object
    bpy.ops.object.transform_apply(location=True, rotation=True, scale=True)
    part.data.materials.append(material(colour))
    part.vertex_groups.new(name=bone).add(range(len(part.data.vertices)), 1.0, "REPLACE")
    for polygon in part.data.polygons:
        polygon.use_smooth = smooth
    return part


def body(name, armature, segments):
    """One mesh of all parts, bound to the armature: boxes with hard edges, balls without."""
    parts = []
    for bone, colour, middle, size in BOXES:
        bpy.ops.mesh.primitive_cube_add(size=1, location=middle, scale=size)
        parts.append(finish_part(bone, colour, False))
    for bone, colour, middle, radius in BALLS:
        bpy.ops.mesh.primitive_uv_sphere_add(segments=segments, ring_count=segments // 2, radius=radius, location=middle)
        parts.append(finish_part(bone, colour, True))
    with bpy.context.temp_override(active_object=parts[0], selected_editable_objects=parts):
        bpy.ops.object.join()
    mesh = parts[0]
    mesh.name = name
    mesh.parent = armature
    mesh.modifiers.new("Armature", "ARMATURE").object = armature


def skeleton():
    bpy.ops.object.armature_add()
    armature = bpy.context.object
    armature.name = "watchman"
    bpy.ops.object.mode_set(mode="EDIT")
    bones = armature.data.edit_bones
    bones.remove(bones[0])
    for name, (parent, head, tail) in BONES.items():
        bone = bones.new(name)
        bone.head, bone.tail = Vector(head), Vector(tail)
        bone.parent = bones[parent] if parent else None
    bpy.ops.object.mode_set(mode="OBJECT")
    return armature


def animate(armature, name):
    """An action on a track of its own, which is how Blender exports several."""
    frames, turns, swing = ACTIONS[name]
    animation = armature.animation_data or armature.animation_data_create()
    animation.action = bpy.data.actions.new(name)
    for bone_name, degrees in turns:
        bone = armature.pose.bones[bone_name]
        bone.rotation_mode = "XYZ"
        for i, part in enumerate(swing):
            bone.rotation_euler = (math.radians(degrees * part), 0, 0)
            bone.keyframe_insert("rotation_euler", frame=round(i * frames / (len(swing) - 1)))
        bone.rotation_euler = (0, 0, 0)
    track = animation.nla_tracks.new()
    track.name = name
    track.strips.new(name, 0, animation.action)
    track.mute = True
    animation.action = None


def marker(name, parent, place):
    empty = bpy.data.objects.new(name, None)
    empty.location = place
    empty.parent = parent
    bpy.context.collection.objects.link(empty)
    return empty


def draw(picture):
    """What Blender itself shows, from the front and above."""
    for item in bpy.data.objects:
        item.hide_render = item.name.startswith("collision") or item.name.endswith("size=40")
    scene = bpy.context.scene
    scene.render.engine = "CYCLES"
    scene.cycles.samples = 64
    scene.cycles.use_denoising = False
    scene.render.resolution_x, scene.render.resolution_y = 330, 340
    scene.render.filepath = picture
    bpy.ops.object.light_add(type="SUN", rotation=(0.7, 0.2, 0.5))
    bpy.context.object.data.energy = 3
    bpy.ops.object.camera_add(location=(1.9, -4.2, 1.9), rotation=(math.radians(77), 0, math.radians(24)))
    scene.camera = bpy.context.object
    scene.world.node_tree.nodes["Background"].inputs[0].default_value = (0.2, 0.25, 0.3, 1)
    bpy.ops.render.render(write_still=True)


def main():
    output, *picture = sys.argv[sys.argv.index("--") + 1:]
    bpy.ops.wm.read_factory_settings(use_empty=True)
    scene = bpy.context.scene
    scene.render.fps = FRAMES_PER_SECOND
    scene.world = bpy.data.worlds.new("World")
    scene.world.use_nodes = True

    armature = skeleton()
    body("Detail:size=200", armature, segments=16)
    body("Detail:size=40", armature, segments=6)
    bpy.ops.mesh.primitive_cube_add(size=1, location=(0, 0, 0.93), scale=(0.7, 0.4, 1.86))
    bpy.context.object.name = "collision"
    nodes = marker("nodes", None, (0, 0, 0))
    marker("mount0", nodes, (-0.3, -0.1, 0.82))
    marker("eye", nodes, (0, -0.2, 1.7))
    for name in ACTIONS:
        animate(armature, name)

    if output.endswith(".fbx"):
        bpy.ops.export_scene.fbx(filepath=output, add_leaf_bones=False)
    else:
        bpy.ops.export_scene.gltf(filepath=output, export_format="GLB")
    if picture:
        draw(picture[0])


main()
