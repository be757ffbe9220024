// Prints the table of checksums as the module makes it: operations with parameters on synthetic
// pictures, in the words and the order of tests/checksums. node web/test/checksums.mjs [ROXE.WASM]

import {readFile} from 'node:fs/promises';

const file = process.argv[2] ?? new URL('../dist/roxe.wasm', import.meta.url);
const {instance} = await WebAssembly.instantiate(await readFile(file), {});
const op = instance.exports;

const RGB24 = 0, GRAY8 = 3;

// Integer-only content, the same everywhere.
class Generator {
  constructor(state) {
    this.state = state;
  }
  next() {
    this.state = (Math.imul(this.state, 1664525) + 1013904223) >>> 0;
    return this.state >>> 16;
  }
}

function picture(name, format, width, height, padding, paint) {
  const channels = format === GRAY8 ? 1 : 3;
  const row = channels * width + padding;
  const bytes = new Uint8Array(row * height).fill(0xa5);
  for (let y = 0; y < height; ++y)
    for (let x = 0; x < width; ++x)
      for (let c = 0; c < channels; ++c) bytes[y * row + channels * x + c] = paint(x, y, c);
  return {name, format, width, height, row, bytes};
}

function pictures() {
  const noise = new Generator(1);
  const random = () => noise.next();
  const slopes = (x, y, c) => (c === 0 ? x : c === 1 ? y : (x + y) >> 1);
  const scene = (x, y, c) => {
    const block = new Generator(Math.trunc(x / 23) * 977 + Math.trunc(y / 17) * 131 + c * 7919);
    block.next();
    return 20 + block.next() % 200 + noise.next() % 16;
  };
  return [
    picture('noise 61x47', RGB24, 61, 47, 0, random),
    picture('noise 130x21 padded', RGB24, 130, 21, 5, random),
    picture('slopes 100x90', RGB24, 100, 90, 0, slopes),
    picture('scene 200x150', RGB24, 200, 150, 8, scene),
    picture('scene 97x211 padded', RGB24, 97, 211, 1, scene),
    picture('greys 64x64', RGB24, 64, 64, 0, (x, y) => 3 * x + y),
    picture('white 40x30', RGB24, 40, 30, 0, () => 255),
    picture('noise 5x4', RGB24, 5, 4, 2, random),
    picture('noise 1x1', RGB24, 1, 1, 0, random),
  ];
}

// Blocks in the module's memory, given back together.
let taken = [];
function place(bytes) {
  const pointer = op.malloc(bytes.length) >>> 0;
  taken.push(pointer);
  new Uint8Array(op.memory.buffer, pointer, bytes.length).set(bytes);
  return pointer;
}
const numbers = (...values) => place(new Uint8Array(Int32Array.from(values).buffer));
const record = (p) => numbers(p.format, p.width, p.height, p.row, place(p.bytes));

function cases() {
  const all = [];
  const add = (name, run) => all.push({name, run});
  for (const angle of [0, 0.017, -0.05, 0.127, 0.785, 1.4835, 2.5, -3, 5].map(Math.fround))
    add(`rotate ${angle.toFixed(6)}`, (src, dst, s) =>
      op.roxeRotateImage(src, s.width >> 1, s.height >> 1, angle, dst, s.width >> 1, s.height >> 1));
  add('rotate off centre', (src, dst) => op.roxeRotateImage(src, -3, 7, 0.3, dst, 11, -2));
  for (const line of [[0, 0, 100, 3], [5, 90, 2, 1], [9, 9, -80, 70]])
    add(`straighten ${line.join(' ')}`, (src, dst) =>
      op.roxeuAutoStraightenImage(src, ...line, dst));
  for (const inset of [0, 1, 5, 12]) {
    const corners = ({width, height}) => numbers(inset, inset >> 1, width - 1, inset,
      width - 2 - inset, height - 1, Math.trunc(inset / 3), height - 2 - (inset >> 1));
    add(`affine ${inset}`, (src, dst, s) =>
      op.roxeAffineTransform(src, dst, corners(s), 0, numbers(0, 0, s.width, s.height)));
    add(`affine onto corners ${inset}`, (src, dst, s) =>
      op.roxeAffineTransform(src, dst, corners(s),
        numbers(-2, -3, s.width + 1, 1, s.width, s.height, 3, s.height - 1),
        numbers(-5, -5, s.width - 1, s.height + 9)));
    add(`perspective ${inset}`, (src, dst, s) =>
      op.roxePerspectiveDistortionCorrection(src, dst, corners(s), 0, 0,
        numbers(1, 2, s.width, s.height)));
  }
  for (const radius of [0, 2, 3, 8, 21, 100, 400]) {
    add(`soft focus ${radius}`, (src, dst) => op.roxeSoftFocus(src, dst, 0, radius, 0));
    add(`soft focus masked ${radius}`, (src, dst, s) => {
      const mask = picture('mask', GRAY8, s.width, s.height, 3,
        (x, y) => ((Math.trunc(x / 9) + Math.trunc(y / 7)) % 2 ? 255 : 4 * x));
      return op.roxeSoftFocus(src, dst, record(mask), radius, radius >> 1);
    });
  }
  for (const colour of [[60, 90, 180], [255, 0, 0], [128, 128, 128], [3, 2, 1]])
    for (const tolerance of [0, 40, 80, 200]) {
      const parameters = [...colour, tolerance];
      add(`replace colour ${parameters.join(' ')}`, (src, dst) =>
        op.roxeReplaceColor(src, dst, ...parameters, 75, -20, 30));
      add(`replace colour mask ${parameters.join(' ')}`, (src, dst) =>
        op.roxeReplaceColorMask(src, dst, ...parameters));
      add(`tint ${parameters.join(' ')}`, (src, dst) => op.roxeColorTint(src, dst, ...parameters));
    }
  add('tint mask', (src, dst) => op.roxeColorTintMask(src, dst, 60, 90, 180, 80));
  for (const temperature of [-100, -37, 0, 30, 100])
    for (const tint of [-60, 0, 45])
      add(`temperature ${temperature} ${tint}`, (src, dst) =>
        op.roxeColorTemperature(src, dst, temperature, tint));
  add('auto gamma', (src, dst) => op.roxeAutoGamma(src, dst, 0));
  add('auto gamma in a region', (src, dst, s) =>
    op.roxeAutoGamma(src, dst, numbers(-4, 0, (s.width + 1) >> 1, (s.height + 1) >> 1)));
  for (const shadow of [0, 10, 60])
    for (const highlight of [0, 35, 100])
      for (const midtone of [-50, 0, 25])
        add(`shadow highlight ${shadow} ${highlight} ${midtone}`, (src, dst) =>
          op.roxeShadowHighlight(src, dst, shadow, highlight, midtone));
  for (const level of [0, 3, 6])
    for (const steps of [-7, 0, 2, 40])
      add(`variations ${steps} ${level}`, (src, dst) =>
        op.roxeVariations(src, dst, steps, 1, -steps, 1, level));
  return all;
}

// FNV-1a of 64 bits.
function hash(bytes) {
  let value = 14695981039346656037n;
  for (const byte of bytes) value = BigInt.asUintN(64, (value ^ BigInt(byte)) * 1099511628211n);
  return value.toString(16).padStart(16, '0');
}

const sources = pictures();
for (const {name, run} of cases())
  for (const source of sources) {
    const target = picture('', RGB24, source.width, source.height, 4,
      (x, y, c) => 17 * x + 31 * y + 101 * c);
    const src = record(source), dst = record(target), pixels = taken.at(-2);
    const status = run(src, dst, source);
    const bytes = new Uint8Array(op.memory.buffer, pixels, target.bytes.length);
    console.log(`${name}, ${source.name}, ${status}, ${hash(bytes)}`);
    taken.forEach((pointer) => op.free(pointer));
    taken = [];
  }
