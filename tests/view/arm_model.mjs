// A rigged model with no symmetry: a bent chain of boxes, one bone each, that lifts and twists.

const SEGMENTS = [ // size, offset from the joint before
  { size: [1.2, 0.5, 0.8], offset: [0.3, 0.2, 0] },
  { size: [0.4, 1.1, 0.3], offset: [0.5, 0.4, 0.1] },
  { size: [0.3, 0.9, 0.5], offset: [0, 1.1, 0.1] },
  { size: [0.9, 0.2, 0.25], offset: [0.1, 0.9, -0.2] },
];
const REST = [[0, 0.2588, 0, 0.9659], [0.1305, 0, 0, 0.9914], [0, 0, 0.3827, 0.9239], [0.3536, 0.3536, 0.1464, 0.8536]];
const KEYS = [0, 0.5, 1, 1.5]; // seconds

const rotate = ([x, y, z, w], [a, b, c]) => {
  const t = [2 * (y * c - z * b), 2 * (z * a - x * c), 2 * (x * b - y * a)];
  return [a + w * t[0] + y * t[2] - z * t[1], b + w * t[1] + z * t[0] - x * t[2], c + w * t[2] + x * t[1] - y * t[0]];
};
const multiply = ([ax, ay, az, aw], [bx, by, bz, bw]) => [
  aw * bx + ax * bw + ay * bz - az * by, aw * by - ax * bz + ay * bw + az * bx,
  aw * bz + ax * by - ay * bx + az * bw, aw * bw - ax * bx - ay * by - az * bz];
const unit = (q) => q.map((c) => c / Math.hypot(...q));
const plus = (a, b) => a.map((c, i) => c + b[i]);

// The six sides of a box that stands on its joint: positions and normals, counter-clockwise.
function boxTriangles([sx, sy, sz]) {
  const triangles = [];
  for (let axis = 0; axis < 3; axis += 1) {
    for (const side of [-1, 1]) {
      const normal = [0, 0, 0];
      normal[axis] = side;
      const corner = (u, v) => {
        const p = [0, 0, 0];
        p[axis] = side;
        p[(axis + 1) % 3] = u * side;
        p[(axis + 2) % 3] = v;
        return [(p[0] * sx) / 2, ((p[1] + 1) * sy) / 2, (p[2] * sz) / 2];
      };
      const [a, b, c, d] = [corner(-1, -1), corner(1, -1), corner(1, 1), corner(-1, 1)];
      for (const triangle of [[a, b, c], [a, c, d]]) triangles.push({ normal, triangle });
    }
  }
  return triangles;
}

export function armModel() {
  const chunks = [];
  const gltf = { asset: { version: '2.0' }, scene: 0, scenes: [{ nodes: [0, 4] }], accessors: [], bufferViews: [] };
  const add = (array, type, width, extra = {}) => {
    const bytes = Buffer.from(array.buffer);
    gltf.bufferViews.push({ buffer: 0, byteOffset: chunks.reduce((n, c) => n + c.length, 0), byteLength: bytes.length });
    chunks.push(bytes);
    gltf.accessors.push({ bufferView: gltf.bufferViews.length - 1, type, count: array.length / width,
      componentType: array instanceof Float32Array ? 5126 : 5123, ...extra });
    return gltf.accessors.length - 1;
  };

  // Each box in its joint's frame, placed by the joints' rest pose.
  const rest = REST.map(unit);
  const worlds = [];
  SEGMENTS.forEach(({ offset }, i) => {
    const parent = worlds[i - 1] ?? { q: [0, 0, 0, 1], t: [0, 0, 0] };
    worlds.push({ q: multiply(parent.q, rest[i]), t: plus(parent.t, rotate(parent.q, offset)) });
  });
  const positions = [];
  const normals = [];
  const joints = [];
  SEGMENTS.forEach(({ size }, i) => {
    for (const { normal, triangle } of boxTriangles(size)) {
      for (const p of triangle) {
        positions.push(...plus(rotate(worlds[i].q, p), worlds[i].t));
        normals.push(...rotate(worlds[i].q, normal));
        joints.push(i, 0, 0, 0);
      }
    }
  });
  const inverseBinds = worlds.flatMap(({ q, t }) => {
    const inverse = [-q[0], -q[1], -q[2], q[3]];
    const columns = [[1, 0, 0], [0, 1, 0], [0, 0, 1]].map((axis) => [...rotate(inverse, axis), 0]);
    return [...columns.flat(), ...rotate(inverse, t.map((c) => -c)), 1];
  });

  const range = (i) => positions.filter((_, at) => at % 3 === i);
  const bounds = { min: [0, 1, 2].map((i) => Math.fround(Math.min(...range(i)))), max: [0, 1, 2].map((i) => Math.fround(Math.max(...range(i)))) };
  const attributes = {
    POSITION: add(new Float32Array(positions), 'VEC3', 3, bounds),
    NORMAL: add(new Float32Array(normals), 'VEC3', 3),
    JOINTS_0: add(new Uint16Array(joints), 'VEC4', 4),
    WEIGHTS_0: add(new Float32Array(joints.map((_, i) => (i % 4 === 0 ? 1 : 0))), 'VEC4', 4),
  };
  gltf.meshes = [{ primitives: [{ attributes, material: 0 }] }];
  gltf.materials = [{ name: 'brass' }];
  gltf.nodes = SEGMENTS.map(({ offset }, i) => ({ name: `joint${i}`, translation: offset, rotation: rest[i],
    ...(i + 1 < SEGMENTS.length ? { children: [i + 1] } : {}) }));
  gltf.nodes.push({ name: 'Arm', mesh: 0, skin: 0 });
  gltf.skins = [{ joints: [0, 1, 2, 3], inverseBindMatrices: add(new Float32Array(inverseBinds), 'MAT4', 16) }];

  const input = add(new Float32Array(KEYS), 'SCALAR', 1, { min: [KEYS[0]], max: [KEYS.at(-1)] });
  const turns = rest.map((q, i) => KEYS.flatMap((_, k) => unit(multiply(q, [0.12 * k, 0.2 * k * (i % 2), -0.25 * k, 1]))));
  const moves = KEYS.flatMap((_, k) => plus(SEGMENTS[0].offset, [0, 0.2 * k, -0.1 * k]));
  const samplers = turns.map((turn) => ({ input, output: add(new Float32Array(turn), 'VEC4', 4) }));
  samplers.push({ input, output: add(new Float32Array(moves), 'VEC3', 3) });
  const channels = samplers.map((_, i) => ({ sampler: i, target: i < 4 ? { node: i, path: 'rotation' } : { node: 0, path: 'translation' } }));
  gltf.animations = [{ name: 'lift', samplers, channels }];

  const bytes = Buffer.concat(chunks);
  gltf.buffers = [{ byteLength: bytes.length, uri: `data:application/octet-stream;base64,${bytes.toString('base64')}` }];
  return gltf;
}
