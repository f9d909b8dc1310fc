// The panel's controls: buttons of which one is chosen, buttons that are on or off, and the transport.

export const element = (id) => document.getElementById(id);

function button(text, detail) {
  const made = document.createElement('button');
  made.type = 'button';
  made.textContent = text;
  if (detail) {
    const small = document.createElement('small');
    small.textContent = ` ${detail}`;
    made.append(small);
  }
  return made;
}

// One of several. Returns choose(index), which also moves the mark.
export function choice(section, items, onChoose) {
  const row = element(section).querySelector('.row');
  const buttons = items.map(({ text, detail }, i) => {
    const made = button(text, detail);
    made.setAttribute('role', 'radio');
    made.addEventListener('click', () => choose(i));
    row.append(made);
    return made;
  });
  function choose(index) {
    buttons.forEach((made, i) => made.setAttribute('aria-checked', String(i === index)));
    onChoose(index);
  }
  return choose;
}

export function toggle(section, text, on, onChange) {
  const made = button(text);
  const set = (value) => {
    made.setAttribute('aria-pressed', String(value));
    onChange(value);
  };
  made.addEventListener('click', () => set(made.getAttribute('aria-pressed') !== 'true'));
  element(section).querySelector('.row').append(made);
  set(on);
  return { flip: () => made.click() };
}

const SHOWN_FLAGS = ['translucent', 'additive', 'subtractive', 'selfilluminating'];

export function listMaterials(materials) {
  const named = materials.filter((material) => material.name);
  element('materials').hidden = named.length === 0;
  const list = element('materials').querySelector('ul');
  for (const material of named) {
    const row = document.createElement('li');
    const swatch = document.createElement('i');
    swatch.style.background = `#${material.color.getHexString()}`;
    swatch.style.opacity = String(Math.max(0.4, material.opacity));
    const name = document.createElement('b');
    name.textContent = material.name;
    const flags = document.createElement('small');
    flags.textContent = (material.userData.flags ?? []).filter((flag) => SHOWN_FLAGS.includes(flag)).join(', ');
    row.append(swatch, name, flags);
    list.append(row);
  }
}
