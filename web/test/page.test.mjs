// node --test web/test/page.test.mjs: the playground in a real browser. ROXE_TOOL is the command-line
// tool, whose bytes the page must give.
import {AxeBuilder} from '@axe-core/playwright';
import assert from 'node:assert/strict';
import {execFileSync} from 'node:child_process';
import {createReadStream, existsSync, mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync} from 'node:fs';
import http from 'node:http';
import {tmpdir} from 'node:os';
import {extname, join} from 'node:path';
import {after, before, test} from 'node:test';
import {fileURLToPath} from 'node:url';
import {inflateSync} from 'node:zlib';
import {chromium} from 'playwright-core';

import {encodePng} from '../page/png.mjs';
import {operations} from '../roxe.mjs';

const web = fileURLToPath(new URL('..', import.meta.url));
const photos = fileURLToPath(new URL('../../examples/photos/', import.meta.url));
const tool = process.env.ROXE_TOOL;
const types = {'.html': 'text/html', '.mjs': 'text/javascript', '.wasm': 'application/wasm',
  '.css': 'text/css', '.jpg': 'image/jpeg', '.png': 'image/png'};

const LIMIT = 300000;  // ms: only what hangs takes as long, also on a busy machine
let server, browser, address, folder;

before(async () => {
  // Served from a folder that is not the top of the site.
  server = http.createServer((request, response) => {
    const path = join(web, decodeURIComponent(request.url.replace(/^\/a\/folder\//, '').split('?')[0]) || 'index.html');
    if (!request.url.startsWith('/a/folder/') || !existsSync(path)) return response.writeHead(404).end();
    response.writeHead(200, {'content-type': types[extname(path)] ?? 'application/octet-stream'});
    createReadStream(path).pipe(response);
  });
  await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
  address = `http://127.0.0.1:${server.address().port}/a/folder/`;
  browser = await chromium.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    args: ['--no-sandbox', '--force-color-profile=srgb', '--disable-gpu', '--disable-background-networking'],
    timeout: LIMIT,
  });
  folder = mkdtempSync(join(tmpdir(), 'roxe-page-'));
});
after(async () => {
  await browser?.close();
  server?.close();
  rmSync(folder, {recursive: true, force: true});
});

// Runs a test on a fresh page; a complaint in its console or a request to elsewhere is a failure.
async function onPage(work, settings = {}) {
  const context = await browser.newContext({viewport: {width: 1280, height: 900}, acceptDownloads: true, ...settings});
  context.setDefaultTimeout(LIMIT);
  const page = await context.newPage();
  const complaints = [];
  page.on('pageerror', (error) => complaints.push(error.message));
  page.on('console', (message) => message.type() === 'error' && complaints.push(message.text()));
  page.on('request', (request) => {
    if (!/^(data|blob):/.test(request.url()) && !request.url().startsWith(address)) complaints.push(request.url());
  });
  try {
    await page.goto(address);
    await page.waitForSelector('body[data-ready]');
    await work(page);
    assert.deepEqual(complaints, []);
  } finally {
    await context.close();
  }
}

const finished = (page) => page.waitForSelector('#stage[data-done=true]:not([aria-busy])');
// And what one draws on, which is drawn when nothing is held.
async function settled(page) {
  await finished(page);
  await page.waitForSelector('#drawing:not([aria-busy])', {state: 'attached'});
}
async function choose(page, file) {
  await page.setInputFiles('#file', file);
  await settled(page);
}
async function add(page, name) {
  await page.selectOption('#add', name);
  await settled(page);
}
const recipeOf = (page) => page.inputValue('#recipe');
async function save(page, button = 'Save as PNG') {
  const [download] = await Promise.all([page.waitForEvent('download'), page.getByRole('button', {name: button}).click()]);
  return readFileSync(await download.path());
}
// The pixels of a picture file as the browser reads them, without its profile.
const pixelsOf = (page, bytes) => page.evaluate(async (base64) => {
  const binary = Uint8Array.from(atob(base64), (c) => c.charCodeAt(0));
  const bitmap = await createImageBitmap(new Blob([binary]), {colorSpaceConversion: 'none', premultiplyAlpha: 'none'});
  const context = new OffscreenCanvas(bitmap.width, bitmap.height).getContext('2d');
  context.drawImage(bitmap, 0, 0);
  const {data} = context.getImageData(0, 0, bitmap.width, bitmap.height);
  const digest = new Uint8Array(await crypto.subtle.digest('SHA-256', data));
  return `${bitmap.width}x${bitmap.height} ${[...digest].join(' ')}`;
}, bytes.toString('base64'));

// A photograph small enough for many tests.
const small = join(photos, 'metadata-orientation-5.jpg');

test('a chosen, a dropped and a bundled photograph open', () => onPage(async (page) => {
  await choose(page, small);
  assert.match(await page.textContent('#status'), /^metadata-orientation-5\.jpg: \d+ × \d+ pixels/);
  const data = await page.evaluateHandle(async (base64) => {
    const transfer = new DataTransfer();
    const bytes = Uint8Array.from(atob(base64), (c) => c.charCodeAt(0));
    transfer.items.add(new File([bytes], 'dropped.png', {type: 'image/png'}));
    return transfer;
  }, readFileSync(join(photos, 'perspective-grid.png')).toString('base64'));
  await page.dispatchEvent('#stage', 'drop', {dataTransfer: data});
  await page.waitForFunction(() => document.querySelector('#status').textContent.startsWith('dropped.png: '));
  await page.selectOption('#sample', 'rocket-night.jpg');
  await page.waitForFunction(() => document.querySelector('#status').textContent.startsWith('rocket-night.jpg: '));
}));

test('every operation works as it is added, and says so', () => onPage(async (page) => {
  await choose(page, small);
  for (const name of Object.keys(operations)) {
    await add(page, name);
    assert.equal(await page.isHidden('#error'), true, name);
    await page.locator('#chain [data-do=remove]').click();
  }
  assert.equal(await recipeOf(page), '');
}));

test('a slider moves by keys and by mouse, the preview follows, undo and redo go back and forth', () => onPage(async (page) => {
  await choose(page, small);
  await add(page, 'shadowHighlight');
  const slider = page.locator('input[type=range][id$=-shadow]');
  await slider.focus();
  for (let i = 0; i < 3; ++i) await page.keyboard.press('ArrowRight');
  assert.match(await recipeOf(page), /^shadow-highlight --shadow 3\n$/);
  await settled(page);
  const shown = () => page.evaluate(() => document.getElementById('after').toDataURL());
  const first = await shown();
  const box = await slider.boundingBox();
  await page.mouse.move(box.x + box.width / 2, box.y + box.height / 2);
  await page.mouse.down();
  await page.waitForFunction((before) => document.getElementById('after').toDataURL() !== before, first);
  await page.mouse.up();
  await settled(page);
  assert.match(await recipeOf(page), /--shadow (49|50|51)\n$/);
  await page.getByRole('button', {name: 'Undo'}).click();
  assert.match(await recipeOf(page), /--shadow 3\n$/);
  await page.keyboard.press('Control+Shift+Z');
  assert.match(await recipeOf(page), /--shadow (49|50|51)\n$/);
  for (let i = 0; i < 5; ++i) await page.keyboard.press('Control+z');
  await settled(page);
  assert.equal(await recipeOf(page), '');
}));

test('a small picture that comes late does not replace the picture itself', () => onPage(async (page) => {
  const data = Uint8ClampedArray.from({length: 4 * 1500 * 1000}, (_, i) => (i * 89) & 255);
  const file = Buffer.from(await (await encodePng({width: 1500, height: 1000, data})).arrayBuffer());
  await page.addInitScript(() => {
    let workers = 0;
    window.lateAnswers = 0;
    window.Worker = class extends Worker {
      isSmall = workers++ === 0;
      set onmessage(answer) {
        super.onmessage = async (event) => {
          if (this.isSmall) await new Promise((resolve) => document.addEventListener('let-through', resolve, {once: true}));
          answer(event);
          if (this.isSmall) ++window.lateAnswers;
        };
      }
    };
  });
  await page.reload();
  await page.waitForSelector('body[data-ready]');
  await page.setInputFiles('#file', {name: 'large.png', mimeType: 'image/png', buffer: file});
  await finished(page);
  await page.waitForFunction(() => {
    document.dispatchEvent(new Event('let-through'));
    return window.lateAnswers === 1;
  });
  assert.equal(await page.evaluate(() => document.getElementById('after').width), 1500);
}));

test('operations are reordered, switched off and removed', () => onPage(async (page) => {
  await choose(page, small);
  await add(page, 'autoGamma');
  await add(page, 'temperature');
  assert.equal(await recipeOf(page), 'auto-gamma\ntemperature\n');
  await page.getByRole('button', {name: 'Move temperature up'}).click();
  assert.equal(await recipeOf(page), 'temperature\nauto-gamma\n');
  await page.getByLabel('temperature is applied').uncheck();
  assert.equal(await recipeOf(page), 'auto-gamma\n');
  await page.getByRole('button', {name: 'Remove auto gamma'}).click();
  assert.equal(await recipeOf(page), '');
}));

test('a line is drawn by mouse and by keys', () => onPage(async (page) => {
  await choose(page, small);
  await add(page, 'straighten');
  const handle = page.locator('#handles button').first();
  const line = async () => (await recipeOf(page)).match(/--line ([-\d,]+)/)[1].split(',').map(Number);
  const start = await line();
  await handle.focus();
  await page.keyboard.press('ArrowDown');
  await page.keyboard.press('ArrowRight');
  assert.deepEqual(await line(), [start[0] + 1, start[1] + 1, start[2], start[3]]);
  await settled(page);
  const box = await handle.boundingBox();
  await page.mouse.move(box.x + box.width / 2, box.y + box.height / 2);
  await page.mouse.down();
  await page.mouse.move(box.x + 60, box.y + 40, {steps: 4});
  await page.mouse.up();
  const dragged = await line();
  assert.ok(dragged[0] > start[0] + 2 && dragged[1] > start[1] + 2, `${dragged}`);
}));

// Asks for what one draws on anew, as any change does, and gives the answer time to come.
async function drawAnew(page) {
  await page.evaluate(() => document.getElementById('show-drawing').click());
  await finished(page);
}

test('a drag goes on while the picture below it is drawn anew, and the focus stays', () => onPage(async (page) => {
  await choose(page, small);
  await add(page, 'straighten');
  const handle = page.locator('#handles button').first();
  const before = await recipeOf(page);
  const element = await handle.elementHandle();
  await handle.focus();
  await drawAnew(page);
  await settled(page);
  assert.ok(await element.evaluate((button) => button === document.activeElement));

  const box = await handle.boundingBox();
  await page.mouse.move(box.x + box.width / 2, box.y + box.height / 2);
  await page.mouse.down();
  await page.mouse.move(box.x + 30, box.y + 20);
  await drawAnew(page);
  await page.mouse.move(box.x + 60, box.y + 40);
  await page.mouse.up();
  const [x, y] = (await recipeOf(page)).match(/--line ([-\d,]+)/)[1].split(',').map(Number);
  const [startX, startY] = before.match(/--line ([-\d,]+)/)[1].split(',').map(Number);
  assert.ok(x > startX + 2 && y > startY + 2, `${x}, ${y}`);
  await page.getByRole('button', {name: 'Undo'}).click();
  assert.equal(await recipeOf(page), before);
}));

test('a stroke of the brush is kept whole while the picture below it is drawn anew', () => onPage(async (page) => {
  await choose(page, small);
  await add(page, 'softFocus');
  await page.getByLabel('mask paint what stays sharp').check();
  await page.waitForSelector('#brush:visible');
  await settled(page);
  const box = await page.locator('#ground').boundingBox();
  const stroke = async (between) => {
    await page.mouse.move(box.x + 40, box.y + 40);
    await page.mouse.down();
    await page.mouse.move(box.x + 80, box.y + 60);
    await between();
    await page.mouse.move(box.x + 120, box.y + 40);
    await page.mouse.up();
    await settled(page);
    return pixelsOf(page, await save(page, 'Save the mask'));
  };
  const blank = await pixelsOf(page, await save(page, 'Save the mask'));
  const whole = await stroke(() => {});
  assert.notEqual(whole, blank);
  await page.getByRole('button', {name: 'Undo'}).click();
  await settled(page);
  assert.equal(await stroke(() => drawAnew(page)), whole);

  // Moving the brush changes no picture: what waited for its release is drawn all the same.
  const brush = await page.locator('#handles button').boundingBox();
  await page.mouse.move(brush.x + 10, brush.y + 10);
  await page.mouse.down();
  await drawAnew(page);
  await page.mouse.up();
  await settled(page);
}));

test('what a touch drew is kept when the system takes the touch away', () => onPage(async (page) => {
  await choose(page, small);
  await add(page, 'straighten');
  const before = await recipeOf(page);
  const handle = page.locator('#handles button').first();
  const box = await handle.boundingBox();
  const session = await page.context().newCDPSession(page);
  const touch = (type, ...touchPoints) => session.send('Input.dispatchTouchEvent', {type, touchPoints});
  await touch('touchStart', {x: box.x + 5, y: box.y + 5});
  await touch('touchMove', {x: box.x + 50, y: box.y + 40});
  await touch('touchCancel');
  await settled(page);
  assert.notEqual(await recipeOf(page), before);
  await page.getByRole('button', {name: 'Undo'}).click();
  assert.equal(await recipeOf(page), before);
}, {hasTouch: true}));

test('four corners are dragged, and the page is drawn at its natural size', () => onPage(async (page) => {
  await choose(page, join(photos, 'perspective-grid.png'));
  await add(page, 'perspective');
  assert.equal(await page.locator('#handles button').count(), 4);
  const places = page.locator('[data-place^=corners]');
  for (const [i, value] of [150, 14, 400, 113, 300, 147, 64, 40].entries()) {
    await places.nth(i).fill(String(value));
    await places.nth(i).press('Tab');
  }
  await settled(page);
  assert.match(await recipeOf(page), /--corners 150,14,400,113,300,147,64,40\n/);
  const box = await page.locator('#handles button').nth(2).boundingBox();
  await page.mouse.move(box.x + 10, box.y + 10);
  await page.mouse.down();
  await page.mouse.move(box.x + 40, box.y + 10, {steps: 3});
  await page.mouse.up();
  assert.doesNotMatch(await recipeOf(page), /300,147/);
}));

test('a pipette takes the colour under it', () => onPage(async (page) => {
  await choose(page, join(photos, 'perspective-grid.png'));
  await add(page, 'tint');
  await page.getByRole('button', {name: 'Pipette'}).first().click();
  const ground = page.locator('#ground');
  await settled(page);
  const box = await ground.boundingBox();
  await page.mouse.click(box.x + box.width * 0.25, box.y + box.height * 0.75);
  const expected = await page.evaluate(() => {
    const canvas = document.querySelector('#ground');
    const {data} = canvas.getContext('2d').getImageData(Math.floor(canvas.width * 0.25), Math.floor(canvas.height * 0.75), 1, 1);
    return '#' + [...data.slice(0, 3)].map((v) => v.toString(16).padStart(2, '0')).join('');
  });
  assert.ok((await recipeOf(page)).includes(`--colour '${expected}'`), `${await recipeOf(page)} ${expected}`);
}));

test('a mask is painted by mouse and by keys', () => onPage(async (page) => {
  await choose(page, small);
  await add(page, 'softFocus');
  await page.getByLabel('mask paint what stays sharp').check();
  await page.waitForSelector('#brush:visible');
  await settled(page);
  const blurred = await pixelsOf(page, await save(page));
  const box = await page.locator('#ground').boundingBox();
  await page.mouse.move(box.x + 40, box.y + 40);
  await page.mouse.down();
  await page.mouse.move(box.x + 80, box.y + 60, {steps: 3});
  await page.mouse.up();
  await settled(page);
  const painted = await pixelsOf(page, await save(page));
  assert.notEqual(painted, blurred);
  await page.locator('#handles button').focus();
  await page.keyboard.press('Space');
  await settled(page);
  assert.notEqual(await pixelsOf(page, await save(page)), painted);
  assert.match(await recipeOf(page), /--mask mask\.png/);
  // A radius that stays behind when the mask goes means nothing.
  await page.locator('input[type=number][aria-label^="mask radius"]').fill('9');
  await page.keyboard.press('Tab');
  await page.getByLabel('mask paint what stays sharp').uncheck();
  await settled(page);
  assert.equal(await pixelsOf(page, await save(page)), blurred);
}));

test('a mask fits what it is laid upon, here and in the tool', {skip: !tool && 'ROXE_TOOL is not set'},
  () => onPage(async (page) => {
    await choose(page, small);
    await add(page, 'straighten');
    await page.locator('select[id$=-crop]').selectOption({index: 1});
    await page.locator('[data-place=line-1]').fill('180');
    await page.keyboard.press('Tab');
    for (const name of ['mask.png', 'mask-2.png']) {
      await add(page, 'softFocus');
      await page.getByLabel('mask paint what stays sharp').check();
      await page.waitForSelector('#brush:visible');
      await settled(page);
      const box = await page.locator('#ground').boundingBox();
      await page.mouse.move(box.x + 60, box.y + (name === 'mask.png' ? 60 : 160));
      await page.mouse.down();
      await page.mouse.up();
      await settled(page);
      assert.ok((await recipeOf(page)).includes(`--mask ${name}`), await recipeOf(page));
    }
    assert.equal(await page.isHidden('#error'), true);
    const downloads = [];
    page.on('download', (download) => downloads.push(download));
    await page.getByRole('button', {name: 'Save the mask'}).click();
    await page.waitForFunction(() => document.querySelector('#status').textContent.startsWith('Saved mask-2.png'));
    assert.deepEqual(downloads.map((download) => download.suggestedFilename()), ['mask.png', 'mask-2.png']);
    const masked = join(folder, 'masked');
    mkdirSync(masked);
    for (const download of downloads) await download.saveAs(join(masked, download.suggestedFilename()));
    writeFileSync(join(masked, 'recipe.txt'), await recipeOf(page));
    execFileSync(tool, ['run', 'recipe.txt', small, '--out', 'out', '--format', 'png'], {cwd: masked});
    const expected = readFileSync(join(masked, 'out', 'metadata-orientation-5.png'));
    assert.equal(await pixelsOf(page, await save(page)), await pixelsOf(page, expected));
  }));

test('a file is of what was there when it was asked for', () => onPage(async (page) => {
  await choose(page, small);
  await add(page, 'shadowHighlight');
  await page.locator('input[type=number][aria-label^=shadow]').fill('60');
  await page.keyboard.press('Tab');
  await settled(page);
  const expected = await save(page);
  await page.getByRole('button', {name: 'Undo'}).click();
  await settled(page);
  const [download] = await Promise.all([page.waitForEvent('download'), page.evaluate(() => {
    for (const id of ['redo', 'save-png', 'undo']) document.getElementById(id).click();
  })]);
  assert.equal(download.suggestedFilename(), 'metadata-orientation-5-edited.png');
  assert.deepEqual(readFileSync(await download.path()), expected);
}));

test('what cannot be made is not saved either', () => onPage(async (page) => {
  await choose(page, small);
  await add(page, 'perspective');
  for (let i = 0; i < 8; ++i) {
    await page.locator(`[data-place=corners-${i}]`).fill('5');
    await page.keyboard.press('Tab');
  }
  await page.waitForSelector('#stage[data-done=failed]');
  const sentence = 'corners: corners 1 and 2 are the same point (5, 5)';
  assert.equal(await page.textContent('#error'), sentence);
  await page.evaluate(() => (document.getElementById('error').hidden = true));
  await page.getByRole('button', {name: 'Save as PNG'}).click();
  await page.waitForSelector('#error:not([hidden])');
  assert.equal(await page.textContent('#error'), sentence);
  assert.doesNotMatch(await page.textContent('#status'), /Saved/);
}));

test('the picture that was chosen last is the one that opens', () => onPage(async (page) => {
  await page.evaluate(() => {
    const open = window.createImageBitmap;
    window.createImageBitmap = async (blob, ...more) => {
      if (blob.name === 'slow.jpg') await new Promise((resolve) => document.addEventListener('go-on', resolve));
      const bitmap = await open(blob, ...more);
      if (blob.name === 'slow.jpg') bitmap.close = () => (document.body.dataset.closed = 'true');
      return bitmap;
    };
  });
  await page.setInputFiles('#file', {name: 'slow.jpg', mimeType: 'image/jpeg', buffer: readFileSync(small)});
  await choose(page, join(photos, 'perspective-grid.png'));
  await page.evaluate(() => document.dispatchEvent(new Event('go-on')));
  await page.waitForSelector('body[data-closed]');
  assert.match(await page.textContent('#status'), /^perspective-grid\.png: /);
}));

test('a new photograph begins with an empty list, even while a control moves', () => onPage(async (page) => {
  await choose(page, small);
  await add(page, 'tint');
  await page.locator('input[type=color]').first().evaluate((input) => {
    input.value = '#112233';
    input.dispatchEvent(new Event('input'));
  });
  assert.match(await recipeOf(page), /#112233/);
  await choose(page, join(photos, 'perspective-grid.png'));
  assert.equal(await recipeOf(page), '');
}));

test('a photograph that cannot be fetched is named', () => onPage(async (page) => {
  await page.evaluate(() => (window.fetch = () => Promise.reject(new TypeError('Failed to fetch'))));
  await page.selectOption('#sample', 'rocket-night.jpg');
  await page.waitForSelector('#error:not([hidden])');
  assert.equal(await page.textContent('#error'), 'rocket-night.jpg cannot be fetched.');
  assert.equal(await page.textContent('#status'), 'Nothing is open.');
}));

test('a rectangle chooses what auto gamma judges by', () => onPage(async (page) => {
  await choose(page, small);
  await add(page, 'autoGamma');
  await page.getByLabel(/region judge/).check();
  await page.getByRole('button', {name: 'Draw on the picture'}).click();
  await page.locator('#handles button').nth(1).focus();
  const before = await recipeOf(page);
  await page.keyboard.press('ArrowLeft');
  const [, , width] = before.match(/--region ([\d,]+)/)[1].split(',').map(Number);
  assert.equal((await recipeOf(page)).match(/--region ([\d,]+)/)[1].split(',').map(Number)[2], width - 1);
}));

for (const file of ['perspective-grid.png', 'rocket-night.jpg', 'metadata-exif-xmp-icc.jpg', 'metadata-orientation-5.jpg'])
  test(`the saved bytes are the tool's: ${file}`, {skip: !tool && 'ROXE_TOOL is not set'}, () => onPage(async (page) => {
    await choose(page, join(photos, file));
    await add(page, 'rotate');
    await page.locator('input[type=number][aria-label^=angle]').fill('3.5');
    await page.keyboard.press('Tab');
    await add(page, 'shadowHighlight');
    await page.locator('input[type=number][aria-label^=shadow]').fill('40');
    await page.keyboard.press('Tab');
    await add(page, 'temperature');
    await page.locator('input[type=number][aria-label^="temperature in"]').fill('-20');
    await page.keyboard.press('Tab');
    await add(page, 'replaceColour');
    await page.locator('input[type=number][aria-label^=hue]').fill('90');
    await page.keyboard.press('Tab');
    await settled(page);
    const saved = await save(page);

    const recipe = join(folder, 'recipe.txt');
    writeFileSync(recipe, await recipeOf(page));
    const out = join(folder, file);
    execFileSync(tool, ['run', recipe, join(photos, file), '--out', out, '--format', 'png']);
    const expected = readFileSync(join(out, file.replace(/\.[^.]*$/, '.png')));
    assert.equal(await pixelsOf(page, saved), await pixelsOf(page, expected));
  }));

test('colours under transparency survive to the last bit', () => onPage(async (page) => {
  const data = Uint8ClampedArray.from({length: 4 * 64 * 50}, (_, i) => (i * 89 + (i >> 6) * 31) & 255);
  const file = Buffer.from(await (await encodePng({width: 64, height: 50, data})).arrayBuffer());
  await choose(page, {name: 'glass.png', mimeType: 'image/png', buffer: file});
  // The rows as they were packed: two packers may write the same in different ways.
  const rows = (png) => inflateSync(png.subarray(41, 41 + png.readUInt32BE(33)));
  assert.deepEqual(rows(await save(page)), rows(file));
}));

test('what is no picture, and what the browser cannot read, is refused in a sentence', () => onPage(async (page) => {
  const give = async (name, bytes) => {
    await page.setInputFiles('#file', {name, mimeType: 'application/octet-stream', buffer: Buffer.from(bytes)});
    await page.waitForSelector('#error:not([hidden])');
    return page.textContent('#error');
  };
  assert.equal(await give('notes.txt', 'hello'), 'notes.txt is not a picture that this browser can read.');
  assert.match(await give('a.heic', '\0\0\0\x18ftypheic\0\0\0\0'), /^a\.heic is HEIC, .* save it as JPEG first\.$/);
  assert.equal(await give('empty.jpg', ''), 'empty.jpg is empty.');
  assert.match(await give('raw.nef', 'MM\0*\0\0\0\x08'), /raw photograph/);
  assert.equal(await page.textContent('#status'), 'Nothing is open.');
}));

for (const colorScheme of ['light', 'dark'])
  for (const width of [360, 1280])
    test(`nothing hinders a screen reader: ${colorScheme}, ${width} px`, () => onPage(async (page) => {
      const check = async (view) => {
        const {violations} = await new AxeBuilder({page}).analyze();
        assert.deepEqual(violations.map((v) => `${view}: ${v.id} ${v.nodes[0].html}`), []);
        const overflow = await page.evaluate(() => document.documentElement.scrollWidth - innerWidth);
        assert.ok(overflow <= 0, `${view} is ${overflow} px too wide`);
        if (process.env.ROXE_SHOTS)
          await page.screenshot({path: join(process.env.ROXE_SHOTS, `${colorScheme}-${width}-${view}.png`), fullPage: true});
      };
      await check('empty');
      await choose(page, join(photos, 'rocket-night.jpg'));
      await check('open');
      for (const name of ['straighten', 'perspective', 'softFocus', 'replaceColour', 'autoGamma', 'variations']) {
        await add(page, name);
        await check(name);
        await page.locator('#chain [data-do=remove]').click();
      }
      await page.setInputFiles('#file', {name: 'x.txt', mimeType: 'text/plain', buffer: Buffer.from('x')});
      await page.waitForSelector('#error:not([hidden])');
      await check('error');
    }, {colorScheme, viewport: {width, height: 800}}));
