#!/usr/bin/env bash
# wasm.sh BUILD_DIRECTORY: a module of every exported operation and malloc needs nothing from its
# host. Linked without start files, as a web page would.
set -euo pipefail

build=$(cd "$1" && pwd)
cd "$(dirname "$0")/../.."
exports=$(sed -n 's/^ROXE_API.* \**\(roxe[A-Za-z]*\)(.*/-Wl,--export=\1/p' include/roxe.h)
[ "$(wc -w <<<"$exports")" -eq 15 ] || { echo "not fifteen operations: $exports"; exit 1; }
# shellcheck disable=SC2086
clang-14 --target=wasm32-wasi --sysroot=/usr -nostartfiles -Wl,--no-entry $exports \
  -Wl,--export=malloc -Wl,--export=free -L/usr/lib/wasm32-wasi "$build/libroxe.a" \
  -o "$build/module.wasm"
node --input-type=module - "$build/module.wasm" <<'END'
import { readFileSync } from 'node:fs';
const module = new WebAssembly.Module(readFileSync(process.argv[2]));
const imports = WebAssembly.Module.imports(module).map(({ name }) => name);
const exports = WebAssembly.Module.exports(module).filter(({ name }) => name.startsWith('roxe'));
if (imports.length > 0) throw new Error(`the module wants ${imports}`);
if (exports.length !== 15) throw new Error(`the module gives ${exports.length} operations`);
console.log('15 operations, no imports');
END
