// Runs in the browser: counts what is in a model, as tests/models/table.mjs compares it with a shape.

import { Box3, PropertyBinding } from 'three';
import { forEachTriangle, load } from './load.js';

const MOVES_NODES = /\.(position|quaternion|scale)$/;

const distinct = (corners) => !corners[0].equals(corners[1]) && !corners[1].equals(corners[2]) && !corners[2].equals(corners[0]);

// A shape's material is its texture, by the name of its file where that is known.
function materialOf(material) {
  if (!material?.map) return material;
  const { source } = material.map;
  return `${source.data?.src?.split('#')[1] ?? source.uuid}, ${material.transparent}`;
}

// Bounds are Y-up. A triangle with two corners at one place draws nothing and isn't counted.
window.facts = async (model) => {
  const scene = await load(model);
  const box = new Box3();
  const materials = new Set();
  const facts = { triangles: 0, flat: 0, doubleSided: 0 };
  forEachTriangle(scene, (corners, material) => {
    if (!distinct(corners)) {
      facts.flat += 1;
      return;
    }
    facts.triangles += 1;
    if (material?.side === 2) facts.doubleSided += 1;
    materials.add(materialOf(material));
    corners.forEach((corner) => box.expandByPoint(corner));
  });
  const joints = new Set();
  scene.traverse((object) => {
    if (object.isSkinnedMesh) object.skeleton.bones.forEach((bone) => joints.add(bone.userData.name ?? bone.name));
  });
  return {
    ...facts,
    materials: materials.size,
    bounds: box.isEmpty() ? null : { min: box.min.toArray(), max: box.max.toArray() },
    joints: [...joints].map(PropertyBinding.sanitizeNodeName),
    clips: scene.animations.map(({ name, duration, tracks }) =>
      ({ name, duration, moves: tracks.some((track) => MOVES_NODES.test(track.name)) })),
  };
};
