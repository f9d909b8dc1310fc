// What a model's file needs to be read on a page without a network: itself and what it names, as base64.

import { NodeIO } from '@gltf-transform/core';
import { ALL_EXTENSIONS } from '@gltf-transform/extensions';
import draco3d from 'draco3dgltf';
import { execFileSync } from 'node:child_process';
import { existsSync, mkdtempSync, readFileSync, readdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { basename, dirname, join } from 'node:path';

export const gltfIo = new NodeIO().registerExtensions(ALL_EXTENSIONS).registerDependencies({
  'draco3d.decoder': await draco3d.createDecoderModule(), 'draco3d.encoder': await draco3d.createEncoderModule(),
});

// Mesh data compressed with Draco, which three.js reads with workers from a network only; anything else stays as it is.
async function withoutDraco(file) {
  const document = await gltfIo.read(file);
  for (const extension of document.getRoot().listExtensionsUsed()) {
    if (extension.extensionName === 'KHR_draco_mesh_compression') extension.dispose();
  }
  return Buffer.from(await gltfIo.writeBinary(document));
}

// A glTF file with its buffers inside. Its pictures stay outside, they aren't looked at.
function packed(file) {
  const json = JSON.parse(readFileSync(file, 'utf8'));
  for (const buffer of json.buffers ?? []) {
    if (!buffer.uri || buffer.uri.startsWith('data:')) continue;
    buffer.uri = `data:application/octet-stream;base64,${readFileSync(join(dirname(file), decodeURI(buffer.uri))).toString('base64')}`;
  }
  return Buffer.from(JSON.stringify(json));
}

// Formats of printing and motion capture keep their front; that of all others becomes the engine's, +Y.
const KEEPS_FRONT = /^(3mf|amf|bvh|stl)$/;

export function shapeOf(file) {
  return { name: basename(file), files: { [basename(file)]: readFileSync(file).toString('base64') } };
}

// Blender's own files, by Blender where it is installed.
function throughBlender(file) {
  const folder = mkdtempSync(join(tmpdir(), 'marrowfen-'));
  const glb = join(folder, 'model.glb');
  try {
    execFileSync('blender', ['--background', '--factory-startup', '--python-exit-code', '1', file, '--python-expr',
      `import bpy; bpy.ops.export_scene.gltf(filepath=${JSON.stringify(glb)}, export_apply=True)`], { stdio: 'pipe' });
    return { name: 'model.glb', files: { 'model.glb': readFileSync(glb).toString('base64') }, turned: true };
  } finally {
    rmSync(folder, { recursive: true });
  }
}

export async function sourceOf(file) {
  const name = basename(file);
  const ending = name.split('.').pop().toLowerCase();
  if (ending === 'blend') return throughBlender(file);
  const files = {};
  const bytes = readFileSync(file);
  if (/^gl(tf|b)$/.test(ending) && bytes.includes('KHR_draco_mesh_compression')) {
    files[name] = (await withoutDraco(file)).toString('base64');
  } else {
    files[name] = (ending === 'gltf' ? packed(file) : bytes).toString('base64');
  }
  if (ending === 'obj') {
    for (const [, library] of bytes.toString('latin1').matchAll(/^mtllib +(.*\S)\s*$/gm)) {
      const path = join(dirname(file), library);
      if (existsSync(path)) files[library] = readFileSync(path).toString('base64');
    }
  }
  return { name, files, turned: !KEEPS_FRONT.test(ending) };
}

// Every file below the folders, in order.
export function filesBelow(folder) {
  return readdirSync(folder, { withFileTypes: true }).sort((a, b) => (a.name < b.name ? -1 : 1)).flatMap((entry) =>
    (entry.isDirectory() ? filesBelow(join(folder, entry.name)) : [join(folder, entry.name)]));
}
