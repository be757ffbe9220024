// node --test web/test: the package as its users call it.
import assert from 'node:assert/strict';
import {execFileSync} from 'node:child_process';
import {readFile} from 'node:fs/promises';
import test from 'node:test';
import {fileURLToPath} from 'node:url';
import vm from 'node:vm';

import {load, operations} from '../roxe.mjs';

const roxe = await load();

// Red, green, blue of every pixel, opaque unless alpha is given.
function image(width, height, pixels, alpha = () => 255) {
  const data = new Uint8ClampedArray(4 * width * height);
  for (let i = 0; i < width * height; ++i) {
    const [x, y] = [i % width, Math.floor(i / width)];
    data.set([...pixels(x, y), alpha(x, y)], 4 * i);
  }
  return {width, height, data};
}
const pixel = ({width, data}, x, y) => [...data.slice(4 * (y * width + x), 4 * (y * width + x) + 4)];
const numbered = (width, height) => image(width, height, (x, y) => [x, y, 7]);

test('a quarter turn clockwise moves every pixel and changes none', () => {
  const turned = roxe.rotate(numbered(3, 2), {angle: 90});
  assert.deepEqual([turned.width, turned.height], [2, 3]);
  // The lower left corner comes to lie at the top left, the upper left one at the top right.
  assert.deepEqual(pixel(turned, 0, 0), [0, 1, 7, 255]);
  assert.deepEqual(pixel(turned, 1, 0), [0, 0, 7, 255]);
  assert.deepEqual(pixel(turned, 0, 2), [2, 1, 7, 255]);
  assert.deepEqual(roxe.rotate(turned, {angle: -90}).data, numbered(3, 2).data);
  assert.deepEqual(roxe.rotate(roxe.rotate(numbered(3, 2), {angle: 180}), {angle: -180}).data,
    numbered(3, 2).data);
  assert.deepEqual(roxe.rotate(numbered(3, 2), {angle: 720}).data, numbered(3, 2).data);
});

test('the library itself loses a seam of one pixel, and edges: repeat does not', () => {
  const grey = image(9, 9, () => [90, 90, 90]);
  const kept = roxe.rotate(grey, {angle: 0, edges: 'keep', background: 'white'});
  assert.deepEqual(pixel(kept, 0, 4), [255, 255, 255, 255]);
  assert.deepEqual(pixel(kept, 1, 4), [90, 90, 90, 255]);
  const line = [0, 4, 8, 5];
  const level = roxe.straighten(grey, {line, background: 'white'});
  assert.deepEqual(pixel(level, 0, 4), [90, 90, 90, 255]);
});

test('crop leaves no background, whatever the angle', () => {
  const grey = image(61, 40, () => [90, 90, 90]);
  for (const crop of [true, 'free'])
    for (const edges of ['repeat', 'keep'])
      for (let angle = -89.5; angle < 91; angle += 3.7) {
        const turned = roxe.rotate(grey, {angle, crop, edges, background: 'magenta'});
        for (let i = 0; i < turned.data.length; i += 4) assert.equal(turned.data[i], 90, `${angle}`);
      }
});

test('opacity goes along, moved by the geometry and untouched by colours', () => {
  const half = image(4, 1, (x) => [60, 120, 180], (x) => 50 * x);
  assert.deepEqual(pixel(roxe.rotate(half, {angle: 180}), 0, 0), [60, 120, 180, 150]);
  const bright = roxe.variations(half, {dark: -2});
  for (let x = 0; x < 4; ++x) assert.equal(pixel(bright, x, 0)[3], 50 * x);
});

test('colours keep their places: red stays red where green is replaced', () => {
  const flags = image(2, 1, (x) => (x === 0 ? [200, 0, 0] : [0, 200, 0]));
  const changed = roxe.replaceColour(flags, {colour: '#00C800', tolerance: 30, hue: 120});
  assert.deepEqual(pixel(changed, 0, 0), [200, 0, 0, 255]);
  const [red, green, blue, alpha] = pixel(changed, 1, 0);
  assert.deepEqual([green, blue, alpha], [0, 200, 255]);
  assert.ok(red < 5, `${red}`);  // a degree of hue is 3.3 levels
});

test('a pixel that should be grey becomes grey, and one that is grey changes nothing', () => {
  const cast = image(3, 1, (x) => [[90, 120, 150], [200, 200, 200], [10, 60, 30]][x]);
  const [red, green, blue] = pixel(roxe.temperature(cast, {grey: [0, 0]}), 0, 0);
  assert.ok(Math.max(red, green, blue) - Math.min(red, green, blue) < 4, `${[red, green, blue]}`);
  assert.deepEqual(roxe.temperature(cast, {grey: [1, 0]}).data, cast.data);
});

test('a chain in the module gives what single calls give', () => {
  const start = image(40, 30, (x, y) => [6 * x, 8 * y, 5 * x + y]);
  const single = roxe.temperature(roxe.autoGamma(roxe.rotate(start, {angle: 3})), {temperature: 9});
  const picture = roxe.open(start);
  const before = picture.copy();
  picture.rotate({angle: 3}).autoGamma().temperature({temperature: 9});
  assert.deepEqual(picture.toImage(), single);
  assert.deepEqual(before.toImage().data, start.data);
  picture.close();
  before.close();
});

test('memory is given back: a thousand calls need no more than ten', async () => {
  const module = await WebAssembly.compile(await readFile(new URL('../dist/roxe.wasm', import.meta.url)));
  let memory;
  const instantiate = WebAssembly.instantiate;
  WebAssembly.instantiate = async (...given) => {
    const instance = await instantiate(...given);
    memory = instance.exports.memory;
    return instance;
  };
  const fresh = await load(module);
  WebAssembly.instantiate = instantiate;
  const start = image(200, 100, (x, y) => [x, y, 0], (x) => x);
  const work = () => {
    fresh.softFocus(start, {radius: 5, mask: start, maskRadius: 3});
    fresh.rotate(start, {angle: 5});
    assert.throws(() => fresh.perspective(start, {corners: [0, 0, 99, 0, 99, 9, 0, 9], fit: [5, 1]}));
  };
  for (let i = 0; i < 10; ++i) work();
  const bytes = memory.buffer.byteLength;
  for (let i = 0; i < 1000; ++i) work();
  assert.equal(memory.buffer.byteLength, bytes);
});

const good = numbered(20, 10);
const refused = [
  ['no image', () => roxe.rotate(null, {angle: 1}), /must be \{width, height, data\}/],
  ['numbers as data', () => roxe.rotate({width: 1, height: 1, data: [1, 2, 3, 4]}, {angle: 1}), /must be/],
  ['too few bytes', () => roxe.tint({width: 2, height: 2, data: new Uint8Array(12)},
    {colour: 'red', tolerance: 1}), /needs 16 bytes of data, not 12/],
  ['a missing option', () => roxe.rotate(good), /^rotate needs angle: positive turns clockwise$/],
  ['an unknown option', () => roxe.rotate(good, {angel: 2}), /has no option angel; it has angle/],
  ['a text for a number', () => roxe.rotate(good, {angle: '2'}),
    /^angle needs a number from -3600 to 3600, not "2"$/],
  ['no text for a number', () => roxe.shadowHighlight(good, {shadow: ''}), /from 0 to 100, not ""$/],
  ['a BigInt', () => roxe.shadowHighlight(good, {shadow: 5n}), /from 0 to 100, not 5n$/],
  ['a symbol', () => roxe.rotate(good, {angle: Symbol('a'), expand: 1}), /, not Symbol\(a\)$/],
  ['a symbol for a choice', () => roxe.rotate(good, {angle: 1, crop: Symbol('a')}), /, not Symbol\(a\)$/],
  ['an object of no class', () => roxe.rotate(good, {angle: Object.create(null)}), /, not of type object$/],
  ['a list for a flag', () => roxe.rotate(good, {angle: 1, expand: [true]}), /, not an array$/],
  ['a point of holes', () => roxe.rotate(good, {angle: 5, about: new Array(2)}), /^about needs 2 whole numbers/],
  ['a line with a hole', () => roxe.straighten(good, {line: [, 1, 5, 3]}), /^line needs 4 whole numbers/],
  ['a grey of holes', () => roxe.temperature(good, {grey: new Array(2)}), /^grey needs 2 whole numbers/],
  ['a region of holes', () => roxe.autoGamma(good, {region: new Array(4)}), /^region needs 4 whole/],
  ['corners with holes', () => roxe.naturalSize([, , 19, 0, 19, 9, 0, 9]), /^corners needs 8 whole numbers/],
  ['a proxy of bytes', () => roxe.rotate({...good, data: new Proxy(good.data, {})}, {angle: 1}), /must be/],
  ['data of other numbers', () => roxe.rotate({...good, data: new Int8Array(800)}, {angle: 1}), /must be/],
  ['not a number', () => roxe.rotate(good, {angle: NaN}), /needs a number/],
  ['a fraction', () => roxe.shadowHighlight(good, {shadow: 1.5}), /whole number from 0 to 100/],
  ['out of range', () => roxe.shadowHighlight(good, {shadow: 101}), /whole number from 0 to 100/],
  ['no colour', () => roxe.tint(good, {colour: 'blurple', tolerance: 1}), /needs a colour such as/],
  ['a line of one point', () => roxe.straighten(good, {line: [1, 1, 1, 1]}), /two different points/],
  ['a line outside', () => roxe.straighten(good, {line: [1, 1, 99, 3]}), /lies outside the picture/],
  ['equal corners', () => roxe.naturalSize([1, 1, 1, 1, 2, 2, 3, 3]), /are the same point/],
  ['corners on a line', () => roxe.naturalSize([0, 0, 1, 1, 2, 2, 0, 5]), /lie on one line/],
  ['a corner inside', () => roxe.naturalSize([0, 0, 10, 0, 5, 3, 5, 9]), /lies inside the triangle/],
  ['a crossing outline', () => roxe.warp(good, {from: [0, 0, 9, 9, 9, 0, 0, 9],
    to: [0, 0, 9, 0, 9, 9, 0, 9]}), /crosses itself/],
  ['far corners on a line', () => roxe.perspective(good, {corners: [0, 0, 9, 9, 99, 99, 0, 9]}),
    /^corners: corners 1 \(0, 0\), 2 \(9, 9\) and 3 \(99, 99\) lie on one line$/],
  ['far places on a line', () => roxe.warp(good, {from: [0, 0, 9, 9, 99, 99, 0, 9],
    to: [0, 0, 9, 0, 9, 9, 0, 9]}), /lie on one line$/],
  ['far corners', () => roxe.perspective(good, {corners: [0, 0, 9, 0, 9, 9, 0, 999]}), /far outside/],
  ['crop and expand', () => roxe.rotate(good, {angle: 3, crop: true, expand: true}), /crop excludes/],
  ['too small to crop', () => roxe.rotate(numbered(2, 1), {angle: 30, crop: true}), /too small/],
  ['size and fit', () => roxe.perspective(good, {corners: [0, 0, 9, 0, 9, 9, 0, 9], size: [1, 1],
    fit: [2, 2]}), /size excludes fit/],
  ['a mask of another size', () => roxe.softFocus(good, {radius: 3, mask: numbered(3, 3)}),
    /the mask has 3 × 3 pixels but the picture has 20 × 10/],
  ['grey and tint', () => roxe.temperature(good, {grey: [1, 1], tint: 2}), /grey cannot go with/],
  ['grey outside', () => roxe.temperature(good, {grey: [20, 1]}), /lies outside the picture/],
  ['an option that every object inherits', () => roxe.shadowHighlight(good, {constructor: 1}),
    /^shadowHighlight has no option constructor/],
  ['a colour in a list', () => roxe.tint(good, {colour: ['red'], tolerance: 1}),
    /^colour needs a colour such as '#E07A2C' or orange, not red$/],
  ['a radius of no mask', () => roxe.softFocus(good, {radius: 3, maskRadius: 3}), /^maskRadius needs mask$/],
  ['a region outside', () => roxe.autoGamma(good, {region: [0, 0, 21, 3]}),
    /^region 0,0,21,3 reaches outside the picture of 20 × 10 pixels$/],
];
for (const [name, call, sentence] of refused)
  test(`refused: ${name}`, () => {
    assert.throws(call, (error) => (error instanceof TypeError || error instanceof RangeError) &&
      sentence.test(error.message));
  });

// 3 bytes for each of these pixels are more than 2^32, or that and a few: sizes that a 32-bit number
// holds only in part.
for (const [width, height] of [[40000, 40000], [65536, 65536], [37838, 37838]])
  test(`refused: ${width} × ${height} pixels, more than there is memory for`, () => {
    const to = [0, 0, width, 0, width, height, 0, height];
    assert.throws(() => roxe.warp(good, {from: [0, 0, 19, 0, 19, 9, 0, 9], to, size: [width, height]}),
      {name: 'RangeError', message: 'there is not enough memory for this picture'});
    // The module is as good as before.
    assert.deepEqual(roxe.rotate(good, {angle: 0}).data, good.data);
  });

test('a wrong type is a TypeError, a number out of range a RangeError', () => {
  assert.throws(() => roxe.rotate(good, {angle: '2'}), TypeError);
  assert.throws(() => roxe.shadowHighlight(good, {shadow: true}), TypeError);
  assert.throws(() => roxe.rotate(good, {angle: 3601}), RangeError);
  assert.throws(() => roxe.shadowHighlight(good, {shadow: 0.5}), RangeError);
});

test('nobody changes what options may be', () => {
  assert.throws(() => (operations.rotate.angle.high = 1e9), TypeError);
  assert.throws(() => operations.rotate.crop.values.push('all'), TypeError);
});

test('what there is no memory for is refused, and the picture stays', () => {
  const script = `
    import {load} from ${JSON.stringify(new URL('../roxe.mjs', import.meta.url).href)};
    const roxe = await load();
    const grey = (v) => ({width: 1000, height: 1000,
      data: new Uint8ClampedArray(4e6).map((_, i) => (i % 4 === 3 ? 255 : v))});
    const picture = roxe.open(grey(200)), other = roxe.open(grey(33)), others = [];
    try { for (;;) others.push(other.copy()); } catch {}
    others.pop().close();
    const attempt = (name, options) => {
      try { picture[name](options); return 'done'; } catch (error) { return error.message; }
    };
    const said = [attempt('softFocus', {radius: 1000}),
      attempt('softFocus', {radius: 1, mask: grey(0), maskRadius: 1000})];
    const dot = {width: 90, height: 90, data: new Uint8Array(32400)};
    try { for (;;) others.push(roxe.open(dot)); } catch {}
    said.push(attempt('shadowHighlight', {shadow: 50}));
    for (const each of others) each.close();
    const colours = new Set(picture.toImage().data.filter((_, i) => i % 4 !== 3));
    console.log(JSON.stringify([...said, ...colours, attempt('softFocus', {radius: 1000})]));`;
  const printed = execFileSync(process.execPath,
    ['--wasm-max-mem-pages=400', '--input-type=module', '-e', script], {encoding: 'utf8'});
  const refusal = 'there is not enough memory for this picture';
  assert.deepEqual(JSON.parse(printed), [refusal, refusal, refusal, 200, 'done']);
});

test('images and places of another window are as good', async () => {
  const foreign = vm.runInNewContext('new Uint8ClampedArray(800).fill(9)');
  assert.ok(!(foreign instanceof Uint8ClampedArray));
  const {data} = roxe.rotate({width: 20, height: 10, data: foreign}, {angle: 0});
  assert.ok(data instanceof Uint8ClampedArray && data.every((v) => v === 9));
});

test('the module comes from a URL, its text, a path, bytes or what was compiled', async () => {
  const url = new URL('../dist/roxe.wasm', import.meta.url);
  const bytes = await readFile(url);
  for (const source of [url, url.href, fileURLToPath(url), bytes, await WebAssembly.compile(bytes)])
    assert.deepEqual((await load(source)).naturalSize([0, 0, 9, 0, 9, 9, 0, 9]), [9, 9]);
  await assert.rejects(load('nowhere.wasm'), /nowhere\.wasm/);
});

test('a selection is opaque, and made among the colours as they are over black', () => {
  const alphas = [0, 80, 160, 255];
  const picture = image(4, 1, () => [200, 100, 50], (x) => alphas[x]);
  const over = image(4, 1, (x) => [200, 100, 50].map((v) => Math.round(v * alphas[x] / 255)));
  const options = {colour: '#C86432', tolerance: 80};
  assert.deepEqual(roxe.colourMask(picture, options).data, roxe.colourMask(over, options).data);
  assert.deepEqual(pixel(roxe.colourMask(picture, options), 3, 0), [255, 255, 255, 255]);
});

test('what is transparent of a mask counts as black', () => {
  const picture = image(20, 10, (x, y) => [(x * 37 + y * 91) % 256, (x * 11) % 256, (y * 53) % 256]);
  const white = image(20, 10, () => [255, 255, 255], (x) => (x < 8 ? 0 : x < 14 ? 128 : 255));
  const grey = image(20, 10, (x) => Array(3).fill(x < 8 ? 0 : x < 14 ? 128 : 255));
  assert.deepEqual(roxe.softFocus(picture, {radius: 5, mask: white}).data,
    roxe.softFocus(picture, {radius: 5, mask: grey}).data);
  assert.deepEqual([...white.data.slice(0, 4)], [255, 255, 255, 0]);  // the mask stays as it is
});

test('a closed picture says that it is closed', () => {
  const picture = roxe.open(good);
  picture.close();
  picture.close();
  for (const use of [() => picture.toImage(), () => picture.copy(), () => picture.width,
    () => picture.tint({colour: 'red', tolerance: 1}), () => picture.rotate({angle: 5})])
    assert.throws(use, {name: 'TypeError', message: 'this picture is closed'});
});

test('every operation is a method, on images and on pictures', () => {
  for (const name of Object.keys(operations)) {
    assert.equal(typeof roxe[name], 'function');
    assert.equal(typeof roxe.open(good)[name], 'function');
  }
});
