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

// Paths of MODEL as glTF and of its variants, in the folder.
export async function variantsOf(page, file, folder) {
  const stem = join(folder, basename(file).replace(/\.[^.]*$/, ''));
  const glb = Buffer.from(await page.evaluate((model) => window.toGlb(model), await sourceOf(file)), 'base64');
  const write = (kind, bytes) => {
    const path = `${stem}.${kind}.glb`;
    writeFileSync(path, bytes);
    return path;
  };
  const paths = [write('plain', glb), write('draco', await withDraco(glb)), write('sparse', await withSparse(glb))];
  for (const [kind, options] of Object.entries(PACKED)) {
    const path = `${stem}.${kind}.glb`;
    const log = await pack(['-i', paths[0], '-o', path, ...options],
      { read: (name) => readFileSync(name), write: (name, data) => writeFileSync(name, data) });
    if (log) console.log(log);
    paths.push(path);
  }
  return paths;
}
