// Runs in the browser: draws a model and its shape from several sides at several times and says how alike they look.

import {
  AnimationMixer, Box3, InterpolateDiscrete, LoopOnce, Matrix3, MeshNormalMaterial, OrthographicCamera, ShaderMaterial, Sphere, Vector3,
  WebGLRenderer, WebGLRenderTarget,
} from 'three';
import { forEachTriangle, load } from './load.js';

const SIZE = 256; // pixels a side
const DIRECTIONS = [[0, 0, 1], [1, 0, 0], [0, 1, 0.001], [1, 0.7, 1], [-1, 0.3, -0.6]].map((d) => new Vector3(...d).normalize());

const renderer = new WebGLRenderer({ antialias: false });
const target = new WebGLRenderTarget(SIZE, SIZE);

// Colours that show where a texture lies; the same for coordinates that are whole numbers apart.
function textureShader(material, uvUp) {
  const { map } = material;
  const channel = map?.channel ? `uv${map.channel}` : 'uv';
  if (map) map.updateMatrix();
  return new ShaderMaterial({
    side: material.side,
    uniforms: { transform: { value: map?.matrix ?? new Matrix3() } },
    vertexShader: `
      #include <common>
      #include <skinning_pars_vertex>
      ${channel === 'uv' ? '' : `attribute vec2 ${channel};`}
      uniform mat3 transform;
      varying vec2 place;
      void main() {
        place = (transform * vec3(${channel}, 1.0)).xy;
        ${uvUp ? 'place.y = 1.0 - place.y;' : ''}
        #include <skinbase_vertex>
        #include <begin_vertex>
        #include <skinning_vertex>
        #include <project_vertex>
      }`,
    fragmentShader: `
      varying vec2 place;
      void main() {
        vec2 turn = 6.2831853 * place;
        gl_FragColor = vec4(0.5 + 0.5 * vec3(sin(turn.x), sin(turn.y), cos(turn.x + turn.y)), 1.0);
      }`,
  });
}

// Sides and normals are shown by what is drawn: a face that is turned round shows what lies behind it.
const SURFACES = {
  normals: ({ side }) => new MeshNormalMaterial({ side }),
  textures: textureShader,
};

function dress(scene, surface) {
  scene.traverse((object) => {
    if (!object.isMesh) return;
    object.userData.own ??= object.material;
    const { own } = object.userData;
    const made = [own].flat().map((material) => SURFACES[surface](material, scene.uvUp));
    object.material = Array.isArray(own) ? made : made[0];
  });
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

// How much of what either covers both cover, and how far apart the colours are there (0 to 255, the mean of a channel).
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
  return { covered: either / (SIZE * SIZE), overlap: either ? both / either : 0, apart: both ? apart / both : 0 };
}

// The pictures so far, two rows a surface: the model above, the shape below.
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
    forEachTriangle(scene, (corners) => corners.forEach((corner) => box.expandByPoint(corner)));
    undo();
  }
  const sphere = box.getBoundingSphere(new Sphere());
  sphere.radius *= 1.05;
  return sphere;
}

// A shape's frames hold a step as well as they can: it comes with its frame. Between two, the engine draws a line.
function onFrames(times, [theirs, ours]) {
  if (!theirs?.tracks.some((track) => track.getInterpolation() === InterpolateDiscrete)) return times;
  const frames = ours.tracks.map((track) => [...track.times]).sort((a, b) => b.length - a.length)[0];
  const nearest = (time) => frames.reduce((best, frame) => (Math.abs(frame - time) < Math.abs(best - time) ? frame : best));
  return times.map((time) => nearest(time) + 1e-5);
}

// One entry a surface, time and direction, all within one frame. clip: its name or number, shares: times as parts of it.
window.compare = async ({ model, shape, clip, shares }) => {
  const scenes = [await load(model), await load(shape)];
  // Readers may bring clips in different orders.
  const [of, others] = scenes.map(({ animations }) => animations);
  const shown = of[clip] ?? of.find(({ name }) => name === clip);
  const clips = [shown, others.find(({ name }) => name === shown?.name) ?? others[clip]];
  if (clip && !(clips[0] && clips[1])) throw new Error(`no animation ${clip} in both`);
  const times = onFrames(shares.map((share) => share * (clips[0]?.duration ?? 0)), clips);
  const sphere = framing(scenes[0], clips[0], times);
  const surfaces = Object.keys(SURFACES);
  sheet.width = SIZE * DIRECTIONS.length * times.length;
  sheet.height = SIZE * 2 * surfaces.length;
  const results = [];
  times.forEach((time, t) => {
    const undo = scenes.map((scene, i) => pose(scene, clips[i], time));
    surfaces.forEach((surface, s) => {
      scenes.forEach((scene) => dress(scene, surface));
      DIRECTIONS.forEach((direction, d) => {
        const pictures = scenes.map((scene) => draw(scene, sphere, direction));
        pictures.forEach((pixels, row) => paste(pixels, t * DIRECTIONS.length + d, 2 * s + row));
        results.push({ surface, time, direction: d, ...alike(...pictures) });
      });
    });
    undo.forEach((f) => f());
  });
  return { results, sheet: sheet.toDataURL('image/png').split(',')[1] };
};
