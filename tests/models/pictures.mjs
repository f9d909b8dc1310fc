// Draws models beside the shapes that are made of them: the same silhouettes, normals and places of textures, from every
// side, at rest and in motion. The pictures stay in the folder, the model above the shape.
// usage: node pictures.mjs MARROWFEN WORK_FOLDER [variants:]MODEL[@CLIP[@HIDDEN]] ...
// CLIP: name or number. HIDDEN: a regular expression for nodes of the model that the shape's first level doesn't show.
// variants: the model as glTF in the forms that tools write.

import { execFileSync } from 'node:child_process';
import { mkdirSync, writeFileSync } from 'node:fs';
import { basename, join } from 'node:path';
import { openPage } from './page.mjs';
import { shapeOf, sourceOf } from './sources.mjs';
import { variantsOf } from './variants.mjs';

// Pixels on edges may fall either way; a normal that points elsewhere differs by tens.
const LEAST_OVERLAP = 0.97;
const MOST_APART = 4;

const [marrowfen, folder, ...given] = process.argv.slice(2);
mkdirSync(folder, { recursive: true });
const { browser, page, faults } = await openPage();
const models = [];
for (const argument of given) {
  const [path, clip, hidden] = argument.split('@');
  const of = path.startsWith('variants:') ? await variantsOf(page, path.slice('variants:'.length), folder) : [path];
  models.push(...of.map((file) => ({ file, clip, hidden })));
}
let failures = 0;
for (const { file, clip, hidden } of models) {
  const stem = join(folder, basename(file));
  let compared;
  try {
    execFileSync(marrowfen, ['-q', 'export', file, `${stem}.dts`, '--with-animation'], { stdio: 'inherit' });
    execFileSync(marrowfen, ['-q', 'view', `${stem}.dts`, `${stem}.dts.glb`], { stdio: 'inherit' });
    compared = await page.evaluate((work) => window.compare(work), {
      model: { ...await sourceOf(file), hidden }, shape: shapeOf(`${stem}.dts.glb`), clip, shares: clip ? [0, 0.3, 0.7] : [0],
    });
  } catch (error) {
    console.log(`${file}: ${error.message.split('\n')[0]}`);
    failures += 1;
    continue;
  }
  writeFileSync(`${stem}${clip ? `.${clip}` : ''}.png`, Buffer.from(compared.sheet, 'base64'));
  // From where it is seen edge-on, a flat model covers nothing to compare.
  const seen = compared.results.filter(({ covered }) => covered > 0.005);
  const bad = seen.filter(({ overlap, apart }) => overlap < LEAST_OVERLAP || apart > MOST_APART);
  const least = Math.min(...seen.map(({ overlap }) => overlap)).toFixed(3);
  const most = (surface) => Math.max(...seen.filter((s) => s.surface === surface).map(({ apart }) => apart)).toFixed(1);
  console.log(`${file}: ${seen.length} pictures, overlap at least ${least}, normals at most ${most('normals')} apart, textures ${most('textures')}`);
  for (const { surface, time, direction, overlap, apart } of bad) {
    console.log(`  ${surface} at ${time.toFixed(2)} s from side ${direction}: overlap ${overlap.toFixed(3)}, ${apart.toFixed(1)} apart`);
  }
  if (bad.length || seen.length < 2) failures += 1;
}
await browser.close();
for (const fault of faults) console.log(fault);
process.exit(failures || faults.length || !models.length ? 1 : 0);
