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

// Drawing anew takes away what one draws on, and an answer of the worker may come while the mouse
// or a finger is down: it waits for the release.
let heldBy = null;  // the id of a pointer
let waiting = null;

/** Does the work at once or, while a pointer draws, when that is released; the newest work alone. */
export function whenReleased(work) {
  if (heldBy === null) work();
  else waiting = work;
}

/** Calls use(event, isFinal) from the press of a pointer on the element to its release. A pointer
 * that the system takes away, as it does with a touch, is released where it was. */
function followPointer(element, use) {
  let last;
  element.addEventListener('pointerdown', (event) => {
    if (heldBy !== null) return;
    heldBy = event.pointerId;
    element.setPointerCapture(heldBy);
    use(last = event, false);
  });
  element.addEventListener('pointermove', (event) => {
    if (event.pointerId === heldBy) use(last = event, false);
  });
  element.addEventListener('lostpointercapture', (event) => {
    if (event.pointerId !== heldBy) return;
    heldBy = null;
    use(last, true);
    waiting?.();
    waiting = null;
  });
}

// Where a pointer is, in pixels of a picture of the given size that fills the element.
function placeIn(element, size, {clientX, clientY}) {
  const {left, top, width, height} = element.getBoundingClientRect();
  return {x: (clientX - left) / width * size.width, y: (clientY - top) / height * size.height};
}

let drawn;  // {size, handles, outlines}

/** What can be drawn: handles at places of a picture of the given size, moved by mouse, touch and
 * arrow keys. handles: [{label, x, y, move(x, y, final)}]; outlines: lists of handles to connect.
 * Buttons stay in the page as long as there are as many handles, and so does the focus. */
export function drawHandles(size, handles, outlines) {
  drawn = {size, handles, outlines};
  const box = byId('handles');
  while (box.children.length > handles.length) box.lastChild.remove();
  while (box.children.length < handles.length) box.append(handleButton(box.children.length));
  handles.forEach((_, i) => showHandle(i));
  drawLines(size, outlines);
}

function showHandle(i) {
  const {size, handles} = drawn;
  const {label, sign, x, y} = handles[i];
  const button = byId('handles').children[i];
  button.textContent = sign;
  button.style.left = `${100 * (x + 0.5) / size.width}%`;
  button.style.top = `${100 * (y + 0.5) / size.height}%`;
  button.setAttribute('aria-label', `${label}: ${x}, ${y}. Arrow keys move it.`);
}

function moveHandle(i, x, y, final) {
  const {size, handles, outlines} = drawn;
  const handle = handles[i];
  handle.x = Math.min(Math.max(Math.round(x), 0), size.width - 1);
  handle.y = Math.min(Math.max(Math.round(y), 0), size.height - 1);
  showHandle(i);
  drawLines(size, outlines);
  handle.move(handle.x, handle.y, final);
}

function handleButton(i) {
  const button = element('button', {type: 'button'});
  followPointer(button, (event, final) => {
    const {x, y} = placeIn(byId('drawing'), drawn.size, event);
    moveHandle(i, x - 0.5, y - 0.5, final);
  });
  button.addEventListener('keydown', (event) => {
    const handle = drawn.handles[i];
    const step = event.shiftKey ? Math.max(1, Math.round(drawn.size.width / 50)) : 1;
    const [dx, dy] = {ArrowLeft: [-step, 0], ArrowRight: [step, 0], ArrowUp: [0, -step],
      ArrowDown: [0, step]}[event.key] ?? [0, 0];
    if (dx || dy) {
      event.preventDefault();
      moveHandle(i, handle.x + dx, handle.y + dy, true);
    } else if (event.key === ' ' && handle.press) {
      event.preventDefault();
      handle.press();
    }
  });
  return button;
}

function drawLines(size, outlines) {
  const svg = byId('lines');
  svg.setAttribute('viewBox', `0 0 ${size.width} ${size.height}`);
  svg.setAttribute('preserveAspectRatio', 'none');
  svg.innerHTML = outlines.map((points) => '<polygon points="' +
    points().map(({x, y}) => `${x + 0.5},${y + 0.5}`).join(' ') + '"/>').join('');
}

let watcher = null;  // {size, use}

/** From now on calls use(x, y, isFinal) for every place touched on the ground, in pixels of a
 * picture of that size; watchGround(null) ends it. */
export function watchGround(size, use) {
  watcher = size && {size, use};
}
followPointer(byId('ground'), (event, final) => {
  if (!watcher) return;
  const {x, y} = placeIn(byId('ground'), watcher.size, event);
  watcher.use(Math.floor(x), Math.floor(y), final);
});
