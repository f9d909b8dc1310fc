#pragma once

// Every field of a scene with a value that isn't its default, as the text of a file and as the scene that it says.

#include "standin/host/scene.h"

namespace marrowfen::standin {

inline constexpr char kEveryFieldText[] = R"(
  "host": {"major": 700, "minor": 2, "directory": "C:\\ts", "frameRate": 25, "playMode": 1, "activeTime": 0.5},
  "layers": [null, "Detail:size=64", null, "nodes"],
  "materials": {
    "wood": {"color": [1, 2, 3, 4], "texture": "D:\\wood.bmp", "reflection": [0.1, 0.2, 0.3, 0.4]},
    "plain": {},
    "glass": {"shader": {"name": "c_envr_map", "valid": false, "parameters": [
      {"name": "on", "type": "flag", "value": 1}, {"name": "mirror factor", "type": "float", "value": 0.4},
      {"name": "file name", "type": "text", "value": "sky"}, {"name": "odd", "type": 4, "value": {"a": [1.5, true]}},
      {"name": "bare", "type": 5}]}}},
  "nodes": [
    {"type": "polyhedron", "name": "hüll", "id": "hull", "layer": -3, "location": [1, 2, 3], "rotation": [0.1, 0, -0.0],
     "transform": [1,0,0,0, 0,1,0,0, 0,0,1,9], "axes": [4, 5, 6], "vertices": [[0,0,0],[1,0,0],[0,1e17,0],[0,0,1e-40]],
     "normals": [[0,0,1],[0,0,1],[0,0,1],[0,0,1]], "uvs": [[0.25, 0.1]], "materials": ["glass", null, "wood"],
     "faces": [{"corners": [[0,0],[1,0],[2,0],[3,0]], "material": 2}, {"corners": [[0,0],[1,0],[2,0]], "material": -7}],
     "vertexTransform": [2,0,0,0, 0,2,0,0, 0,0,2,0]},
    {"type": "skeleton", "name": "rig", "children": [
      {"type": "bone", "name": "b", "muscles": [{"joint": "j", "vertices": {"hull": [3, 0]}}], "children": [
        {"type": "joint", "name": "j", "tendon": {"hull": [1]}}]}, {"type": 999}, {"type": "ikgroup"}]}],
  "clips": [{"name": "walk:fps=12", "start": 1.5, "end": 9, "length": 7, "toggle": 1, "loop": 2, "enabled": false,
    "keys": {"j": [], "b": [{"frame": 1}, {"frame": 2.5, "location": [1,2,3], "rotation": [1,2,3],
             "transform": [1,0,0,0, 0,1,0,0, 0,0,1,0]}]}}])";

inline Scene everyField() {
    const Transform identity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0}, lifted{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 9};
    const Shader shader{"c_envr_map",
                        false,
                        {{"on", 1, true},
                         {"mirror factor", 7, 0.4F},
                         {"file name", 9, "sky"},
                         {"odd", 4, R"({"a": [1.5, true]})"},
                         {"bare", 5, {}}}};
    const Polyhedron hull{{{0, 0, 0}, {1, 0, 0}, {0, 1e17F, 0}, {0, 0, 1e-40F}},
                          std::vector<Vec3>(4, {0, 0, 1}),
                          {{0.25F, 0.1F}},
                          {{{{0, 0}, {1, 0}, {2, 0}, {3, 0}}, 2}, {{{0, 0}, {1, 0}, {2, 0}}, -7}},
                          {"glass", {}, "wood"},
                          Transform{2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0}};
    const Node joint{103, "j", {}, 0, {}, {}, {}, {}, {}, {}, {}, {{"hull", {1}}}};
    const Node bone{107, "b", {}, 0, {}, {}, {}, {}, {joint}, {}, {{"j", {{"hull", {3, 0}}}}}, {}};
    const Node odd{999, "", {}, 0, {}, {}, {}, {}, {}, {}, {}, {}},
        group{206, "", {}, 0, {}, {}, {}, {}, {}, {}, {}, {}};
    const std::vector<Key> keys = {{1, {}, {}, {}}, {2.5F, Vec3{1, 2, 3}, Vec3{1, 2, 3}, identity}};
    return {{700, 2, "C:\\ts", 25, 1, 0.5F},
            {{}, "Detail:size=64", {}, "nodes"},
            {{"wood", {{1, 2, 3, 4}, "D:\\wood.bmp", {0.1F, 0.2F, 0.3F, 0.4F}, {}}},
             {"plain", {}},
             {"glass", {{255, 255, 255, 255}, "", {}, shader}}},
            {{201, "hüll", "hull", -3, {1, 2, 3}, {0.1F, 0, -0.0F}, lifted, Vec3{4, 5, 6}, {}, hull, {}, {}},
             {210, "rig", {}, 0, {}, {}, {}, {}, {bone, odd, group}, {}, {}, {}}},
            {{"walk:fps=12", 1.5F, 9, 7.0F, 1, 2, false, {{"j", {}}, {"b", keys}}}}};
}

}  // namespace marrowfen::standin
