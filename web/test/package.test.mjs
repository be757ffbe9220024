// node --test web/test/package.test.mjs: the module and the package as they are shipped.
import assert from 'node:assert/strict';
import {execFileSync} from 'node:child_process';
import {mkdtempSync, readFileSync, rmSync, writeFileSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join} from 'node:path';
import {test} from 'node:test';
import {fileURLToPath} from 'node:url';
import {gzipSync} from 'node:zlib';

const web = fileURLToPath(new URL('..', import.meta.url));
const wasm = readFileSync(join(web, 'dist/roxe.wasm'));

test('the module imports nothing, exports the fifteen operations and is small', () => {
  const module = new WebAssembly.Module(wasm);
  assert.deepEqual(WebAssembly.Module.imports(module), []);
  const header = readFileSync(join(web, '../include/roxe.h'), 'utf8');
  const declared = [...header.matchAll(/^ROXE_API\b[^(]*\b(roxe\w+)\(/gm)].map((match) => match[1]);
  assert.equal(declared.length, 15);
  const exported = WebAssembly.Module.exports(module).map(({name}) => name);
  assert.deepEqual(exported.filter((name) => name.startsWith('roxe')).sort(), declared.sort());
  const size = gzipSync(wasm, {level: 9}).length;
  assert.ok(size <= 73728, `${size} bytes gzipped`);
});

function inFolder(work) {
  const folder = mkdtempSync(join(tmpdir(), 'roxe-package-'));
  try {
    work(folder, (program, ...words) => execFileSync(program, words, {cwd: folder, encoding: 'utf8'}));
  } finally {
    rmSync(folder, {recursive: true, force: true});
  }
}

// The package in an empty folder, from its tarball.
function installed(work) {
  inFolder((folder, run) => {
    const [{filename, files}] = JSON.parse(run('npm', 'pack', '--json', '--silent', web));
    run('npm', 'install', '--silent', '--no-audit', '--no-fund', '--offline', join(folder, filename));
    work(folder, run, files.map(({path}) => path));
  });
}

test('the example of the README runs from the tarball in an empty folder', () => installed((folder, run, files) => {
  assert.ok(files.includes('dist/roxe.wasm'));
  assert.ok(files.every((path) => !path.startsWith('test/') && !path.includes('photos')));
  const [, example] = readFileSync(join(web, 'README.md'), 'utf8').match(/```js\n([^]*?)```/);
  writeFileSync(join(folder, 'example.mjs'), example);
  // The line falls by 9 pixels in 600: the upright part of the same proportions is 620 x 465 or so.
  assert.match(run('node', 'example.mjs'), /^6\d\d x 4\d\d\n1228800\n$/);
}));

test('the declarations hold what the module has, and a wrong call does not compile', () => installed((folder, run) => {
  const tsc = join(web, 'test/node_modules/typescript/bin/tsc');
  const check = (text, lib = 'es2022,dom') => {
    writeFileSync(join(folder, 'use.mts'), `import {load} from 'roxe';\nconst roxe = await load();\n` +
      `const image = {width: 1, height: 1, data: new Uint8ClampedArray(4)};\n${text}\n`);
    run('node', tsc, '--noEmit', '--strict', '--target', 'es2022', '--module', 'nodenext', '--lib', lib, 'use.mts');
  };
  check(`const {width, data} = roxe.rotate(image, {angle: 3, crop: 'free'});
    const [w]: [number, number] = roxe.naturalSize([0, 0, 9, 0, 9, 9, 0, 9]);
    roxe.open(image).autoGamma().variations({red: 2}).toImage().data.fill(w + width + data.length);`);
  check(`const line = [0, 1, 9, 2] as const;
    const {width, height, data} = roxe.straighten(image, {line});
    document.createElement('canvas').getContext('2d')!.putImageData(new ImageData(data, width, height), 0, 0);
    await load(new URL('x', location.href));`);
  check('await load(new Uint8Array(3)); roxe.rotate(image, {angle: 3});', 'es2022');
  assert.throws(() => check('await load(3);', 'es2022'));
  assert.throws(() => check('roxe.rotate(image, {angel: 3});'));
  assert.throws(() => check("roxe.rotate(image, {angle: '3'});"));
  const declared = readFileSync(join(web, 'roxe.d.ts'), 'utf8');
  const source = readFileSync(join(web, 'lib/options.mjs'), 'utf8');
  for (const [, name] of source.matchAll(/^ {2}(\w+): (?:\{|selection)/gm))
    assert.match(declared, new RegExp(`\\b${name}\\(image: Image`), name);
}));
