// Runs a WebAssembly program: node cmake/run_wasm.mjs PROGRAM [ARGUMENTS...]
//
// It has arguments, standard output and a clock, and no files. (node's own such module is an
// experiment, wants a flag and now and then crashes when a long run ends.)
import { readFileSync, writeSync } from 'node:fs';

const args = process.argv.slice(2).map((text) => Buffer.from(text + '\0'));
const done = 0, badFile = 8, notSupported = 52;
let memory;
const view = () => new DataView(memory.buffer);

const system = {
  args_sizes_get(count, size) {
    view().setUint32(count, args.length, true);
    view().setUint32(size, Buffer.concat(args).length, true);
    return done;
  },
  args_get(pointers, bytes) {
    for (const arg of args) {
      view().setUint32(pointers, bytes, true);
      new Uint8Array(memory.buffer).set(arg, bytes);
      pointers += 4;
      bytes += arg.length;
    }
    return done;
  },
  environ_sizes_get(count, size) {
    view().setUint32(count, 0, true);
    view().setUint32(size, 0, true);
    return done;
  },
  environ_get: () => done,
  clock_time_get(clock, precision, time) {
    const now = clock === 0 ? BigInt(Date.now()) * 1000000n : process.hrtime.bigint();
    view().setBigUint64(time, now, true);
    return done;
  },
  fd_write(file, parts, count, written) {
    if (file !== 1 && file !== 2) return badFile;
    let total = 0;
    for (let i = 0; i < count; ++i) {
      const start = view().getUint32(parts + 8 * i, true);
      const length = view().getUint32(parts + 8 * i + 4, true);
      for (let sent = 0; sent < length;)
        sent += writeSync(file, new Uint8Array(memory.buffer, start + sent, length - sent));
      total += length;
    }
    view().setUint32(written, total, true);
    return done;
  },
  fd_prestat_get: () => badFile,
  proc_exit: (code) => process.exit(code),
};

const module = new WebAssembly.Module(readFileSync(process.argv[2]));
const imports = {};
for (const { name } of WebAssembly.Module.imports(module))
  imports[name] = system[name] ?? (() => notSupported);
const instance = new WebAssembly.Instance(module, { wasi_snapshot_preview1: imports });
memory = instance.exports.memory;
instance.exports._start();
