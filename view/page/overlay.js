// Bones as lines, markers as small axes, and their names as labels over the picture.

import { AxesHelper, BufferAttribute, BufferGeometry, Group, LineBasicMaterial, LineSegments, Vector3 } from 'three';

const MOST_LABELS = 150; // more than anybody reads, and what a page lays out with ease

export function makeOverlay(nodes, size, labelHost) {
  const group = new Group();
  group.visible = false;

  const bones = nodes.filter((node) => node.userData.kind === 'bone');
  const links = bones.filter((node) => bones.includes(node.parent));
  const positions = new Float32Array(links.length * 6);
  const geometry = new BufferGeometry();
  geometry.setAttribute('position', new BufferAttribute(positions, 3));
  const lines = new LineSegments(geometry, new LineBasicMaterial({ color: 0x6fc3ff, depthTest: false, transparent: true }));
  lines.frustumCulled = false;
  lines.renderOrder = 10;
  group.add(lines);

  const crosses = nodes.map((node) => {
    const axes = new AxesHelper(size * (node.userData.kind === 'bone' ? 0.03 : 0.08));
    axes.material.depthTest = false;
    axes.material.transparent = true;
    axes.renderOrder = 11;
    axes.matrixAutoUpdate = false;
    group.add(axes);
    return axes;
  });

  const labels = nodes.slice(0, MOST_LABELS).map((node) => {
    const span = document.createElement('span');
    span.textContent = node.userData.name;
    span.className = node.userData.kind;
    labelHost.append(span);
    return span;
  });

  const at = new Vector3();
  function place(camera, width, height) {
    links.forEach((node, i) => {
      node.parent.getWorldPosition(at).toArray(positions, i * 6);
      node.getWorldPosition(at).toArray(positions, i * 6 + 3);
    });
    geometry.attributes.position.needsUpdate = true;
    crosses.forEach((axes, i) => {
      axes.matrix.copy(nodes[i].matrixWorld);
      axes.matrixWorldNeedsUpdate = true;
    });
    labels.forEach((span, i) => {
      nodes[i].getWorldPosition(at).project(camera);
      span.hidden = at.z > 1;
      const x = ((at.x + 1) / 2) * width + 6;
      const y = ((1 - at.y) / 2) * height - 8;
      span.style.transform = `translate(${x.toFixed(1)}px, ${y.toFixed(1)}px)`;
    });
  }

  return { group, place };
}
