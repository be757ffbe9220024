// A thread that holds one picture and applies chains of operations to it. The page runs two: one on
// a small preview, one on the picture itself.
//
//   in:  {type: 'open', image}  {type: 'run', id, chain}  {type: 'encode', id, format}
//   out: {type: 'done', id, image, milliseconds}  {type: 'failed', id, message}  {type: 'file', id, file}
//
// chain is a list of {name, options}. A run that another one overtakes ends between two operations
// and answers nothing.

import {load} from '../roxe.mjs';
import {encodePng} from './png.mjs';

const loaded = load();
let source = null, result = null, newest = 0;

// What earlier runs left: the picture after each operation, for the small picture only.
let keeps = false;
let stages = [];  // {key, picture}

function forget(from) {
  for (const {picture} of stages.splice(from)) picture.close();
}

async function open(image, keepStages) {
  const roxe = await loaded;
  forget(0);
  source?.close();
  result?.close();
  result = null;
  source = roxe.open(image);
  keeps = keepStages;
}

const pause = () => new Promise((resolve) => setTimeout(resolve));

async function run(id, chain) {
  let milliseconds = 0;
  let start = performance.now();
  const keys = chain.map((step) => JSON.stringify(step, (_, value) =>
    value instanceof Uint8ClampedArray ? undefined : value));
  let same = 0;
  while (same < stages.length && same < keys.length && stages[same].key === keys[same]) ++same;
  forget(same);

  let picture = (same > 0 ? stages[same - 1].picture : source).copy();
  try {
    for (let i = same; i < chain.length; ++i) {
      picture[chain[i].name](chain[i].options);
      if (keeps) stages.push({key: keys[i], picture: picture.copy()});
      milliseconds += performance.now() - start;
      await pause();
      if (id !== newest) return;
      start = performance.now();
    }
    const image = picture.toImage();
    milliseconds += performance.now() - start;
    postMessage({type: 'done', id, image, milliseconds}, [image.data.buffer]);
    if (!keeps) {
      result?.close();
      result = picture;
      picture = null;
    }
  } finally {
    picture?.close();
  }
}

async function encode(id, format) {
  const image = (result ?? source).toImage();
  let file;
  if (format === 'png') {
    file = await encodePng(image);
  } else {
    const canvas = new OffscreenCanvas(image.width, image.height);
    canvas.getContext('2d').putImageData(new ImageData(image.data, image.width, image.height), 0, 0);
    file = await canvas.convertToBlob({type: 'image/jpeg', quality: 0.95});
  }
  postMessage({type: 'file', id, file, format});
}

// One message after the other; only a newer run may overtake an older one.
let queue = Promise.resolve();
onmessage = ({data}) => {
  if (data.type === 'run') newest = data.id;
  queue = queue.then(async () => {
    try {
      if (data.type === 'open') await open(data.image, data.keepStages);
      if (data.type === 'run' && data.id === newest) await run(data.id, data.chain);
      if (data.type === 'encode') await encode(data.id, data.format);
    } catch (error) {
      postMessage({type: 'failed', id: data.id, message: error.message});
    }
  });
};
