// One model in the forms that glTF files come in: quantised, compressed, sparse. Made by tools that share nothing with
// ours.

import { KHRDracoMeshCompression } from '@gltf-transform/extensions';
import { pack } from 'gltfpack';
import { readFileSync, writeFileSync } from 'node:fs';
import { basename, join } from 'node:path';
import { gltfIo, sourceOf } from './sources.mjs';

// What gltfpack is asked for. It keeps names and materials with -kn and -km, and doesn't simplify on its own.
const PACKED = {
  quantised: ['-kn', '-km'],
  meshopt: ['-kn', '-km', '-c'],
  smaller: ['-kn', '-km', '-cc', '-vp', '14', '-vt', '12'],
};

async function withDraco(glb) {
  const document = await gltfIo.readBinary(glb);
  document.createExtension(KHRDracoMeshCompression).setRequired(true);
  return gltfIo.writeBinary(document);
}

async function withSparse(glb) {
  const document = await gltfIo.readBinary(glb);
  for (const mesh of document.getRoot().listMeshes()) {
    for (const primitive of mesh.listPrimitives()) primitive.getAttribute('POSITION').setSparse(true);
  }
  return gltfIo.writeBinary(document);
}

// Keys with a tangent before and behind each: the same curve as straight lines where the tangents are the slopes.
function makeCubic(sampler) {
  const times = sampler.getInput().getArray();
  const output = sampler.getOutput().clone();
  const size = output.getElementSize();
  const keys = output.getArray();
  const slope = (k, c) => {
    const [before, after] = [Math.max(k - 1, 0), Math.min(k + 1, times.length - 1)];
    return after > before ? (keys[after * size + c] - keys[before * size + c]) / (times[after] - times[before]) : 0;
  };
  const cubic = new Float32Array(3 * keys.length);
  for (let k = 0; k < times.length; k += 1) {
    for (let c = 0; c < size; c += 1) {
      cubic[3 * k * size + c] = slope(k, c);
      cubic[(3 * k + 1) * size + c] = keys[k * size + c];
      cubic[(3 * k + 2) * size + c] = slope(k, c);
    }
  }
  sampler.setOutput(output.setArray(cubic)).setInterpolation('CUBICSPLINE');
}

// What is allowed and seldom met: a mirrored parent, curves and steps, one name for all nodes, a scene that isn't shown.
async function withOddities(glb) {
  const document = await gltfIo.readBinary(glb);
  const root = document.getRoot();
  const scene = root.listScenes()[0];
  const mirror = document.createNode('mirror').setScale([-1, 1, 1]);
  for (const child of scene.listChildren()) mirror.addChild(child);
  scene.addChild(mirror);
  document.createScene('unseen').addChild(document.createNode('unseen').setMesh(root.listMeshes()[0]).setTranslation([9, 9, 9]));
  root.setDefaultScene(scene);
  for (const node of root.listNodes()) node.setName('node');
  root.listAnimations().flatMap((animation) => animation.listSamplers()).forEach((sampler, i) => {
    if (i % 2) sampler.setInterpolation('STEP');
    else makeCubic(sampler);
  });
  return gltfIo.writeBinary(document);
}

// Paths of MODEL as glTF and of its variants, in the folder.
export async function variantsOf(page, file, folder) {
  const stem = join(folder, basename(file).replace(/\.[^.]*$/, ''));
  const glb = Buffer.from(await page.evaluate((model) => window.toGlb(model), await sourceOf(file)), 'base64');
  const write = (kind, bytes) => {
    const path = `${stem}.${kind}.glb`;
    writeFileSync(path, bytes);
    return path;
  };
  const paths = [write('plain', glb), write('draco', await withDraco(glb)), write('sparse', await withSparse(glb)),
    write('odd', await withOddities(glb))];
  for (const [kind, options] of Object.entries(PACKED)) {
    const path = `${stem}.${kind}.glb`;
    const log = await pack(['-i', paths[0], '-o', path, ...options],
      { read: (name) => readFileSync(name), write: (name, data) => writeFileSync(name, data) });
    if (log) console.log(log);
    paths.push(path);
  }
  return paths;
}
