// The door of the WebAssembly module: one line of JSON in, one out.
//   in:   {operation, image: {width, height, data}, options}, bytes as base64, red, green, blue, alpha
//   out:  {width, height, data} or {refused: sentence}
import {createInterface} from 'node:readline';

import {load} from '../../web/roxe.mjs';

const roxe = await load();
const decoded = (image) => ({...image, data: new Uint8Array(Buffer.from(image.data, 'base64'))});

for await (const line of createInterface({input: process.stdin})) {
  const {operation, image, options} = JSON.parse(line);
  if (options.mask) options.mask = decoded(options.mask);
  let answer;
  try {
    const result = roxe[operation](decoded(image), options);
    answer = {...result, data: Buffer.from(result.data.buffer).toString('base64')};
  } catch (error) {
    if (!(error instanceof TypeError || error instanceof RangeError)) throw error;
    answer = {refused: error.message};
  }
  process.stdout.write(JSON.stringify(answer) + '\n');
}
