// The page: what the buttons do to the model on the stage.

import { MeshNormalMaterial, RepeatWrapping, SRGBColorSpace, TextureLoader } from 'three';
import { loadModel } from './model.js';
import { makeOverlay } from './overlay.js';
import { choice, element, listMaterials, toggle } from './panel.js';
import { makeStage } from './stage.js';

const state = { level: null, automatic: false, sequence: null, playing: false };

function say(text) {
  element('message').textContent = text;
  element('message').hidden = false;
}

const count = (n, one, many = `${one}s`) => `${n.toLocaleString('en')} ${n === 1 ? one : many}`;

function writeStats(model) {
  const { facts } = state.level ?? { facts: {} };
  const parts = [];
  if (state.level) {
    parts.push(state.level.name, count(facts.triangles ?? 0, 'triangle'), count(facts.vertices ?? 0, 'vertex', 'vertices'));
    parts.push(count(facts.primitives ?? 0, 'primitive'));
  } else if (state.automatic) {
    parts.push('too small to be drawn');
  }
  parts.push(count(model.facts.nodes ?? model.nodes.length, 'node'), count(model.facts.materials ?? 0, 'material'));
  if (model.sequences.length) parts.push(count(model.sequences.length, 'sequence'));
  element('stats').textContent = parts.join(' · ');
}

// The detail level shows; collision levels are drawn with it while their buttons are on.
function addLevelControls(model, stage) {
  const detail = model.levels.filter((level) => level.kind === 'detail');
  const others = [['collision', 'Collision'], ['los', 'Line of sight']];
  const shownKinds = new Set();

  function update() {
    for (const level of model.levels) level.group.visible = level === state.level || shownKinds.has(level.kind);
    writeStats(model);
    stage.invalidate();
  }
  const show = (level) => {
    state.level = level;
    update();
  };

  const items = detail.map((level) => ({ text: level.name, detail: level.size >= 0 ? `${level.size} px` : '' }));
  const canBeAutomatic = detail.filter((level) => level.size >= 0).length > 1;
  if (canBeAutomatic) items.push({ text: 'As seen', detail: 'by size' });
  const choose = choice('detail', items, (i) => {
    state.automatic = i === detail.length;
    if (!state.automatic) show(detail[i]);
  });
  element('detail').hidden = detail.length === 0;
  if (detail.length) choose(0);
  else show(null);

  for (const [kind, text] of others) {
    if (!model.levels.some((level) => level.kind === kind)) continue;
    toggle('show', text, detail.length === 0, (on) => {
      if (on) shownKinds.add(kind);
      else shownKinds.delete(kind);
      update();
    });
  }

  // The level that an engine would draw where the shape covers this many pixels.
  function pickBySize(pixels) {
    const bySize = detail.filter((level) => level.size >= 0).sort((a, b) => b.size - a.size);
    const level = bySize.find((candidate) => candidate.size <= pixels) ?? null;
    if (level !== state.level) show(level);
  }
  return { choose, pickBySize, numLevels: items.length };
}

function addNodeControls(model, stage, size) {
  const labels = element('labels');
  labels.hidden = true;
  const overlay = makeOverlay(model.nodes, size, labels);
  stage.scene.add(overlay.group);
  if (model.nodes.length) {
    toggle('show', 'Nodes', false, (on) => {
      overlay.group.visible = on;
      stage.invalidate();
    });
    toggle('show', 'Names', false, (on) => {
      labels.hidden = !on;
      stage.invalidate();
    });
  }
  return () => {
    if (!overlay.group.visible && labels.hidden) return;
    const { clientWidth, clientHeight } = stage.renderer.domElement;
    overlay.place(stage.camera, clientWidth, clientHeight);
  };
}

function addSurfaceControls(model, stage) {
  const normals = new MeshNormalMaterial();
  const surfaces = [{ text: 'Materials' }, { text: 'Wireframe' }, { text: 'Normals' }];
  choice('surface', surfaces, (i) => {
    for (const material of model.materials) material.wireframe = i === 1;
    stage.scene.overrideMaterial = i === 2 ? normals : null;
    stage.floor.visible = i !== 2 && stage.floor.userData.on !== false;
    stage.invalidate();
  })(0);
  toggle('show', 'Floor', true, (on) => {
    stage.floor.userData.on = on;
    stage.floor.visible = on && stage.scene.overrideMaterial === null;
    stage.invalidate();
  });
}

function addSequenceControls(model, stage) {
  if (model.sequences.length === 0) return { play() {} };
  const time = element('time');
  const play = element('play');
  element('sequences').hidden = false;

  function showTime() {
    const { sequence } = state;
    const { action, facts, keysPerSecond, seconds, keys } = sequence;
    time.value = String(action.time);
    const words = [facts.cyclic ? 'cyclic' : 'once', facts.blend ? 'blend' : '', `priority ${facts.priority ?? 1}`];
    element('clock').textContent = `${action.time.toFixed(2)} of ${seconds.toFixed(2)} s · key ${1 + Math.round(
      action.time * keysPerSecond)} of ${keys} · ${words.filter(Boolean).join(', ')}`;
  }
  function setPlaying(on) {
    state.playing = on;
    play.setAttribute('aria-pressed', String(on));
    play.setAttribute('aria-label', on ? 'Pause' : 'Play');
  }
  function moveTo(seconds) {
    state.sequence.action.time = seconds;
    model.mixer.update(0);
    showTime();
    stage.invalidate();
  }

  const items = model.sequences.map(({ name, seconds }) => ({ text: name, detail: `${seconds.toFixed(2)} s` }));
  const choose = choice('sequences', [{ text: 'Default pose' }, ...items], (i) => {
    state.sequence?.action.stop();
    state.sequence = i === 0 ? null : model.sequences[i - 1];
    element('sequences').querySelector('.transport').hidden = i === 0;
    element('clock').hidden = i === 0;
    if (state.sequence) {
      state.sequence.action.reset().play();
      time.max = String(state.sequence.clip.duration);
      moveTo(0);
    }
    setPlaying(i !== 0);
    stage.invalidate();
  });
  choose(0);
  play.addEventListener('click', () => setPlaying(!state.playing));
  time.addEventListener('input', () => {
    setPlaying(false);
    moveTo(Number(time.value));
  });

  return {
    play: () => (state.sequence ? setPlaying(!state.playing) : choose(1)),
    step(seconds) {
      if (!state.playing || !state.sequence) return false;
      model.mixer.update(seconds);
      showTime();
      return true;
    },
  };
}

// An image file that is named like a material becomes its texture.
function takeTextures(model, stage) {
  const stem = (name) => name.replace(/\.[^.]*$/, '').toLowerCase();
  window.addEventListener('dragover', (event) => event.preventDefault());
  window.addEventListener('drop', async (event) => {
    event.preventDefault();
    for (const file of event.dataTransfer.files) {
      const wanted = model.materials.filter((material) => stem(material.name) === stem(file.name));
      if (wanted.length === 0) continue;
      const url = URL.createObjectURL(file);
      const texture = await new TextureLoader().loadAsync(url).catch(() => null);
      URL.revokeObjectURL(url);
      if (!texture) continue;
      Object.assign(texture, { flipY: false, colorSpace: SRGBColorSpace, wrapS: RepeatWrapping, wrapT: RepeatWrapping });
      for (const material of wanted) {
        material.map = texture;
        material.color.set(0xffffff);
        material.needsUpdate = true;
      }
    }
    stage.invalidate();
  });
}

function addKeys(actions) {
  window.addEventListener('keydown', (event) => {
    if (event.target instanceof HTMLButtonElement || event.ctrlKey || event.metaKey || event.altKey) return;
    const action = actions[event.key.toLowerCase()];
    if (!action) return;
    event.preventDefault();
    action();
  });
}

async function start() {
  const stage = makeStage(element('canvas'), () => element('panel').offsetWidth + 16);
  const model = await loadModel(element('model').textContent);
  element('title').querySelector('h1').textContent = document.title;
  stage.scene.add(model.root);

  const levels = addLevelControls(model, stage);
  const visible = () => model.levels.filter((level) => level.group.visible).map((level) => level.group);
  const sphere = stage.frame(visible(), true);
  const placeNodes = addNodeControls(model, stage, sphere.radius);
  addSurfaceControls(model, stage);
  const sequences = addSequenceControls(model, stage);
  listMaterials(model.materials);
  takeTextures(model, stage);
  addKeys({ f: () => stage.frame(visible(), false), ' ': () => sequences.play() });

  stage.onStep((seconds, wanted) => {
    const moved = sequences.step?.(seconds) ?? false;
    if (state.automatic) {
      const distance = stage.camera.position.distanceTo(sphere.center);
      const height = stage.renderer.domElement.clientHeight;
      const half = Math.tan((stage.camera.fov / 2) * (Math.PI / 180));
      levels.pickBySize((sphere.radius / (distance * half)) * height);
    }
    if (moved || wanted) {
      stage.scene.updateMatrixWorld();
      placeNodes();
    }
    return moved;
  });
  document.documentElement.dataset.ready = 'yes';
}

start().catch((error) => {
  say(`This shape can't be shown here: ${error.message}`);
  document.documentElement.dataset.ready = 'failed';
});
