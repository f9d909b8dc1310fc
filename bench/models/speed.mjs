// How long whole programs take for one model: the shape of it, and what gltfpack and assimp make of it.
// usage: node speed.mjs MARROWFEN WORK_FOLDER ROUNDS
// Two models: 50,000 triangles that stand still, and a figure of 60 bones with 76 clips. Rounds take the programs in
// turn, there and back, as each finds the memory and the disk as the one before has left them; the table has the median
// of each and its ratio to gltfpack's. Then 1,000 small models, medians of three rounds.

import { Accessor, Document, NodeIO } from '@gltf-transform/core';
import { execFileSync, spawnSync } from 'node:child_process';
import { copyFileSync, existsSync, mkdirSync, rmSync, writeFileSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';

const [marrowfen, work, rounds] = process.argv.slice(2);
const gltfpack = join(dirname(fileURLToPath(import.meta.url)), 'node_modules/gltfpack/cli.js');

// A bumpy tube of rings * 2 * sides triangles, along Y.
function tube(rings, sides) {
  const [positions, normals, uvs, indices] = [[], [], [], []];
  for (let r = 0; r <= rings; r += 1) {
    for (let s = 0; s <= sides; s += 1) {
      const turn = (2 * Math.PI * s) / sides;
      const radius = 1 + 0.1 * Math.sin(7 * turn) * Math.sin(0.3 * r);
      positions.push(radius * Math.cos(turn), (10 * r) / rings, radius * Math.sin(turn));
      normals.push(Math.cos(turn), 0, Math.sin(turn));
      uvs.push(s / sides, r / rings);
      if (r === rings || s === sides) continue;
      const at = r * (sides + 1) + s;
      indices.push(at, at + sides + 1, at + 1, at + 1, at + sides + 1, at + sides + 2);
    }
  }
  return { positions, normals, uvs, indices, height: (v) => positions[3 * v + 1] / 10 };
}

class Maker {
  constructor() {
    this.document = new Document();
    this.buffer = this.document.createBuffer();
    this.scene = this.document.createScene();
  }

  list(type, array) {
    return this.document.createAccessor().setType(type).setArray(array).setBuffer(this.buffer);
  }

  mesh({ positions, normals, uvs, indices }) {
    const primitive = this.document.createPrimitive()
      .setAttribute('POSITION', this.list(Accessor.Type.VEC3, new Float32Array(positions)))
      .setAttribute('NORMAL', this.list(Accessor.Type.VEC3, new Float32Array(normals)))
      .setAttribute('TEXCOORD_0', this.list(Accessor.Type.VEC2, new Float32Array(uvs)))
      .setIndices(this.list(Accessor.Type.SCALAR, new Uint32Array(indices)))
      .setMaterial(this.document.createMaterial('skin'));
    return { primitive, node: this.document.createNode('body').setMesh(this.document.createMesh().addPrimitive(primitive)) };
  }
}

function makeStill() {
  const maker = new Maker();
  maker.scene.addChild(maker.mesh(tube(250, 100)).node);
  return maker.document;
}

function makeRigged() {
  const [boneCount, clipCount, keyCount] = [60, 76, 40];
  const maker = new Maker();
  const form = tube(100, 30);
  const { primitive, node } = maker.mesh(form);
  const count = form.positions.length / 3;
  const [joints, weights] = [new Uint16Array(4 * count), new Float32Array(4 * count)];
  for (let v = 0; v < count; v += 1) {
    joints[4 * v] = Math.min(boneCount - 1, Math.floor(form.height(v) * boneCount));
    weights[4 * v] = 1;
  }
  primitive.setAttribute('JOINTS_0', maker.list(Accessor.Type.VEC4, joints));
  primitive.setAttribute('WEIGHTS_0', maker.list(Accessor.Type.VEC4, weights));
  const bones = [];
  const inverses = new Float32Array(16 * boneCount);
  for (let b = 0; b < boneCount; b += 1) {
    bones.push(maker.document.createNode(`bone${b}`).setTranslation([0, b ? 10 / boneCount : 0, 0]));
    (b ? bones[b - 1] : maker.scene).addChild(bones[b]);
    inverses.set([1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, (-10 * b) / boneCount, 0, 1], 16 * b);
  }
  const skin = maker.document.createSkin().setInverseBindMatrices(maker.list(Accessor.Type.MAT4, inverses));
  bones.forEach((bone) => skin.addJoint(bone));
  maker.scene.addChild(node.setSkin(skin));
  const times = maker.list(Accessor.Type.SCALAR, Float32Array.from({ length: keyCount }, (_, k) => k / 30));
  for (let c = 0; c < clipCount; c += 1) {
    const clip = maker.document.createAnimation(`clip${c}`);
    bones.forEach((bone, b) => {
      const keys = new Float32Array(4 * keyCount);
      for (let k = 0; k < keyCount; k += 1) {
        const half = 0.05 * Math.sin(0.2 * k + b + c);
        keys.set([0, 0, Math.sin(half), Math.cos(half)], 4 * k);
      }
      const sampler = maker.document.createAnimationSampler().setInput(times).setOutput(maker.list(Accessor.Type.VEC4, keys));
      clip.addSampler(sampler).addChannel(maker.document.createAnimationChannel().setTargetNode(bone).setTargetPath('rotation').setSampler(sampler));
    });
  }
  return maker.document;
}

function milliseconds(command, words) {
  const before = process.hrtime.bigint();
  const run = spawnSync(command, words, { stdio: 'ignore' });
  if (run.status !== 0) throw new Error(`${command} ${words.join(' ')} ended with ${run.status}`);
  return Number(process.hrtime.bigint() - before) / 1e6;
}

const median = (times) => times.sort((a, b) => a - b)[Math.floor(times.length / 2)];

// 1,000 small models: one command beside a loop that starts assimp for each, in turns, there and back. Each run writes into
// a folder of its own, and none is removed before all have run: file systems without a journal look through what was
// deleted in the last minutes for every file that is made, which would count as ours.
const manyRounds = 3;
const madeFolders = [];

function timeMany(ending, write) {
  const folder = join(work, `many-${ending}`);
  mkdirSync(folder, { recursive: true });
  const names = Array.from({ length: 1000 }, (_, k) => join(folder, `sheet${k}.${ending}`));
  names.forEach(write);
  writeFileSync(join(folder, 'list'), names.join('\n'));
  const loop = `for f in ${folder}/*.${ending}; do assimp export $f ${folder}/made.fbx; done`;
  const [ours, theirs] = [[], []];
  const runs = [
    (round) => {
      const out = join(folder, `out-${process.pid}-${round}`);
      madeFolders.push(out);
      ours.push(milliseconds(marrowfen, ['-q', 'export', `@${join(folder, 'list')}`, '--out-dir', out]));
    },
    () => theirs.push(milliseconds('sh', ['-c', loop])),
  ];
  for (let round = 0; round < manyRounds; round += 1) {
    (round % 2 === 0 ? runs : [...runs].reverse()).forEach((run) => run(round));
  }
  const [a, b] = [median(ours) / 1000, median(theirs) / 1000];
  console.log(`| ${ending} | ${a.toFixed(2)} s | ${b.toFixed(2)} s | ${(b / a).toFixed(1)} |`);
}

// A sheet of 128 triangles as the text of an OBJ file.
function sheetText() {
  const { positions, uvs, indices } = tube(8, 8);
  const rows = (word, list, width) =>
    Array.from({ length: list.length / width }, (_, k) => `${word} ${list.slice(width * k, width * k + width).join(' ')}\n`).join('');
  const corners = indices.map((i) => `${i + 1}/${i + 1}`);
  return rows('v', positions, 3) + rows('vt', uvs, 2) + rows('f', corners, 3);
}

mkdirSync(work, { recursive: true });
const io = new NodeIO();
const hasAssimp = spawnSync('assimp', ['version']).status === 0;
console.log(`| model | marrowfen export | gltfpack | ${hasAssimp ? 'assimp export | ' : ''}ratio to gltfpack |`);
console.log(`|---|---|---|---|${hasAssimp ? '---|' : ''}`);
for (const [name, made] of [['50,000 triangles', makeStill()], ['60 bones, 76 clips', makeRigged()]]) {
  const model = join(work, `${name.replace(/\W+/g, '-')}.glb`);
  writeFileSync(model, await io.writeBinary(made));
  const programs = [[marrowfen, ['-q', 'export', model, `${model}.dts`, '--with-animation']],
    [process.execPath, [gltfpack, '-i', model, '-o', `${model}.packed.glb`, '-kn']]];
  if (hasAssimp) programs.push(['assimp', ['export', model, `${model}.fbx`]]);
  execFileSync(marrowfen, ['-q', 'export', model, `${model}.dts`, '--with-animation']);
  const times = programs.map(() => []);
  for (let round = 0; round < Number(rounds); round += 1) {
    const order = [...programs.keys()];
    if (round % 2 === 1) order.reverse();
    order.forEach((p) => times[p].push(milliseconds(...programs[p])));
  }
  const each = times.map(median);
  console.log(`| ${name} | ${each.map((ms) => `${ms.toFixed(0)} ms`).join(' | ')} | ${(each[0] / each[1]).toFixed(2)} |`);
}

if (hasAssimp) {
  console.log('\n| 1,000 small models | marrowfen export | a loop over assimp export | ratio |');
  console.log('|---|---|---|---|');
  const maker = new Maker();
  maker.scene.addChild(maker.mesh(tube(8, 8)).node);
  const binary = await io.writeBinary(maker.document);
  timeMany('obj', (name) => writeFileSync(name, sheetText()));
  timeMany('glb', (name) => writeFileSync(name, binary));
  // Small ones of the library's own, the files that they need beside them.
  const samples = '/usr/share/assimp/models';
  for (const [folder, file, ...others] of [['FBX', 'phong_cube.fbx'], ['PLY', 'cube_uv.ply'], ['STL', 'Spider_binary.stl'],
    ['glTF2/BoxTextured-glTF', 'BoxTextured.gltf', 'BoxTextured0.bin', 'CesiumLogoFlat.png']]) {
    if (!existsSync(join(samples, folder, file))) continue;
    timeMany(file.split('.')[1], (name) => {
      copyFileSync(join(samples, folder, file), name);
      others.forEach((other) => copyFileSync(join(samples, folder, other), join(dirname(name), other)));
    });
  }
  madeFolders.forEach((folder) => rmSync(folder, { recursive: true, force: true }));
}
