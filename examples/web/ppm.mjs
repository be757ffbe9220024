// Reads and writes pictures as binary PPM files (P6, 255 levels) in node, for examples.

import {readFileSync, writeFileSync} from 'node:fs';

/** {width, height, data} with red, green, blue and alpha bytes. */
export function readPpm(path) {
  const file = readFileSync(path);
  const header = /^P6\s+(\d+)\s+(\d+)\s+255\s/.exec(file.subarray(0, 100).toString('latin1'));
  if (!header) throw new Error(`${path} is not a PPM file of 255 levels`);
  const [width, height] = header.slice(1).map(Number);
  const colours = file.subarray(header[0].length);
  const data = new Uint8ClampedArray(4 * width * height).fill(255);
  for (let i = 0; i < width * height; ++i) data.set(colours.subarray(3 * i, 3 * i + 3), 4 * i);
  return {width, height, data};
}

/** Alpha is left out. */
export function writePpm(path, {width, height, data}) {
  const colours = Buffer.alloc(3 * width * height);
  for (let i = 0; i < width * height; ++i) colours.set(data.subarray(4 * i, 4 * i + 3), 3 * i);
  writeFileSync(path, Buffer.concat([Buffer.from(`P6\n${width} ${height}\n255\n`), colours]));
}
