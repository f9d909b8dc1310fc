// What an independent reader counts in models beside what is in the shapes that are made of them. A difference that no
// warning of the export mentions fails.
// usage: node table.mjs MARROWFEN WORK_FOLDER MODEL|FOLDER|variants:MODEL ...
// variants: the model as glTF in the forms that tools write, quantised and compressed.

import { spawnSync } from 'node:child_process';
import { existsSync, mkdirSync, readFileSync, rmSync, statSync } from 'node:fs';
import { join } from 'node:path';
import { openPage } from './page.mjs';
import { filesBelow, shapeOf, sourceOf } from './sources.mjs';
import { variantsOf } from './variants.mjs';

const READ = /\.(gltf|glb|fbx|obj|dae|zae|3ds|stl|ply|md2|amf|lwo|wrl|bvh|3mf|blend)$/i;
const MODELS = '/usr/share/assimp/models/';
const KNOWN = JSON.parse(readFileSync(new URL('known.json', import.meta.url))); // why a model differs
const WAY_OUT = /--max-triangles \d|export glTF from Blender/; // its owner learns what to do
const [marrowfen, work, ...given] = process.argv.slice(2);
const nameOf = (file) => file.replace(MODELS, '');

// The engine is Z-up.
const inEngine = ({ min, max }) => ({ min: [min[0], -max[2], min[1]], max: [max[0], -min[2], max[1]] });

const sizeOf = ({ min, max }) => Math.hypot(...min.map((low, i) => max[i] - low));

function sameBounds(a, b) {
  const room = 1e-4 * sizeOf(a) + 1e-6;
  return a.min.every((low, i) => Math.abs(low - b.min[i]) <= room && Math.abs(a.max[i] - b.max[i]) <= room);
}

// The factor between boxes of one form, or undefined.
function factorOf(a, b) {
  const factor = sizeOf(b) / sizeOf(a);
  return sameBounds({ min: a.min.map((x) => x * factor), max: a.max.map((x) => x * factor) }, b) ? factor : undefined;
}

const round = (values) => values.map((value) => Number(value.toPrecision(4))).join(',');
const box = ({ min, max }) => `${round(min)}..${round(max)}`;
const plain = (name) => name.replace(/\s/g, '_').replace(/[\[\].:/]/g, '');

// What is said of every file of Blender's own.
const NOT_AS_SHOWN = /\.blend file is read without/;
const SKIPPED_CLIP = (line) => /(animation|clip).* (skipped|left out)/.test(line);

// of: what is in the source and in the shape, as shown. excuse: whether a warning tells of the difference.
const COLUMNS = {
  triangles: {
    of: (s, level, shape) => [s.triangles, shape.drawn.triangles],
    excuse: (line, apart) => Number(line.match(/(\d+) [^;]*(triangle|face|polygon)/)?.[1]) === apart,
  },
  bounds: {
    of: (s, level, shape) => {
      const want = inEngine(s.bounds);
      if (sameBounds(want, shape.bounds)) return [0, 0];
      const factor = factorOf(want, shape.bounds);
      return factor ? [1, `${factor.toPrecision(4)} times as large`] : [box(want), box(shape.bounds)];
    },
    excuse: (line) => /\bposes?\b|bounds/.test(line),
  },
  materials: {
    of: (s, level) => [s.materials, level.materials.filter((m) => m >= 0).length],
    excuse: (line) => /materials? .*\b(one|same|merged|joined)\b/.test(line),
  },
  joints: {
    of: (s, level, shape) => {
      const names = new Set(shape.nodes.map(({ name }) => plain(name)));
      const missing = s.joints.filter((name) => name && !names.has(plain(name)));
      return [s.joints.length, missing.length ? `all but ${missing.length} (${missing.slice(0, 3).join(' ')} ...)` : s.joints.length];
    },
    excuse: (line) => /(bone|joint)s? (is|are) (left out|dropped|skipped)/.test(line),
  },
  clips: { of: (s, level, shape) => [s.clips.length, shape.sequences.length], excuse: SKIPPED_CLIP },
  seconds: {
    of: (s, level, shape) => {
      const long = (clips, of) => clips.map((clip) => of(clip).toFixed(2)).join(' ');
      const pairs = s.clips.filter(({ moves }) => moves);
      // A sequence lasts a frame longer than its last key, and that key may be rounded up by one.
      const same = pairs.length === shape.sequences.length &&
        pairs.every(({ duration }, i) => Math.abs(duration - shape.sequences[i].seconds) < 2.01 / (shape.sequences[i].rate || 30));
      return same ? [0, 0] : [long(pairs, (c) => c.duration), long(shape.sequences, (c) => c.seconds)];
    },
    excuse: SKIPPED_CLIP,
  },
};

function exported(file) {
  const output = join(work, 'model.dts');
  rmSync(output, { force: true });
  const run = spawnSync(marrowfen, ['export', file, output, '--with-animation'], { encoding: 'utf8' });
  if (!existsSync(output)) return { said: run.stderr };
  const shape = JSON.parse(spawnSync(marrowfen, ['inspect', '--json', output], { encoding: 'utf8', maxBuffer: 1 << 30 }).stdout);
  spawnSync(marrowfen, ['-q', 'view', output, `${output}.glb`]);
  return { said: run.stderr, shape, glb: `${output}.glb` };
}

// What differs between the model and its shape, a line each.
function differences(source, shape, warnings) {
  const level = shape.detailLevels.find(({ kind }) => kind === 'visible') ?? { triangles: 0, materials: [] };
  return Object.entries(COLUMNS).flatMap(([name, { of, excuse }]) => {
    const [theirs, ours] = of(source, level, shape);
    if (theirs === ours) return [];
    return [{ name, theirs, ours, said: warnings.find((line) => NOT_AS_SHOWN.test(line) || excuse(line, Math.abs(theirs - ours))) }];
  });
}

// {verdict, lines}: what is to be said of one model.
async function verdictOf(page, file) {
  const { said, shape, glb } = exported(file);
  let source;
  try {
    source = await page.evaluate((model) => window.facts(model), await sourceOf(file));
  } catch (error) {
    return { verdict: 'unread', lines: [`the other reader: ${error.message.split('\n')[0].replace(/^page\.evaluate: /, '')}`] };
  }
  const counted = `${source.triangles} triangles, ${source.materials} materials, ${source.joints.length} joints, ${source.clips.length} clips`;
  if (!shape) {
    const reason = said.split('\n').find((line) => line.startsWith('error: ')) ?? 'no reason';
    const rightly = !source.triangles || KNOWN[nameOf(file)] || WAY_OUT.test(said);
    return { counted, verdict: rightly ? 'refused' : 'REFUSED', lines: [reason] };
  }
  if (!source.bounds) return { counted, verdict: 'unread', lines: ['the other reader finds nothing to draw'] };
  // What strips repeat isn't drawn.
  shape.drawn = await page.evaluate((model) => window.facts(model), shapeOf(glb));
  const found = differences(source, shape, said.split('\n').filter((line) => line.startsWith('warning')));
  const lines = found.map(({ name, theirs, ours, said: warning }) =>
    `${name}: ${theirs} in the model, ${ours} in the shape${warning ? ` (${warning})` : ''}`);
  const untold = found.some((difference) => !difference.said);
  if (!untold) return { counted, verdict: found.length ? 'told' : 'equal', lines };
  return { counted, verdict: KNOWN[nameOf(file)] ? 'known' : 'DIFFERENT', lines };
}

mkdirSync(work, { recursive: true });
const { browser, page } = await openPage();
const models = [];
for (const path of given) {
  if (path.startsWith('variants:')) models.push(...await variantsOf(page, path.slice('variants:'.length), work));
  else if (statSync(path).isDirectory()) models.push(...filesBelow(path).filter((file) => READ.test(file)));
  else models.push(path);
}
const counts = { equal: 0, told: 0, known: 0, refused: 0, unread: 0, DIFFERENT: 0, REFUSED: 0 };
for (const file of models) {
  const { counted = '', verdict, lines } = await verdictOf(page, file);
  counts[verdict] += 1;
  console.log(`${verdict.padEnd(9)} ${nameOf(file)}: ${KNOWN[nameOf(file)] ?? counted}`);
  for (const line of lines) console.log(`          ${line}`);
}
await browser.close();
console.log(`${models.length} models: ${Object.entries(counts).map(([what, count]) => `${count} ${what}`).join(', ')}`);
process.exit(counts.DIFFERENT || counts.REFUSED || !models.length ? 1 : 0);
