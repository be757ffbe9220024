// Opens every page of the built site in Debian's chromium, light and dark, wide and narrow.
//
//   node docs/site/browse.mjs SITE    run in the root of the project, after npm ci --prefix web/test
//
// A page fails that asks for anything from another place, complains, or is wider than its window. The
// search finds an operation, the switch changes the theme, and the playground edits a photograph. With
// ROXE_SHOTS=FOLDER the pages that differ most are photographed.

import assert from 'node:assert/strict';
import {createReadStream, existsSync, readdirSync, statSync} from 'node:fs';
import http from 'node:http';
import {createRequire} from 'node:module';
import {extname, join, relative} from 'node:path';

const {chromium} = createRequire(new URL('../../web/test/package.json', import.meta.url))('playwright-core');

const site = process.argv[2];
const shots = process.env.ROXE_SHOTS;
const PHOTOGRAPHED = ['index', 'operations/shadow-highlight', 'operations/rotate', 'reference', 'gallery', 'playground', 'bands',
  'tool', 'guarantees', 'speed'];
const TYPES = {'.html': 'text/html', '.mjs': 'text/javascript', '.js': 'text/javascript', '.css': 'text/css',
  '.json': 'application/json', '.wasm': 'application/wasm', '.jpg': 'image/jpeg', '.png': 'image/png', '.svg': 'image/svg+xml'};

const server = http.createServer((request, response) => {
  let path = join(site, decodeURIComponent(new URL(request.url, 'http://x').pathname));
  if (existsSync(path) && statSync(path).isDirectory()) path = join(path, 'index.html');
  if (!existsSync(path)) return response.writeHead(404).end();
  response.writeHead(200, {'content-type': TYPES[extname(path)] ?? 'application/octet-stream'});
  createReadStream(path).pipe(response);
});
await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
const address = `http://127.0.0.1:${server.address().port}/`;
const LIMIT = 300000;  // ms: only what hangs takes as long, also on a busy machine
const browser = await chromium.launch({
  executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
  args: ['--no-sandbox', '--force-color-profile=srgb', '--disable-gpu', '--disable-background-networking'],
  timeout: LIMIT,
});

const pages = readdirSync(site, {recursive: true}).filter((name) =>
  name.endsWith('.html') && !name.startsWith('playground/') && name !== '404.html').sort();
assert.ok(pages.length > 20, `${pages.length} pages`);

const complaints = [];
async function withPage(settings, work) {
  const context = await browser.newContext(settings);
  context.setDefaultTimeout(LIMIT);
  const page = await context.newPage();
  page.on('pageerror', (error) => complaints.push(`${page.url()}: ${error.message}`));
  page.on('console', (message) => message.type() === 'error' && complaints.push(`${page.url()}: ${message.text()}`));
  page.on('request', (request) => {
    if (!/^(data|blob):/.test(request.url()) && !request.url().startsWith(address))
      complaints.push(`${page.url()} asks for ${request.url()}`);
  });
  page.on('response', (response) => response.ok() || complaints.push(`${page.url()}: ${response.status()} ${response.url()}`));
  await work(page);
  await context.close();
}

// Every page light and wide, and dark and narrow; what is photographed in the other ways too.
for (const colorScheme of ['light', 'dark'])
  for (const [width, height] of [[1280, 900], [390, 844]])
    await withPage({colorScheme, viewport: {width, height}}, async (page) => {
      const every = (colorScheme === 'light') === (width === 1280);
      for (const name of every ? pages : pages.filter((name) => PHOTOGRAPHED.includes(name.replace(/\.html$/, '')))) {
        await page.goto(address + name, {waitUntil: 'load'});
        const overflow = await page.evaluate(() => document.documentElement.scrollWidth - innerWidth);
        if (overflow > 0) complaints.push(`${name} is ${overflow} px too wide for ${width} px`);
        const shot = name.replace(/\.html$/, '');
        if (!shots || !PHOTOGRAPHED.includes(shot)) continue;
        await page.waitForTimeout(300);
        await page.screenshot({path: join(shots, `${shot.replace('/', '-')}-${colorScheme}-${width}.png`)});
      }
    });

await withPage({colorScheme: 'light', viewport: {width: 1280, height: 900}}, async (page) => {
  await page.goto(address);
  await page.click('.md-search__input');
  await page.keyboard.type('highlights');
  await page.waitForSelector('.md-search-result__item a[href*="shadow-highlight"]');
  if (shots) await page.screenshot({path: join(shots, 'search.png')});
  await page.keyboard.press('Escape');
  await page.waitForSelector('body[data-md-color-scheme=default]');
  await page.click('.md-header__option label:visible');
  await page.waitForSelector('body[data-md-color-scheme=slate]');
});

for (const colorScheme of ['light', 'dark'])
  await withPage({colorScheme, viewport: {width: 1280, height: 900}}, async (page) => {
    await page.goto(address + 'playground.html');
    const frame = page.frameLocator('iframe.playground');
    await frame.locator('body[data-ready]').waitFor();
    await frame.locator('#sample').selectOption('rocket-night.jpg');
    await frame.locator('#add:enabled').selectOption('shadowHighlight');
    await frame.locator('input[type=number][aria-label^=shadow]').fill('40');
    await page.keyboard.press('Tab');
    await frame.locator('#recipe').evaluate(async (recipe, limit) => {
      for (const end = Date.now() + limit; !recipe.value.includes('--shadow 40');) {
        if (Date.now() > end) throw new Error(`the playground's recipe is ${recipe.value}`);
        await new Promise((resolve) => setTimeout(resolve, 50));
      }
    }, LIMIT);
    if (shots) {
      await page.waitForTimeout(1500);
      await page.screenshot({path: join(shots, `playground-used-${colorScheme}.png`)});
    }
  });

await browser.close();
server.close();
if (complaints.length) {
  console.error([...new Set(complaints)].join('\n'));
  process.exit(1);
}
console.log(`${pages.length} pages opened, light and wide, dark and narrow; nothing was asked of another place`);
