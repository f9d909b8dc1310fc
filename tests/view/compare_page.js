// Runs in the browser: draws two models from several sides at several times and says how alike the pictures are.

import {
  AnimationMixer, Box3, LoopOnce, MeshNormalMaterial, OrthographicCamera, Scene, Sphere, Vector3, WebGLRenderer,
  WebGLRenderTarget,
} from 'three';
import { FBXLoader } from 'three/examples/jsm/loaders/FBXLoader.js';
import { GLTFLoader } from 'three/examples/jsm/loaders/GLTFLoader.js';

const SIZE = 256; // pixels a side
const DIRECTIONS = [[0, 0, 1], [1, 0, 0], [0, 1, 0.001], [1, 0.7, 1], [-1, 0.3, -0.6]].map((d) => new Vector3(...d).normalize());

const renderer = new WebGLRenderer({ antialias: false });
const target = new WebGLRenderTarget(SIZE, SIZE);

// A shape binds each vertex to one bone, the one with the largest weight; this does the same to a model.
function bindToHeaviest(mesh) {
  const { skinIndex, skinWeight } = mesh.geometry.attributes;
  for (let v = 0; v < skinWeight.count; v += 1) {
    const weights = [0, 1, 2, 3].map((i) => skinWeight.getComponent(v, i));
    const heaviest = weights.indexOf(Math.max(...weights));
    skinIndex.setXYZW(v, skinIndex.getComponent(v, heaviest), 0, 0, 0);
    skinWeight.setXYZW(v, 1, 0, 0, 0);
  }
}

async function load({ name, base64 }) {
  const buffer = Uint8Array.from(atob(base64), (c) => c.charCodeAt(0)).buffer;
  const scene = new Scene();
  if (name.endsWith('.fbx')) {
    const model = new FBXLoader().parse(buffer, '');
    scene.add(model);
    scene.animations = model.animations;
  } else {
    const gltf = await new GLTFLoader().parseAsync(buffer, '');
    scene.add(gltf.scene);
    scene.animations = gltf.animations;
  }
  scene.traverse((object) => {
    object.frustumCulled = false;
    if (object.isSkinnedMesh) bindToHeaviest(object);
    if (object.isLine || object.isPoints) object.visible = false;
  });
  // Shaded by the faces themselves: a host has one normal a vertex, so hard edges come out soft. A face that is turned
  // round shows in that what lies behind it is drawn.
  scene.overrideMaterial = new MeshNormalMaterial({ flatShading: true });
  scene.updateMatrixWorld(true);
  return scene;
}

function pose(scene, clip, seconds) {
  if (!clip) return () => {};
  const mixer = new AnimationMixer(scene);
  const action = mixer.clipAction(clip).setLoop(LoopOnce, 1);
  action.clampWhenFinished = true;
  action.play();
  mixer.setTime(seconds);
  return () => mixer.stopAllAction();
}

function draw(scene, sphere, direction) {
  const camera = new OrthographicCamera(-sphere.radius, sphere.radius, sphere.radius, -sphere.radius, 0, sphere.radius * 20);
  camera.position.copy(sphere.center).addScaledVector(direction, sphere.radius * 10);
  camera.lookAt(sphere.center);
  renderer.setRenderTarget(target);
  renderer.setClearColor(0, 0);
  renderer.clear();
  renderer.render(scene, camera);
  const pixels = new Uint8Array(SIZE * SIZE * 4);
  renderer.readRenderTargetPixels(target, 0, 0, SIZE, SIZE, pixels);
  return pixels;
}

// How much of what either covers both cover, and how far apart the faces' normals are there (0 to 255, the mean of a channel).
function alike(a, b) {
  let both = 0;
  let either = 0;
  let apart = 0;
  for (let i = 0; i < a.length; i += 4) {
    if (a[i + 3] || b[i + 3]) either += 1;
    if (!a[i + 3] || !b[i + 3]) continue;
    both += 1;
    for (let channel = 0; channel < 3; channel += 1) apart += Math.abs(a[i + channel] - b[i + channel]) / 3;
  }
  return { covered: either / (SIZE * SIZE), overlap: either ? both / either : 0, normals: both ? apart / both : 0 };
}

// The pictures so far, two rows: the model above, the shape below.
const sheet = document.createElement('canvas');
function paste(pixels, column, row) {
  const image = new ImageData(SIZE, SIZE);
  for (let y = 0; y < SIZE; y += 1) {
    image.data.set(pixels.subarray((SIZE - 1 - y) * SIZE * 4, (SIZE - y) * SIZE * 4), y * SIZE * 4);
  }
  sheet.getContext('2d').putImageData(image, column * SIZE, row * SIZE);
}

// A sphere around everything that the poses reach.
function framing(scene, clip, times) {
  const box = new Box3();
  for (const time of times) {
    const undo = pose(scene, clip, time);
    scene.updateMatrixWorld(true);
    box.expandByObject(scene, true);
    undo();
  }
  const sphere = box.getBoundingSphere(new Sphere());
  sphere.radius *= 1.05;
  return sphere;
}

// The share of triangles whose vertex normals point to the side that they are seen from.
function outwardShare(scene) {
  let outward = 0;
  let all = 0;
  const [a, b, c, n] = [0, 1, 2, 3].map(() => new Vector3());
  scene.traverse(({ geometry }) => {
    const { position, normal } = geometry?.attributes ?? {};
    if (!normal) return;
    for (let i = 0; i < geometry.index.count; i += 3) {
      const corners = [0, 1, 2].map((k) => geometry.index.getX(i + k));
      [a, b, c].forEach((p, k) => p.fromBufferAttribute(position, corners[k]));
      const face = b.sub(a).cross(c.sub(a));
      const sum = new Vector3();
      for (const corner of corners) sum.add(n.fromBufferAttribute(normal, corner));
      all += 1;
      if (face.dot(sum) > 0) outward += 1;
    }
  });
  return all ? outward / all : 0;
}

// One entry a time and direction. Frames both by the model, or, where units differ, each by itself.
window.compare = async ({ model, shape, clip, times, ownFrames }) => {
  const scenes = [await load(model), await load(shape)];
  const clips = scenes.map((scene) => (clip === undefined ? null : scene.animations[clip]));
  if (clip !== undefined && !(clips[0] && clips[1])) throw new Error(`no animation ${clip} in both`);
  const spheres = scenes.map((scene, i) => framing(scene, clips[i], times));
  if (!ownFrames) spheres[1] = spheres[0];
  sheet.width = SIZE * DIRECTIONS.length * times.length;
  sheet.height = SIZE * 2;
  const results = [];
  times.forEach((time, t) => {
    const undo = scenes.map((scene, i) => pose(scene, clips[i], time));
    DIRECTIONS.forEach((direction, d) => {
      const pictures = scenes.map((scene, i) => draw(scene, spheres[i], direction));
      pictures.forEach((pixels, row) => paste(pixels, t * DIRECTIONS.length + d, row));
      results.push({ time, direction: d, ...alike(...pictures) });
    });
    undo.forEach((f) => f());
  });
  return { results, sheet: sheet.toDataURL('image/png').split(',')[1], outward: outwardShare(scenes[1]) };
};
