// A thread that holds one picture and applies chains of operations to it. The page runs two: one on
// a small preview, one on the picture itself.
//
//   in:  {type: 'open', image, keepStages}  {type: 'run', id, chain}  {type: 'encode', id, chain, format}
//   out: {type: 'done', id, image, milliseconds}  {type: 'failed', id, message}  {type: 'file', id, file}
//
// chain is a list of {name, options}. A run that another one overtakes ends between two operations
// and answers nothing; a file is always of its own chain. The format 'mask' is a PNG of the last
// operation's mask, as it is laid upon the picture.

import {load} from '../roxe.mjs';
import {canvasOf} from './open.mjs';
import {encodePng} from './png.mjs';

const loaded = load();
let source = null, newest = 0;
let whyNothing = null;  // the error that left no source
let result = null;  // {key, picture} of the last run, for the picture itself only

// What earlier runs left: the picture after each operation, for the small picture only.
let keeps = false;
let stages = [];  // {key, picture}

function forget(from) {
  for (const {picture} of stages.splice(from)) picture.close();
}

async function open(image, keepStages) {
  forget(0);
  source?.close();
  result?.picture.close();
  source = result = null;
  keeps = keepStages;
  try {
    source = (await loaded).open(image);
  } catch (error) {
    whyNothing = error;
    throw error;
  }
}

const pause = () => new Promise((resolve) => setTimeout(resolve));

// A mask's version stands for its pixels.
const keyOf = (step) => JSON.stringify(step, (_, value) => (value instanceof Uint8ClampedArray ? undefined : value));

// A mask is painted on the small picture and takes the size of what it is laid upon.
function maskFor({width, height}, mask) {
  if (mask.width === width && mask.height === height) return mask;
  const {data} = canvasOf(mask, {width, height}).getContext('2d').getImageData(0, 0, width, height);
  return {width, height, data};
}

// {picture, milliseconds} of a chain, without the pauses; null where it was no longer wanted.
async function applied(chain, isWanted) {
  if (!source) throw whyNothing;
  let milliseconds = 0;
  let start = performance.now();
  const keys = chain.map(keyOf);
  let same = 0;
  while (same < stages.length && same < keys.length && stages[same].key === keys[same]) ++same;
  forget(same);

  let picture = (same > 0 ? stages[same - 1].picture : source).copy();
  try {
    for (let i = same; i < chain.length; ++i) {
      const {name, options} = chain[i];
      picture[name](options.mask ? {...options, mask: maskFor(picture, options.mask)} : options);
      if (keeps) stages.push({key: keys[i], picture: picture.copy()});
      milliseconds += performance.now() - start;
      await pause();
      if (!isWanted()) return null;
      start = performance.now();
    }
    milliseconds += performance.now() - start;
    const done = {picture, milliseconds};
    picture = null;
    return done;
  } finally {
    picture?.close();
  }
}

async function run(id, chain) {
  const done = await applied(chain, () => id === newest);
  if (!done) return;
  const {picture, milliseconds} = done;
  try {
    const image = picture.toImage();
    postMessage({type: 'done', id, image, milliseconds}, [image.data.buffer]);
  } catch (error) {
    picture.close();
    throw error;
  }
  if (keeps) return picture.close();
  result?.picture.close();
  result = {key: chain.map(keyOf).join(), picture};
}

// Runs work with the picture of a chain.
async function withPicture(chain, work) {
  if (result?.key === chain.map(keyOf).join()) return work(result.picture);
  const {picture} = await applied(chain, () => true);
  try {
    return work(picture);
  } finally {
    picture.close();
  }
}

async function encode(id, chain, format) {
  const image = format === 'mask'
    ? await withPicture(chain.slice(0, -1), (picture) => maskFor(picture, chain.at(-1).options.mask))
    : await withPicture(chain, (picture) => picture.toImage());
  let file;
  if (format === 'jpeg') {
    file = await canvasOf(image).convertToBlob({type: 'image/jpeg', quality: 0.95});
  } else {
    file = await encodePng(image);
  }
  postMessage({type: 'file', id, file});
}

// One message after the other; only a newer run may overtake an older one.
let queue = Promise.resolve();
onmessage = ({data}) => {
  if (data.type === 'run') newest = data.id;
  queue = queue.then(async () => {
    try {
      if (data.type === 'open') await open(data.image, data.keepStages);
      if (data.type === 'run' && data.id === newest) await run(data.id, data.chain);
      if (data.type === 'encode') await encode(data.id, data.chain, data.format);
    } catch (error) {
      postMessage({type: 'failed', id: data.id, message: error.message});
    }
  });
};
