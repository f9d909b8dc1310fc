// Runs the Khronos validator over binary glTF files; errors fail, and so does finding no file.
// usage: node validate.mjs FOLDER|FILE.glb ...

import { readdirSync, readFileSync, statSync } from 'node:fs';
import { join } from 'node:path';
import validator from 'gltf-validator';

const files = process.argv.slice(2).flatMap((path) =>
  statSync(path).isDirectory() ? readdirSync(path).filter((f) => f.endsWith('.glb')).map((f) => join(path, f)) : [path]);

const counts = { errors: 0, warnings: 0 };
for (const file of files) {
  const { issues } = await validator.validateBytes(new Uint8Array(readFileSync(file)), { maxIssues: 20 });
  counts.errors += issues.numErrors;
  counts.warnings += issues.numWarnings;
  for (const { severity, code, message, pointer } of issues.messages) {
    if (severity <= 1) console.log(`${file}: ${severity === 0 ? 'error' : 'warning'} ${code} ${pointer ?? ''}: ${message}`);
  }
}
console.log(`${files.length} files, ${counts.errors} errors, ${counts.warnings} warnings`);
process.exit(files.length === 0 || counts.errors > 0 ? 1 : 0);
