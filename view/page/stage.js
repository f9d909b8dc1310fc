// The stage: renderer, camera, light and floor. It draws when something has changed and keeps drawing while told to.

import {
  Box3, DirectionalLight, GridHelper, Group, HemisphereLight, Mesh, PCFShadowMap, PerspectiveCamera, PlaneGeometry,
  Scene, ShadowMaterial, Sphere, Vector3, WebGLRenderer,
} from 'three';
import { OrbitControls } from 'three/examples/jsm/controls/OrbitControls.js';

const FIELD_OF_VIEW = 32; // degrees
const FIRST_LOOK = new Vector3(0.75, 0.42, -1).normalize(); // shapes look along +Y, which is -Z here

// `panelWidth()` is how much of the right edge is covered; the picture is centred in the rest.
export function makeStage(canvas, panelWidth) {
  const renderer = new WebGLRenderer({ canvas, antialias: true, alpha: true });
  renderer.setPixelRatio(Math.min(window.devicePixelRatio, 2));
  renderer.shadowMap.enabled = true;
  renderer.shadowMap.type = PCFShadowMap;

  const scene = new Scene();
  const camera = new PerspectiveCamera(FIELD_OF_VIEW, 1, 0.01, 1000);
  const controls = new OrbitControls(camera, canvas);
  controls.enableDamping = true;
  controls.dampingFactor = 0.12;

  const key = new DirectionalLight(0xfff3e0, 2.6);
  key.castShadow = true;
  key.shadow.mapSize.set(1024, 1024);
  key.shadow.normalBias = 0.02;
  scene.add(new HemisphereLight(0xdbe9f5, 0x4a4238, 1.5), key, key.target);

  const floor = new Group();
  scene.add(floor);

  let wanted = true;
  let beforeDraw = () => false;
  const invalidate = () => { wanted = true; };
  controls.addEventListener('change', invalidate);

  // Light and floor in the size of what is shown.
  function fitSurroundings(sphere, ground) {
    key.target.position.copy(sphere.center);
    key.position.copy(sphere.center).add(new Vector3(0.6, 1.3, -0.8).multiplyScalar(sphere.radius * 2));
    Object.assign(key.shadow.camera, {
      left: -sphere.radius * 1.5, right: sphere.radius * 1.5, top: sphere.radius * 1.5, bottom: -sphere.radius * 1.5,
      near: sphere.radius * 0.1, far: sphere.radius * 8,
    });
    key.shadow.camera.updateProjectionMatrix();
    key.shadow.normalBias = sphere.radius * 0.01;

    floor.clear();
    const cell = 10 ** Math.floor(Math.log10(sphere.radius)) / 2;
    const cells = Math.ceil((sphere.radius * 3) / cell) * 2;
    const grid = new GridHelper(cells * cell, cells, 0x9fb4c2, 0x7d909c);
    grid.material.transparent = true;
    grid.material.opacity = 0.22;
    grid.material.depthWrite = false;
    const shade = new Mesh(new PlaneGeometry(cells * cell, cells * cell), new ShadowMaterial({ opacity: 0.28 }));
    shade.rotation.x = -Math.PI / 2;
    shade.receiveShadow = true;
    floor.add(grid, shade);
    floor.position.set(sphere.center.x, ground - sphere.radius * 0.002, sphere.center.z);
  }

  // Moves the camera so that the objects fill the view, seen from where it stands or from the first look.
  function frame(objects, firstTime) {
    scene.updateMatrixWorld(true);
    const box = new Box3();
    for (const object of objects) box.expandByObject(object, true);
    if (box.isEmpty() || !Number.isFinite(box.max.length() + box.min.length())) {
      box.set(new Vector3(-1, 0, -1), new Vector3(1, 1, 1));
    }
    const sphere = box.getBoundingSphere(new Sphere());
    sphere.radius = Math.max(sphere.radius, 1e-4);
    const direction = firstTime ? FIRST_LOOK : camera.position.clone().sub(controls.target).normalize();
    const narrower = Math.min(1, (camera.aspect * (canvas.clientWidth - panelWidth())) / canvas.clientWidth);
    const distance = sphere.radius / Math.sin((FIELD_OF_VIEW / 2) * (Math.PI / 180)) / narrower;
    controls.target.copy(sphere.center);
    camera.position.copy(sphere.center).addScaledVector(direction, distance);
    camera.near = distance / 500;
    camera.far = distance * 50;
    camera.updateProjectionMatrix();
    if (firstTime) fitSurroundings(sphere, box.min.y);
    controls.update();
    invalidate();
    return sphere;
  }

  function resize() {
    const { clientWidth, clientHeight } = canvas;
    renderer.setSize(clientWidth, clientHeight, false);
    camera.aspect = clientWidth / Math.max(1, clientHeight);
    camera.setViewOffset(clientWidth, clientHeight, panelWidth() / 2, 0, clientWidth, clientHeight);
    camera.updateProjectionMatrix();
    invalidate();
  }
  new ResizeObserver(resize).observe(canvas);
  resize();

  let last = performance.now();
  renderer.setAnimationLoop((now) => {
    const seconds = Math.min(0.1, (now - last) / 1000);
    last = now;
    controls.update();
    const busy = beforeDraw(seconds, wanted);
    if (!wanted && !busy) return;
    wanted = false;
    renderer.render(scene, camera);
  });

  return {
    scene, camera, controls, floor, renderer, invalidate, frame,
    // step(seconds, wanted) runs before each picture and says whether it changed something.
    onStep(step) { beforeDraw = step; },
  };
}
