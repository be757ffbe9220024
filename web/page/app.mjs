// The playground: what belongs to which gesture.

import {operations} from '../roxe.mjs';
import {History, maskNames, newStep, plain, recipe, scaled} from './chain.mjs';
import {drawChain, element, title} from './controls.mjs';
import {canvasOf, openPicture, pixelsOf} from './open.mjs';
import {drawHandles, show, showResult, watchGround, whenReleased} from './stage.mjs';

const byId = (id) => document.getElementById(id);
const PREVIEW = 1e6;  // pixels

let photo = null;  // {name, width, height, scale, preview: {width, height}}
let history = new History([]);
let selected = null;  // the id of a step
let isDrawing = false;
let dragged = null;  // the chain while a control moves, before it is recorded
let masks = 0;

const chain = () => dragged ?? history.state;
const selectedStep = () => chain().find((step) => step.id === selected);

// ---- the two threads: a small picture that follows every move, and the picture itself

class Thread {
  #worker = new Worker(new URL('worker.mjs', import.meta.url), {type: 'module'});
  #asked = 0;
  #run = null;  // {id, done, failed} of the newest
  #files = new Map();  // {done, failed} by id

  constructor() {
    this.#worker.onmessage = ({data: {id, ...data}}) => {
      const asked = id === this.#run?.id ? this.#run : this.#files.get(id);
      this.#files.delete(id);
      if (data.type !== 'failed') asked?.done(data);
      else if (asked || id === undefined) (asked?.failed ?? complain)(data.message);
    };
    this.#worker.onerror = () => complain('This browser cannot run the library: it needs WebAssembly SIMD.');
  }

  open(image, keepStages) {
    this.#worker.postMessage({type: 'open', image, keepStages}, [image.data.buffer]);
  }
  // Only the newest run is answered.
  run(steps, done, failed) {
    this.#run = {id: ++this.#asked, done, failed};
    this.#worker.postMessage({type: 'run', id: this.#asked, chain: steps});
  }
  // Every file is answered.
  encode(steps, format, done) {
    this.#files.set(++this.#asked, {done, failed: complain});
    this.#worker.postMessage({type: 'encode', id: this.#asked, chain: steps, format});
  }
}

const small = new Thread(), full = new Thread();

function complain(message) {
  byId('error').textContent = message;
  byId('error').hidden = false;
}
const contented = () => (byId('error').hidden = true);
const say = (text) => (byId('status').textContent = text);

// ---- opening

let choices = 0;

// fetched gives the picture's file. A choice that a newer one has overtaken opens nothing.
async function open(fetched, name) {
  const choice = ++choices;
  contented();
  say(`Opening ${name} …`);
  let opened;
  try {
    opened = await openPicture(await fetched(), name);
  } catch (error) {
    if (choice !== choices) return;
    complain(error.message);
    say(photo ? `${photo.name} is still open.` : 'Nothing is open.');
    return;
  }
  if (choice !== choices) return opened.bitmap.close();
  const {bitmap, image} = opened, {width, height} = bitmap;
  const scale = Math.min(1, Math.sqrt(PREVIEW / (width * height)));
  const preview = pixelsOf(bitmap, Math.max(1, Math.round(width * scale)), Math.max(1, Math.round(height * scale)));
  photo = {name, width, height, scale, preview: {width: preview.width, height: preview.height}};
  show(byId('before'), preview);
  bitmap.close();
  full.open(image, false);
  small.open(preview, true);
  history = new History([]);
  selected = null;
  isDrawing = false;
  dragged = pipette = brush = null;
  byId('stage').classList.remove('empty');
  byId('invitation').hidden = true;
  for (const id of ['add', 'save-png', 'save-jpeg']) byId(id).disabled = false;
  refresh(true);
}

const openFile = (file) => open(() => file, file.name);

byId('file').addEventListener('change', ({target}) => target.files[0] && openFile(target.files[0]));
byId('sample').addEventListener('change', ({target}) => {
  const name = target.value;
  if (name) open(async () => {
    const answer = await fetch(`dist/photos/${name}`).catch(() => null);
    if (!answer?.ok) throw new Error(`${name} cannot be fetched.`);
    return answer.blob();
  }, name);
});
const stage = byId('stage');
stage.addEventListener('dragover', (event) => {
  event.preventDefault();
  stage.classList.add('over');
});
stage.addEventListener('dragleave', () => stage.classList.remove('over'));
stage.addEventListener('drop', (event) => {
  event.preventDefault();
  stage.classList.remove('over');
  const file = event.dataTransfer.files[0];
  if (file) openFile(file);
  else complain('That is no file.');
});

// ---- the list of operations

for (const name of Object.keys(operations))
  byId('add').append(element('option', {value: name}, title(name)));
byId('add').addEventListener('change', ({target}) => {
  if (!target.value) return;
  const step = newStep(target.value, photo);
  target.value = '';
  selected = step.id;
  record([...history.state, step]);
  if (drawingKinds(step)) draw(true);
});

const act = {
  change(step, key, value, final) {
    if (value === 'new' && operations[step.name][key].kind === 'picture') value = newMask(step);
    const next = history.state.map((s) =>
      (s.id === step.id ? {...s, options: {...s.options, [key]: value}} : s));
    if (final) record(next, key);
    else follow(next);
  },
  select(step) {
    selected = selected === step.id ? null : step.id;
    isDrawing = false;
    refresh(false);
    focusIn(step.id, '.name');
  },
  toggle(step) {
    record(history.state.map((s) => (s.id === step.id ? {...s, on: !s.on} : s)));
    focusIn(step.id, 'input');
  },
  move(step, by) {
    const next = [...history.state];
    const i = next.findIndex((s) => s.id === step.id);
    next.splice(i + by, 0, next.splice(i, 1)[0]);
    record(next);
    focusIn(step.id, by < 0 ? '[data-do=up]' : '[data-do=down]');
  },
  remove(step) {
    if (selected === step.id) selected = null;
    record(history.state.filter((s) => s.id !== step.id));
    byId('add').focus();
  },
  pipette: () => draw(true),
  sizeBefore: () => photo,
};

const focusIn = (id, what) => document.querySelector(`#chain [data-id="${id}"] ${what}`)?.focus();

function record(state) {
  dragged = null;
  history.record(state);
  refresh(true);
}

// A move of a control or a handle: the small picture follows, nothing is recorded.
function follow(state) {
  dragged = state;
  byId('recipe').value = recipe(chain());
  runSmall();
}

byId('undo').addEventListener('click', () => step(() => history.undo()));
byId('redo').addEventListener('click', () => step(() => history.redo()));
document.addEventListener('keydown', (event) => {
  if (!(event.ctrlKey || event.metaKey) || event.key.toLowerCase() !== 'z') return;
  event.preventDefault();
  const back = event.shiftKey ? 'redo' : 'undo';
  if (!byId(back).disabled) byId(back).click();
});
function step(move) {
  move();
  dragged = null;
  refresh(true);
}

// ---- showing

function refresh(runs) {
  contented();
  if (!selectedStep()) isDrawing = false;
  const focus = document.activeElement?.id;
  const place = document.activeElement?.dataset?.place;
  drawChain(byId('chain'), chain(), selected, act);
  if (focus?.startsWith('option-')) byId(focus)?.focus();
  if (place) document.querySelector(`[data-place="${place}"]`)?.focus();
  byId('undo').disabled = !history.canUndo;
  byId('redo').disabled = !history.canRedo;
  byId('recipe').value = recipe(chain());
  byId('recipe').rows = Math.max(3, chain().length + 1);
  byId('copy').disabled = byId('recipe').value === '';
  byId('save-mask').hidden = maskNames(chain()).size === 0;
  byId('show-drawing').disabled = !drawingKinds(selectedStep());
  byId('show-result').setAttribute('aria-pressed', String(!isDrawing));
  byId('show-drawing').setAttribute('aria-pressed', String(isDrawing));
  byId('compare').hidden = !photo;
  byId('drawing').hidden = !isDrawing;
  const paints = isDrawing && selectedStep().options.mask !== undefined;
  byId('brush-label').hidden = byId('clear-mask').hidden = !paints;
  if (isDrawing) openDrawing();
  else closeDrawing();
  if (runs && photo) {
    if (!isDrawing) runSmall();
    runFull();
  }
}

function runSmall() {
  small.run(plain(scaled(chain(), photo.scale)), ({image}) => {
    const isLate = !dragged && stage.dataset.done === 'true';  // the picture itself is shown
    if (!isLate) showResult(image, photo, isDrawing);
  }, () => {});  // a place may not fit the small picture: the picture itself has the word
}

function runFull() {
  stage.setAttribute('aria-busy', 'true');
  delete stage.dataset.done;
  full.run(plain(chain()), ({image, milliseconds}) => {
    stage.removeAttribute('aria-busy');
    stage.dataset.done = 'true';
    showResult(image, photo, isDrawing);
    const count = plain(chain()).length;
    say(`${photo.name}: ${image.width} × ${image.height} pixels` +
      (count > 0 ? `, ${count === 1 ? 'one operation' : `${count} operations`} in ${milliseconds.toFixed(0)} ms` : ''));
  }, (message) => {
    stage.removeAttribute('aria-busy');
    stage.dataset.done = 'failed';
    complain(message);
  });
}

// ---- drawing on the picture

const DRAWN = ['line', 'corners', 'point', 'region', 'colour', 'picture'];
const drawingKinds = (step) => step && Object.entries(operations[step.name]).some(([key, option]) =>
  key !== 'background' && DRAWN.includes(option.kind) && step.options[key] !== undefined);

byId('show-result').addEventListener('click', () => draw(false));
byId('show-drawing').addEventListener('click', () => draw(true));
function draw(on) {
  isDrawing = on;
  refresh(true);
}

function closeDrawing() {
  watchGround(null);
  byId('drawing').removeAttribute('aria-busy');
}

// What the selected operation starts from, with handles for its places.
function openDrawing() {
  const index = chain().findIndex((s) => s.id === selected);
  byId('drawing').setAttribute('aria-busy', 'true');
  small.run(plain(scaled(chain().slice(0, index), photo.scale)), ({image}) => {
    whenReleased(() => {
      if (!isDrawing) return;
      show(byId('ground'), image);
      drawGround(image);
      byId('drawing').removeAttribute('aria-busy');
      runSmall();
    });
  }, (message) => {
    byId('drawing').removeAttribute('aria-busy');
    complain(message);
  });
}

function drawGround(image) {
  const step = selectedStep();
  const scale = photo.scale;
  const size = {width: Math.round(image.width / scale), height: Math.round(image.height / scale)};
  byId('drawing').style.setProperty('--width', `${size.width}px`);
  byId('drawing').style.setProperty('--ratio', image.width / image.height);
  const handles = [], outlines = [];
  watchGround(null);

  for (const [key, option] of Object.entries(operations[step.name])) {
    const value = step.options[key];
    if (value === undefined || key === 'background') continue;
    if (option.kind === 'colour') watchPipette(step, key, image, handles, size);
    if (option.kind === 'picture') watchBrush(step, key, image, handles, size);
    if (!['line', 'corners', 'point', 'region'].includes(option.kind)) continue;

    const places = option.kind === 'region'
      ? [value[0], value[1], value[0] + value[2] - 1, value[1] + value[3] - 1] : [...value];
    const mine = [];
    for (let i = 0; i < places.length; i += 2)
      mine.push({
        label: `${title(step.name)}, ${key} ${i / 2 + 1}`, sign: `${i / 2 + 1}`, x: places[i], y: places[i + 1],
        move: (x, y, final) => {
          places[i] = x;
          places[i + 1] = y;
          const [x1, y1, x2, y2] = places;
          const next = option.kind !== 'region' ? [...places]
            : [Math.min(x1, x2), Math.min(y1, y2), Math.abs(x2 - x1) + 1, Math.abs(y2 - y1) + 1];
          act.change(step, key, next, final);
        },
      });
    handles.push(...mine);
    outlines.push(option.kind === 'region'
      ? () => [mine[0], {x: mine[1].x, y: mine[0].y}, mine[1], {x: mine[0].x, y: mine[1].y}] : () => mine);
  }
  drawHandles(size, handles, outlines);
}

const hex = (v) => v.toString(16).padStart(2, '0');

function watchPipette(step, key, image, handles, size) {
  const {data, width, height} = image;
  const pick = (x, y, final) => {
    const column = Math.min(Math.max(Math.round(x * photo.scale), 0), width - 1);
    const row = Math.min(Math.max(Math.round(y * photo.scale), 0), height - 1);
    const at = 4 * (row * width + column);
    act.change(step, key, `#${hex(data[at])}${hex(data[at + 1])}${hex(data[at + 2])}`, final);
  };
  watchGround(size, pick);
  const handle = {label: 'Pipette', sign: '✛', x: size.width >> 1, y: size.height >> 1, move: pick};
  // The handle stays where it was put while the list is drawn again.
  if (pipette?.step === step.id) placeAgain(handle, pipette.at, size);
  handle.move = (x, y, final) => {
    pipette = {step: step.id, at: {x, y}};
    pick(x, y, final);
  };
  handles.push(handle);
}
let pipette = null, brush = null;

// The picture may have become smaller since.
function placeAgain(handle, {x, y}, {width, height}) {
  handle.x = Math.min(x, width - 1);
  handle.y = Math.min(y, height - 1);
}

function newMask() {
  const {width, height} = photo.preview;
  const data = new Uint8ClampedArray(4 * width * height);
  for (let i = 3; i < data.length; i += 4) data[i] = 255;
  setTimeout(() => draw(true));
  return {width, height, data, version: ++masks};
}

// Paints white dots on a copy of the mask; the ground shows it as a veil.
function watchBrush(step, key, image, handles, size) {
  const canvas = canvasOf(step.options.mask, image);
  const context = canvas.getContext('2d', {willReadFrequently: true});
  const ground = byId('ground').getContext('2d');
  const veil = () => {
    ground.putImageData(new ImageData(image.data, image.width, image.height), 0, 0);
    ground.globalAlpha = 0.45;
    ground.drawImage(canvas, 0, 0);
    ground.globalAlpha = 1;
  };
  veil();
  const paint = (x, y, final) => {
    context.fillStyle = '#fff';
    context.beginPath();
    context.arc(x / size.width * canvas.width, y / size.height * canvas.height,
      Number(byId('brush').value), 0, 2 * Math.PI);
    context.fill();
    veil();
    if (!final) return;
    const {data} = context.getImageData(0, 0, canvas.width, canvas.height);
    act.change(step, key, {width: canvas.width, height: canvas.height, data, version: ++masks}, true);
  };
  watchGround(size, paint);
  const handle = {label: 'Brush, space paints', sign: '●', x: size.width >> 1, y: size.height >> 1};
  if (brush) placeAgain(handle, brush, size);
  handle.move = (x, y) => (brush = {x, y});
  handle.press = () => paint(handle.x, handle.y, true);
  handles.push(handle);
}

byId('clear-mask').addEventListener('click', () => {
  const step = selectedStep();
  act.change(step, 'mask', newMask(), true);
});

// ---- taking away

function download(blob, name) {
  const link = element('a', {href: URL.createObjectURL(blob), download: name});
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 10000);
}
function save(steps, format, name) {
  say('Encoding …');
  full.encode(steps, format, ({file}) => {
    download(file, name);
    say(`Saved ${name}, ${(file.size / 1e6).toFixed(1)} MB`);
  });
}
const stem = () => photo.name.replace(/\.[^.]*$/, '');
byId('save-png').addEventListener('click', () => save(plain(chain()), 'png', `${stem()}-edited.png`));
byId('save-jpeg').addEventListener('click', () => save(plain(chain()), 'jpeg', `${stem()}-edited.jpg`));
byId('save-mask').addEventListener('click', () => {
  for (const [id, name] of maskNames(chain())) {
    const index = chain().findIndex((s) => s.id === id);
    save(plain(chain().slice(0, index + 1)), 'mask', name);
  }
});
byId('copy').addEventListener('click', async () => {
  try {
    await navigator.clipboard.writeText(byId('recipe').value);
    say('The recipe is copied.');
  } catch {
    byId('recipe').select();
    say('Press Ctrl+C to copy the recipe.');
  }
});

document.body.dataset.ready = 'true';
