// ROXE in the browser and in Node: fifteen operations on photographs, compiled to WebAssembly.
//
//   import {load} from 'roxe';
//   const roxe = await load();
//   const bright = roxe.shadowHighlight(image, {shadow: 40});
//
// An image is {width, height, data} with data of red, green, blue and alpha bytes, such as
// ImageData; it stays as it is. Every method gives a new one. Bad arguments throw a TypeError or a
// RangeError whose message is one sentence.

import {operations} from './lib/options.mjs';
import {Native, Picture} from './lib/picture.mjs';

export {operations};

class Roxe {
  #native;

  constructor(instance) {
    this.#native = new Native(instance);
  }

  /** A picture that stays in the module's memory, for several operations in a row. */
  open(image) {
    return Picture.from(this.#native, image);
  }

  /** The natural size [width, height] of the corners [x1, y1, ... x4, y4] drawn upright. */
  naturalSize(corners) {
    if (!Array.isArray(corners) || corners.length !== 8 || !Array.from(corners).every(Number.isInteger))
      throw new TypeError('corners needs 8 whole numbers, [x1, y1, ... x4, y4]');
    return Picture.naturalSize(this.#native, corners);
  }
}

for (const name of Object.keys(operations))
  Roxe.prototype[name] = function (image, options) {
    const picture = this.open(image);
    try {
      return picture[name](options).toImage();
    } finally {
      picture.close();
    }
  };

/** Loads the library. source: where roxe.wasm lies (a URL or a path), its bytes, or a compiled
 * WebAssembly.Module; by default the file beside this one. */
export async function load(source = new URL('./dist/roxe.wasm', import.meta.url)) {
  const kind = source?.[Symbol.toStringTag];  // of a class that another window may have made
  if (kind === 'WebAssembly.Module') return new Roxe(await WebAssembly.instantiate(source, {}));
  const bytes = typeof source === 'string' || kind === 'URL' ? await fetched(String(source)) : source;
  return new Roxe((await WebAssembly.instantiate(bytes, {})).instance);
}

async function fetched(place) {
  const inNode = globalThis.process?.versions?.node;
  if (inNode && !/^(https?|data|blob):/.test(place)) {
    // Bundlers for browsers must not look for it.
    const {readFile} = await import(/* webpackIgnore: true */ /* @vite-ignore */ 'node:fs/promises');
    return readFile(place.startsWith('file:') ? new URL(place) : place);
  }
  const response = await fetch(place);
  if (!response.ok) throw new Error(`${place} cannot be read: ${response.status} ${response.statusText}`);
  return response.arrayBuffer();
}
