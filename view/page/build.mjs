// Builds the page: index.html with the style sheet and the bundled script in it, and the licences of what is bundled.
// usage: node build.mjs OUT.html

import { readFileSync, renameSync, writeFileSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { build } from 'esbuild';

const here = dirname(fileURLToPath(import.meta.url));
const read = (name) => readFileSync(join(here, name), 'utf8');
const output = process.argv[2];
if (!output) throw new Error('usage: node build.mjs OUT.html');

const bundle = await build({
  entryPoints: [join(here, 'viewer.js')],
  bundle: true,
  minify: true,
  write: false,
  format: 'iife',
  target: 'es2020',
  legalComments: 'inline',
  logLevel: 'warning',
});
const script = bundle.outputFiles[0].text;
const licence = read('node_modules/three/LICENSE').trim();

const page = read('index.html')
  .replace('<!doctype html>', () => `<!doctype html>\n<!-- Contains three.js:\n\n${licence}\n-->`)
  .replace('/*STYLE*/', () => read('style.css'))
  .replace('/*SCRIPT*/', () => script);
for (const place of ['%MARROWFEN_TITLE%', '%MARROWFEN_MODEL%']) {
  if (page.split(place).length !== 2) throw new Error(`${place} must stand in the page once`);
}

// Whole or not at all.
writeFileSync(`${output}.part`, page);
renameSync(`${output}.part`, output);
