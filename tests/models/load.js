// Runs in the browser: reads a model with the loaders of three.js, which share nothing with ours, into a scene that is
// Y-up and in the file's own front and units.

import { Group, LoadingManager, Mesh, MeshPhongMaterial, Scene, Vector3 } from 'three';
import { ThreeMFLoader } from 'three/examples/jsm/loaders/3MFLoader.js';
import { AMFLoader } from 'three/examples/jsm/loaders/AMFLoader.js';
import { BVHLoader } from 'three/examples/jsm/loaders/BVHLoader.js';
import { ColladaLoader } from 'three/examples/jsm/loaders/ColladaLoader.js';
import { FBXLoader } from 'three/examples/jsm/loaders/FBXLoader.js';
import { GLTFLoader } from 'three/examples/jsm/loaders/GLTFLoader.js';
import { LWOLoader } from 'three/examples/jsm/loaders/LWOLoader.js';
import { MD2Loader } from 'three/examples/jsm/loaders/MD2Loader.js';
import { MTLLoader } from 'three/examples/jsm/loaders/MTLLoader.js';
import { OBJLoader } from 'three/examples/jsm/loaders/OBJLoader.js';
import { PLYLoader } from 'three/examples/jsm/loaders/PLYLoader.js';
import { STLLoader } from 'three/examples/jsm/loaders/STLLoader.js';
import { TDSLoader } from 'three/examples/jsm/loaders/TDSLoader.js';
import { VRMLLoader } from 'three/examples/jsm/loaders/VRMLLoader.js';
import { GLTFExporter } from 'three/examples/jsm/exporters/GLTFExporter.js';
import { mergeVertices } from 'three/examples/jsm/utils/BufferGeometryUtils.js';
import { unzipSync } from 'three/examples/jsm/libs/fflate.module.js';
import { MeshoptDecoder } from 'three/examples/jsm/libs/meshopt_decoder.module.js';

const PIXEL = 'data:image/png;base64,iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg==';

// Pictures are of no interest here, only that there is one, and its file's name.
const manager = new LoadingManager();
manager.setURLModifier((url) => {
  if (/^(blob:|data:(?!image))/.test(url)) return url;
  return url.startsWith('data:') ? PIXEL : `${PIXEL}#${url.split(/[\\/]/).pop().replace(/\.[^.]*$/, '').toLowerCase()}`;
});
let loading = false;
manager.onStart = () => { loading = true; };
manager.onLoad = () => { loading = false; };
const allLoaded = async () => {
  while (loading) await new Promise((resolve) => { setTimeout(resolve, 1); });
};

function bytesOf(base64) {
  return Uint8Array.from(atob(base64), (c) => c.charCodeAt(0));
}

function textOf(bytes) {
  const mark = (bytes[0] << 8) | bytes[1];
  const coding = mark === 0xfeff ? 'utf-16be' : mark === 0xfffe ? 'utf-16le' : 'utf-8';
  return new TextDecoder(coding).decode(bytes);
}

function meshOf(geometry, material = new MeshPhongMaterial()) {
  return new Group().add(new Mesh(geometry, material));
}

function parseObj(bytes, files) {
  const loader = new OBJLoader(manager);
  const libraries = Object.keys(files).filter((name) => name.endsWith('.mtl'));
  if (libraries.length) {
    const text = libraries.map((name) => textOf(bytesOf(files[name]))).join('\n');
    loader.setMaterials(new MTLLoader(manager).parse(text, ''));
  }
  return loader.parse(textOf(bytes));
}

function parseZae(bytes) {
  const entries = unzipSync(bytes);
  const name = Object.keys(entries).find((entry) => entry.toLowerCase().endsWith('.dae'));
  return parseCollada(entries[name]);
}

function parseCollada(bytes) {
  const { scene } = new ColladaLoader(manager).parse(textOf(bytes), '');
  return scene;
}

function parseFbx(bytes) {
  const model = new FBXLoader(manager).parse(bytes.buffer, '');
  model.scale.multiplyScalar((model.userData.unitScaleFactor ?? 1) / 100); // centimetres
  return model;
}

async function parseGltf(bytes) {
  const loader = new GLTFLoader(manager);
  loader.setMeshoptDecoder(MeshoptDecoder);
  const gltf = await loader.parseAsync(bytes.buffer, '');
  gltf.scene.animations = gltf.animations;
  return gltf.scene;
}

function parseBvh(bytes) {
  const { skeleton, clip } = new BVHLoader().parse(textOf(bytes));
  const group = new Group().add(skeleton.bones[0]);
  group.animations = [clip];
  return group;
}

// In millimetres where the file says a unit.
function parseAmf(bytes) {
  const model = new AMFLoader(manager).parse(bytes.buffer);
  if (/<amf[^>]*unit=/.test(textOf(bytes.subarray(0, 500)))) model.scale.multiplyScalar(0.001);
  return model;
}

// up: which of the file's axes is up once the loader has read it; uvUp: texture coordinates grow upwards.
const FORMATS = {
  '3mf': { parse: (bytes) => new ThreeMFLoader(manager).parse(bytes.buffer), up: 'z', uvUp: true },
  amf: { parse: parseAmf, up: 'z' },
  bvh: { parse: parseBvh },
  dae: { parse: parseCollada, uvUp: true },
  fbx: { parse: parseFbx, uvUp: true },
  glb: { parse: parseGltf },
  lwo: { parse: (bytes) => new Group().add(...new LWOLoader(manager).parse(bytes.buffer, '', '').meshes), uvUp: true },
  md2: { parse: (bytes) => meshOf(new MD2Loader(manager).parse(bytes.buffer)), up: 'y', uvUp: true },
  obj: { parse: parseObj, uvUp: true },
  ply: { parse: (bytes) => meshOf(new PLYLoader(manager).parse(bytes.buffer)), uvUp: true },
  stl: { parse: (bytes) => meshOf(new STLLoader(manager).parse(bytes.buffer)), up: 'z' },
  '3ds': { parse: (bytes) => new TDSLoader(manager).parse(bytes.buffer, ''), up: 'z', uvUp: true },
  wrl: { parse: (bytes) => new VRMLLoader(manager).parse(textOf(bytes), '') },
  zae: { parse: parseZae, uvUp: true },
};
FORMATS.gltf = FORMATS.glb;

// glTF says that a mesh without normals is flat, and other programs show the other formats so.
function addMissingNormals(mesh) {
  if (mesh.geometry.attributes.normal) return;
  mesh.geometry = mesh.geometry.index ? mesh.geometry.toNonIndexed() : mesh.geometry.clone();
  mesh.geometry.computeVertexNormals();
}

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

function formatOf(name) {
  return FORMATS[name.split('.').pop().toLowerCase()];
}

// The model as a binary glTF file, written by three.js. Base64.
window.toGlb = async ({ name, files }) => {
  const model = await formatOf(name).parse(bytesOf(files[name]), files);
  model.traverse((object) => {
    if (!object.isMesh) return;
    if (!object.geometry.index) object.geometry = mergeVertices(object.geometry);
    for (const material of [object.material].flat()) material.map = null;
  });
  const glb = await new GLTFExporter().parseAsync(model, { binary: true, animations: model.animations });
  return btoa(new Uint8Array(glb).reduce((text, byte) => text + String.fromCharCode(byte), ''));
};

// {name, files: {name: base64}, turned, hidden}: the model and what lies beside it; turned half round about the upright
// axis; without the nodes whose names hold what is hidden.
export async function load({ name, files, turned, hidden }) {
  const format = formatOf(name);
  const model = await format.parse(bytesOf(files[name]), files);
  await allLoaded();
  const upright = new Group().add(model);
  if (format.up === 'z') upright.rotation.x = -Math.PI / 2;
  const facing = new Group().add(upright);
  if (turned) facing.rotation.y = Math.PI;
  const scene = new Scene().add(facing);
  scene.animations = model.animations ?? [];
  scene.uvUp = format.uvUp ?? false;
  scene.updateMatrixWorld(true);
  scene.traverse((object) => {
    object.frustumCulled = false;
    if (object.isLine || object.isPoints) object.visible = false;
    if (hidden && new RegExp(hidden).test(object.userData.name ?? object.name)) object.visible = false;
    if (!object.isMesh) return;
    addMissingNormals(object);
    if (object.isSkinnedMesh) bindToHeaviest(object);
  });
  return scene;
}

// Calls with the world positions of the corners of every triangle, and with its mesh and material.
export function forEachTriangle(scene, visit) {
  const corners = [new Vector3(), new Vector3(), new Vector3()];
  scene.traverseVisible((mesh) => {
    if (!mesh.isMesh) return;
    const { geometry } = mesh;
    const { index } = geometry;
    const count = index ? index.count : geometry.attributes.position?.count ?? 0;
    const groups = Array.isArray(mesh.material) ? geometry.groups : [{ start: 0, count, materialIndex: 0 }];
    for (const group of groups) {
      const material = Array.isArray(mesh.material) ? mesh.material[group.materialIndex] : mesh.material;
      for (let i = group.start; i + 2 < Math.min(count, group.start + group.count); i += 3) {
        corners.forEach((corner, k) => mesh.getVertexPosition(index ? index.getX(i + k) : i + k, corner).applyMatrix4(mesh.matrixWorld));
        visit(corners, material, mesh);
      }
    }
  });
}
