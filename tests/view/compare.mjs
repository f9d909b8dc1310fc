// Exports models and draws what comes out beside the model itself: the same silhouettes and normals, from every side, at
// every time.
// usage: node compare.mjs MARROWFEN FOLDER

import { execFileSync } from 'node:child_process';
import { existsSync, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { openOffline } from './chromium.mjs';

const here = dirname(fileURLToPath(import.meta.url));
const pageFolder = join(here, '../../view/page');
const [marrowfen, folder] = process.argv.slice(2);
const MODELS = '/usr/share/assimp/models';

// Pixels on edges may fall either way; a normal that points elsewhere differs by tens.
const LEAST_OVERLAP = 0.97;
const MOST_APART = 4;
const LEAST_OUTWARD = 0.95;

const CASES = [
  { file: `${MODELS}/glTF2/simple_skin/simple_skin.gltf`, clip: 0, times: [0, 1, 2.5] },
  { file: `${MODELS}/glTF2/BoxTextured-glTF-Binary/BoxTextured.glb` },
  { file: `${MODELS}/FBX/spider.fbx`, ownFrames: true },
  { file: `${MODELS}/FBX/animation_with_skeleton.fbx`, clip: 0, times: [0, 0.5], ownFrames: true },
  { file: `${MODELS}/FBX/huesitos.fbx`, clip: 0, times: [0, 0.5, 1], ownFrames: true },
];

// A glTF file with its buffers inside.
function packed(file) {
  const bytes = readFileSync(file);
  if (!file.endsWith('.gltf')) return { name: file, base64: bytes.toString('base64') };
  const json = JSON.parse(bytes.toString('utf8'));
  for (const buffer of json.buffers ?? []) {
    if (buffer.uri.startsWith('data:')) continue;
    buffer.uri = `data:application/octet-stream;base64,${readFileSync(join(dirname(file), buffer.uri)).toString('base64')}`;
  }
  delete json.images;
  delete json.textures;
  for (const material of json.materials ?? []) delete material.pbrMetallicRoughness?.baseColorTexture;
  return { name: file, base64: Buffer.from(JSON.stringify(json)).toString('base64') };
}

async function bundle() {
  const { build } = await import(join(pageFolder, 'node_modules/esbuild/lib/main.js'));
  const made = await build({
    entryPoints: [join(here, 'compare_page.js')], bundle: true, write: false, format: 'iife',
    nodePaths: [join(pageFolder, 'node_modules')], logLevel: 'warning',
  });
  return made.outputFiles[0].text;
}

mkdirSync(folder, { recursive: true });
const { browser, page, faults } = await openOffline({ width: 300, height: 300 });
await page.setContent('<!doctype html><title>compare</title>');
await page.addScriptTag({ content: await bundle() });

let failures = 0;
for (const { file, clip, times = [0], ownFrames = false } of CASES) {
  const stem = join(folder, file.split('/').pop());
  if (!existsSync(file)) throw new Error(`${file} is missing (Debian package assimp-testmodels)`);
  try {
    execFileSync(marrowfen, ['-q', 'export', file, `${stem}.dts`, '--with-animation'], { stdio: 'inherit' });
    execFileSync(marrowfen, ['-q', 'view', `${stem}.dts`, `${stem}.glb`], { stdio: 'inherit' });
  } catch {
    failures += 1;
    continue;
  }
  const { results, sheet, outward } = await page.evaluate((work) => window.compare(work),
    { model: packed(file), shape: packed(`${stem}.glb`), clip, times, ownFrames });
  writeFileSync(`${stem}.png`, Buffer.from(sheet, 'base64'));
  // From where it is seen edge-on, a flat model covers nothing to compare.
  const seen = results.filter(({ covered }) => covered > 0.005);
  const bad = seen.filter(({ overlap, normals }) => overlap < LEAST_OVERLAP || normals > MOST_APART);
  const least = Math.min(...seen.map(({ overlap }) => overlap)).toFixed(3);
  const most = Math.max(...seen.map(({ normals }) => normals)).toFixed(1);
  console.log(`${file}: ${seen.length} pictures, overlap at least ${least}, faces at most ${most} apart, ${outward.toFixed(3)} outward`);
  for (const { time, direction, overlap, normals } of bad) {
    console.log(`  at ${time} s from side ${direction}: overlap ${overlap.toFixed(3)}, faces ${normals.toFixed(1)} apart`);
  }
  if (bad.length || seen.length < 2 || outward < LEAST_OUTWARD) failures += 1;
}
await browser.close();
for (const fault of faults) console.log(fault);
process.exit(failures || faults.length ? 1 : 0);
