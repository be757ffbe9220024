// The picture on the page: before and after with a divider, or the place where one draws.

import {element} from './controls.mjs';

const byId = (id) => document.getElementById(id);

export function show(canvas, image) {
  canvas.width = image.width;
  canvas.height = image.height;
  canvas.getContext('2d').putImageData(new ImageData(image.data, image.width, image.height), 0, 0);
}

/** Divided where the proportions are equal, else side by side; the result alone below a drawing. */
export function showResult(image, source, alone) {
  show(byId('after'), image);
  const ratio = (image.width / image.height) / (source.width / source.height);
  byId('compare').className = alone ? 'alone' : Math.abs(ratio - 1) < 0.02 ? 'divided' : 'beside';
}

byId('divider').addEventListener('input', ({target}) =>
  byId('compare').style.setProperty('--divide', `${target.value}%`));

/** What can be drawn: handles at places of a picture of the given size, moved by mouse, touch and
 * arrow keys. handles: [{label, x, y, move(x, y, final)}]; outlines: lists of handles to connect. */
export function drawHandles(size, handles, outlines) {
  const box = byId('handles');
  const focused = document.activeElement?.dataset?.handle;
  const place = (button, {x, y}) => {
    button.style.left = `${100 * (x + 0.5) / size.width}%`;
    button.style.top = `${100 * (y + 0.5) / size.height}%`;
  };
  box.replaceChildren(...handles.map((handle, i) => {
    const button = element('button', {type: 'button', 'data-handle': i}, handle.sign ?? `${i + 1}`);
    const name = () => button.setAttribute('aria-label',
      `${handle.label}: ${handle.x}, ${handle.y}. Arrow keys move it.`);
    const move = (x, y, final) => {
      handle.x = Math.min(Math.max(Math.round(x), 0), size.width - 1);
      handle.y = Math.min(Math.max(Math.round(y), 0), size.height - 1);
      place(button, handle);
      name();
      drawLines(size, outlines);
      handle.move(handle.x, handle.y, final);
    };
    button.addEventListener('pointerdown', (event) => {
      button.setPointerCapture(event.pointerId);
      const drag = (e, final) => {
        const {left, top, width, height} = box.parentElement.getBoundingClientRect();
        move((e.clientX - left) / width * size.width - 0.5, (e.clientY - top) / height * size.height - 0.5, final);
      };
      const dragged = (e) => drag(e, false);
      button.addEventListener('pointermove', dragged);
      button.addEventListener('pointerup', (e) => {
        button.removeEventListener('pointermove', dragged);
        drag(e, true);
      }, {once: true});
    });
    button.addEventListener('keydown', (event) => {
      const step = event.shiftKey ? Math.max(1, Math.round(size.width / 50)) : 1;
      const [dx, dy] = {ArrowLeft: [-step, 0], ArrowRight: [step, 0], ArrowUp: [0, -step],
        ArrowDown: [0, step]}[event.key] ?? [0, 0];
      if (dx || dy) {
        event.preventDefault();
        move(handle.x + dx, handle.y + dy, true);
      } else if (event.key === ' ' && handle.press) {
        event.preventDefault();
        handle.press();
      }
    });
    place(button, handle);
    name();
    return button;
  }));
  drawLines(size, outlines);
  if (focused !== undefined) box.querySelector(`[data-handle="${focused}"]`)?.focus();
}

function drawLines(size, outlines) {
  const svg = byId('lines');
  svg.setAttribute('viewBox', `0 0 ${size.width} ${size.height}`);
  svg.setAttribute('preserveAspectRatio', 'none');
  svg.innerHTML = outlines.map((points) => '<polygon points="' +
    points().map(({x, y}) => `${x + 0.5},${y + 0.5}`).join(' ') + '"/>').join('');
}

/** Calls use(x, y, isFinal) for every place touched on the ground, in pixels of a picture of that
 * size; returns what ends it. */
export function watchGround(size, use) {
  const ground = byId('ground');
  let down = false;
  const at = (event, final) => {
    const {left, top, width, height} = ground.getBoundingClientRect();
    use(Math.floor((event.clientX - left) / width * size.width),
      Math.floor((event.clientY - top) / height * size.height), final);
  };
  const press = (event) => {
    down = true;
    ground.setPointerCapture(event.pointerId);
    at(event, false);
  };
  const move = (event) => {
    if (down) at(event, false);
  };
  const release = (event) => {
    if (down) at(event, true);
    down = false;
  };
  ground.addEventListener('pointerdown', press);
  ground.addEventListener('pointermove', move);
  ground.addEventListener('pointerup', release);
  return () => {
    ground.removeEventListener('pointerdown', press);
    ground.removeEventListener('pointermove', move);
    ground.removeEventListener('pointerup', release);
  };
}
