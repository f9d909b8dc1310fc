// A page with the other reader on it: three.js, and what pages/*.js make of it.

import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { openOffline } from '../view/chromium.mjs';

const here = dirname(fileURLToPath(import.meta.url));
const viewer = join(here, '../../view/page/node_modules');

export async function openPage() {
  const { build } = await import(join(viewer, 'esbuild/lib/main.js'));
  const made = await build({
    stdin: { contents: "import './facts.js'; import './pictures.js';", resolveDir: here }, bundle: true, write: false,
    format: 'iife', nodePaths: [viewer], logLevel: 'warning',
  });
  const opened = await openOffline({ width: 300, height: 300 });
  await opened.page.setContent('<!doctype html><title>models</title>');
  await opened.page.addScriptTag({ content: made.outputFiles[0].text });
  return opened;
}
