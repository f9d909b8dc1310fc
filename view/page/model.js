// The model: a scene a detail level, the nodes of the first one, and the sequences.

import { AdditiveBlending, AnimationMixer, Group, LoopRepeat, SubtractiveBlending } from 'three';
import { GLTFLoader } from 'three/examples/jsm/loaders/GLTFLoader.js';

const NODE_KINDS = ['bone', 'marker', 'root']; // the shape's nodes, not what holds its meshes

function bytesOf(base64) {
  const text = atob(base64.trim());
  return Uint8Array.from(text, (c) => c.charCodeAt(0)).buffer;
}

function describeLevel(group) {
  const facts = group.userData;
  return { group, name: facts.name ?? group.name, kind: facts.kind ?? 'detail', size: facts.size ?? -1, facts };
}

// Materials once each, with what glTF can't say about them.
function collectMaterials(root) {
  const materials = new Map();
  root.traverse((object) => {
    if (!object.isMesh) return;
    object.castShadow = true;
    object.frustumCulled = !object.isSkinnedMesh;
    const { material } = object;
    materials.set(material.uuid, material);
    if (material.transparent) {
      object.castShadow = false;
      material.depthWrite = false;
    }
  });
  for (const material of materials.values()) {
    const flags = material.userData.flags ?? [];
    if (flags.includes('additive')) material.blending = AdditiveBlending;
    if (flags.includes('subtractive')) Object.assign(material, { blending: SubtractiveBlending, premultipliedAlpha: true });
  }
  return [...materials.values()];
}

// A sequence as the panel shows it. `keysPerSecond` counts in the sequence's own key frames.
function describeSequence(clip, json, mixer) {
  const facts = json.extras ?? {};
  const action = mixer.clipAction(clip);
  action.setLoop(LoopRepeat, Infinity);
  const keysPerSecond = facts.frames && facts.duration ? facts.frames / facts.duration : 30;
  // The clip ends with its last key; the sequence, one key's time later.
  const seconds = facts.duration || clip.duration;
  const keys = facts.frames || Math.round(clip.duration * keysPerSecond) + 1;
  return { clip, action, name: json.name ?? clip.name, facts, keysPerSecond, seconds, keys };
}

export async function loadModel(base64) {
  const gltf = await new GLTFLoader().parseAsync(bytesOf(base64), '');
  const { json } = gltf.parser;
  const root = new Group();
  root.add(...gltf.scenes);
  gltf.scenes.forEach((scene, i) => { scene.userData.name = json.scenes[i].name; });

  const levels = gltf.scenes.map(describeLevel);
  const nodes = [];
  gltf.scenes[0].traverse((object) => { if (NODE_KINDS.includes(object.userData.kind)) nodes.push(object); });
  nodes.forEach((node) => {
    const association = gltf.parser.associations.get(node);
    node.userData.name = json.nodes[association?.nodes]?.name ?? node.name;
  });

  const mixer = new AnimationMixer(root);
  const sequences = gltf.animations.map((clip, i) => describeSequence(clip, json.animations[i], mixer));
  return { root, levels, nodes, sequences, mixer, materials: collectMaterials(root), facts: json.extras ?? {} };
}
