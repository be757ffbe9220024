// Runs a WebAssembly program: node cmake/run_wasm.mjs PROGRAM [ARGUMENTS...]
import { readFile } from 'node:fs/promises';
import { WASI } from 'node:wasi';

const [program, ...rest] = process.argv.slice(2);
const wasi = new WASI({ version: 'preview1', args: [program, ...rest], returnOnExit: true });
const { instance } = await WebAssembly.instantiate(await readFile(program), {
  wasi_snapshot_preview1: wasi.wasiImport,
});
process.exit(wasi.start(instance));
