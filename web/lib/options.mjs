// What every operation takes: the one table behind the checks of arguments and the page's controls.
//
// kind      whole, decimal: a number of low ... high; flag; choice of values; colour: '#E07A2C' or a
//           CSS name; point: [x, y]; line: [x1, y1, x2, y2]; corners: [x1, y1, ... x4, y4];
//           region: [x, y, width, height]; size: [width, height]; picture: {width, height, data}
// initial   what is taken where the option is not given; without it, it may be left out unless
//           required

import {colour} from './colours.mjs';

const whole = (low, high, initial, unit, meaning) =>
  ({kind: 'whole', low, high, initial, unit, meaning});
const required = (option) => ({...option, required: true});

const edges = {
  kind: 'choice', values: ['repeat', 'keep'], initial: 'repeat',
  meaning: 'repeat the pixels at the edges, so that no seam is lost, or keep the picture as it is',
};
const background = {kind: 'colour', initial: 'black', meaning: 'colour of uncovered pixels'};
const crop = {
  kind: 'choice', values: [false, true, 'fit', 'free'], initial: false,
  meaning: 'to the largest part without background, in the proportions of the picture or free',
};
const selection = {
  colour: required({kind: 'colour', meaning: 'the reference colour'}),
  tolerance: required(whole(0, 200, undefined, 'steps', 'how far from it colours count')),
};

// Objects are all that the table nests.
const frozen = (table) => {
  Object.values(table).filter((value) => typeof value === 'object').forEach(frozen);
  return Object.freeze(table);
};

export const operations = frozen({
  straighten: {
    line: required({kind: 'line', meaning: 'two points of a line that should be level or upright'}),
    crop, edges, background,
  },
  rotate: {
    angle: required({
      kind: 'decimal', low: -3600, high: 3600, unit: '°', meaning: 'positive turns clockwise',
    }),
    about: {kind: 'point', meaning: 'the point that stays in place (the centre)'},
    expand: {kind: 'flag', initial: false, meaning: 'make room, so that nothing is cut off'},
    crop, edges, background,
  },
  perspective: {
    corners: required({
      kind: 'corners', meaning: 'the corners of something rectangular, in any order',
    }),
    size: {kind: 'size', meaning: 'draw it at exactly this size'},
    fit: {kind: 'size', meaning: 'draw it as large as fits, in its natural proportions'},
    edges, background,
  },
  warp: {
    from: required({kind: 'corners', meaning: 'four points, around their outline'}),
    to: required({kind: 'corners', meaning: 'where these come to lie, in the same order'}),
    size: {kind: 'size', meaning: 'size of the result (that of the picture)'},
    edges, background,
  },
  softFocus: {
    radius: required(whole(1, 100000, undefined, 'px', 'width of the blur, a length')),
    mask: {kind: 'picture', meaning: 'of the same size: white stays sharp, black is blurred'},
    maskRadius: whole(1, 100000, 1, 'px', "width of the blur of the mask's edges"),
  },
  replaceColour: {
    ...selection,
    hue: whole(-360, 360, 0, '°', 'to turn the hue'),
    saturation: whole(-100, 100, 0, '%', 'to add'),
    value: whole(-100, 100, 0, '%', 'of brightness to add'),
  },
  colourMask: selection,
  tint: selection,
  temperature: {
    temperature: whole(-100, 100, 0, '', 'cooler ... warmer'),
    tint: whole(-100, 100, 0, '', 'greener ... more magenta'),
    grey: {kind: 'point', meaning: 'a pixel that should be grey: finds the two that make it so'},
  },
  autoGamma: {
    region: {kind: 'region', meaning: 'judge the exposure by this part of the picture'},
  },
  shadowHighlight: {
    shadow: whole(0, 100, 0, '%', 'opens the shadows'),
    highlight: whole(0, 100, 0, '%', 'tames the highlights'),
    midtone: whole(-100, 100, 0, '%', 'contrast of the midtones'),
  },
  variations: {
    red: whole(-1000, 1000, 0, 'steps', 'of red to take away; negative: to add'),
    green: whole(-1000, 1000, 0, 'steps', 'of green to take away; negative: to add'),
    blue: whole(-1000, 1000, 0, 'steps', 'of blue to take away; negative: to add'),
    dark: whole(-1000, 1000, 0, 'steps', 'to darken; negative: to lighten'),
    level: whole(0, 6, 2, '', 'size of a step, fine ... coarse'),
  },
});

const is32Bits = (value) => Number.isInteger(value) && value === (value | 0);

function numbers(value, count, what, form) {
  if (!Array.isArray(value) || value.length !== count || !Array.from(value).every(is32Bits))
    throw new TypeError(`${what} needs ${count} whole numbers, ${form}`);
  return value;
}

// A value as one would write it.
function shown(value) {
  if (typeof value === 'string') return JSON.stringify(value);
  if (typeof value === 'bigint') return `${value}n`;
  if (Array.isArray(value)) return 'an array';
  return typeof value === 'object' || typeof value === 'function' ? `of type ${typeof value}` : String(value);
}

function requireNumber(value, isGood, what, wanted) {
  if (typeof value === 'number' && isGood(value)) return value;
  const Wrong = typeof value === 'number' ? RangeError : TypeError;
  throw new Wrong(`${what} needs ${wanted}, not ${shown(value)}`);
}

const readers = {
  whole(value, {low, high}, what) {
    return requireNumber(value, (number) => Number.isInteger(number) && number >= low && number <= high,
      what, `a whole number from ${low} to ${high}`);
  },
  decimal(value, {low, high}, what) {
    return requireNumber(value, (number) => number >= low && number <= high, what,
      `a number from ${low} to ${high}`);
  },
  flag(value, _, what) {
    if (typeof value !== 'boolean') throw new TypeError(`${what} is true or false, not ${shown(value)}`);
    return value;
  },
  choice(value, {values}, what) {
    if (!values.includes(value))
      throw new TypeError(`${what} is one of ${values.join(', ')}, not ${shown(value)}`);
    return value;
  },
  colour: (value, _, what) => colour(value, what),
  point: (value, _, what) => numbers(value, 2, what, '[x, y]'),
  line(value, _, what) {
    const line = numbers(value, 4, what, '[x1, y1, x2, y2]');
    if (line[0] === line[2] && line[1] === line[3])
      throw new RangeError(`${what} needs two different points, and both are (${line[0]}, ${line[1]})`);
    return line;
  },
  corners: (value, _, what) => numbers(value, 8, what, '[x1, y1, ... x4, y4]'),
  region(value, _, what) {
    const region = numbers(value, 4, what, '[x, y, width, height]');
    if (region[0] < 0 || region[1] < 0 || region[2] < 1 || region[3] < 1)
      throw new RangeError(`${what} needs a place inside the picture and a size of at least 1, 1`);
    return region;
  },
  size(value, _, what) {
    const size = numbers(value, 2, what, '[width, height]');
    if (size[0] < 1 || size[1] < 1) throw new RangeError(`${what} needs a size of at least 1, 1`);
    return size;
  },
  picture(value, _, what) {
    checkImage(value, what);
    return value;
  },
};

/** Throws a TypeError with a sentence unless image is {width, height, data} of RGBA bytes. */
export function checkImage(image, what = 'the image') {
  const {width, height, data} = image ?? {};
  // By their names, as an iframe has classes of its own.
  const bytes = ArrayBuffer.isView(data) &&
    ['Uint8ClampedArray', 'Uint8Array'].includes(data[Symbol.toStringTag]);
  if (!bytes || !Number.isInteger(width) || !Number.isInteger(height) || width < 1 || height < 1)
    throw new TypeError(`${what} must be {width, height, data} with data of red, green, blue and ` +
      'alpha bytes (Uint8ClampedArray or Uint8Array), such as ImageData');
  if (data.length !== 4 * width * height)
    throw new TypeError(`${what} of ${width} × ${height} pixels needs ${4 * width * height} ` +
      `bytes of data, not ${data.length}`);
}

/** The options of one operation, checked, with what was not given filled in. */
export function read(operation, given = {}) {
  const known = operations[operation];
  if (typeof given !== 'object' || given === null)
    throw new TypeError('options are an object such as {angle: 2}');
  for (const name of Object.keys(given))
    if (!Object.hasOwn(known, name))
      throw new TypeError(`${operation} has no option ${name}; it has ` +
        Object.keys(known).join(', '));
  const values = {};
  for (const [name, option] of Object.entries(known)) {
    const value = given[name] ?? option.initial;
    if (value === undefined && option.required)
      throw new TypeError(`${operation} needs ${name}: ${option.meaning}`);
    values[name] = value === undefined ? undefined
      : readers[option.kind](value, option, name);
  }
  return values;
}
