// Times every operation in the module on 12 megapixels, as scripts/bench does for the native tables:
// node web/bench.mjs [REPETITIONS] [--json] prints the least milliseconds of so many (9), or the same in the
// form that bench/report.py reads.
import {readFile} from 'node:fs/promises';

const as_json = process.argv.includes('--json');
const repetitions = Number(process.argv.slice(2).find((argument) => argument !== '--json') ?? 9);
const {instance} = await WebAssembly.instantiate(
  await readFile(new URL('./dist/roxe.wasm', import.meta.url)), {});
const op = instance.exports;
const width = 4000, height = 3000;

// Smooth areas and a little grain, like the scene of the native benchmark.
let state = 12345;
const below = (n) => {
  state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
  return (state >>> 8) % n;
};
function scene() {
  const grid = 64, lattice = Float32Array.from({length: 3 * grid * grid * 3}, () => below(65536) / 65535);
  const pixels = new Uint8ClampedArray(3 * width * height);
  const octaves = [[512, 170], [128, 60], [63, 26]];
  for (let y = 0, i = 0; y < height; ++y)
    for (let x = 0; x < width; ++x)
      for (let c = 0; c < 3; ++c, ++i) {
        let sum = below(9) - 4;
        for (let o = 0; o < 3; ++o) {
          const [period, amplitude] = octaves[o];
          const fx = x % period / period, fy = y % period / period;
          const gx = x / period | 0, gy = y / period | 0;
          const at = (dx, dy) => lattice[((o * grid + (gy + dy) % grid) * grid + (gx + dx) % grid) * 3 + c];
          const top = at(0, 0) + fx * (at(1, 0) - at(0, 0)), bottom = at(0, 1) + fx * (at(1, 1) - at(0, 1));
          sum += amplitude * (top + fy * (bottom - top));
        }
        pixels[i] = sum;
      }
  return pixels;
}

function place(bytes) {
  const pointer = op.malloc(bytes.length) >>> 0;
  new Uint8Array(op.memory.buffer, pointer, bytes.length).set(bytes);
  return pointer;
}
const numbers = (...values) => place(new Uint8Array(Int32Array.from(values).buffer));
const src = numbers(0, width, height, 3 * width, place(scene()));
const dst = numbers(0, width, height, 3 * width, place(new Uint8Array(3 * width * height)));
const mask = numbers(3, width, height, width,
  place(Uint8Array.from({length: width * height}, (_, i) => ((i % width) / 13 | 0) & 255)));
const [x, y] = [width / 2, height / 2];
const rotate = (degrees) => () => op.roxeRotateImage(src, x, y, degrees * 0.017453293, dst, x, y);
const rect = numbers(0, 0, width, height);
const quad = () => numbers(width * 3 / 40, height / 12, width * 37 / 40, height / 25, width * 77 / 80,
  height * 14 / 15, width * 3 / 80, height * 29 / 30);
const selection = [60, 90, 180, 80];

const operations = {
  'rotate 7.3': rotate(7.3),
  'rotate 45': rotate(45),
  'rotate 85': rotate(85),
  'straighten 1': () => op.roxeuAutoStraightenImage(src, 0, 0, 400, -7, dst),
  affine: () => op.roxeAffineTransform(src, dst, quad(), 0, rect),
  perspective: () => op.roxePerspectiveDistortionCorrection(src, dst, quad(), 0, 0, rect),
  'soft focus 21': () => op.roxeSoftFocus(src, dst, 0, 21, 0),
  'soft focus 21 masked': () => op.roxeSoftFocus(src, dst, mask, 21, 21),
  'replace colour': () => op.roxeReplaceColor(src, dst, ...selection, 40, 10, 5),
  mask: () => op.roxeReplaceColorMask(src, dst, ...selection),
  tint: () => op.roxeColorTint(src, dst, ...selection),
  temperature: () => op.roxeColorTemperature(src, dst, 30, 0),
  'auto gamma': () => op.roxeAutoGamma(src, dst, 0),
  'shadow/highlight': () => op.roxeShadowHighlight(src, dst, 40, 30, 20),
  variations: () => op.roxeVariations(src, dst, 1, -2, 3, 1, 2),
};

const benchmarks = [];
for (const [name, run] of Object.entries(operations)) {
  let least = Infinity;
  for (let i = 0; i < repetitions; ++i) {
    const start = performance.now();
    run();
    least = Math.min(least, performance.now() - start);
  }
  benchmarks.push({name: `${name}/wasm/12MP`, real_time: least});
  if (!as_json) console.log(`${name.padEnd(22)}${least.toFixed(1).padStart(8)} ms`);
}
if (as_json) console.log(JSON.stringify({benchmarks}));
