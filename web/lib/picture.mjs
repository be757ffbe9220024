// Pictures in the module's memory, and the operations on them.

import {cropped, expanded, outline, remainder, straighteningAngle} from './geometry.mjs';
import {checkImage, read} from './options.mjs';

const RGB24 = 0, GRAY8 = 3;
const OK = 0;
const CORRECTED = 2;  // the word of roxePerspectiveDistortionCorrection for success
const OPAQUE = {red: 255, green: 255, blue: 255};

const distanceFromGrey = (pixel) => Math.max(...pixel) - Math.min(...pixel);

function expectOk(status, operation) {
  if (status === OK) return;
  throw new Error(status === 1 ? `${operation}: the operation could not get the memory it needs`
    : `${operation}: the operation was refused with status ${status}`);
}

/** The module's functions and memory. Blocks that are taken within a call are given back at its end. */
export class Native {
  constructor(instance) {
    this.call = instance.exports;
  }

  take(bytes) {
    // The module counts bytes in 32 bits and would take the rest of a larger number.
    const pointer = bytes < 2 ** 32 ? this.call.malloc(bytes) >>> 0 : 0;
    if (pointer === 0) throw new RangeError('there is not enough memory for this picture');
    return pointer;
  }

  give(pointer) {
    if (pointer) this.call.free(pointer);
  }

  // Views are made anew each time: they end when the memory grows.
  bytes(pointer, length) {
    return new Uint8Array(this.call.memory.buffer, pointer, length);
  }

  // Runs work with a block that starts with these 32-bit numbers.
  with(numbers, work) {
    const pointer = this.take(4 * numbers.length);
    try {
      new Int32Array(this.call.memory.buffer, pointer, numbers.length).set(numbers);
      return work(pointer);
    } finally {
      this.give(pointer);
    }
  }

  numbers(pointer, count) {
    return [...new Int32Array(this.call.memory.buffer, pointer, count)];
  }
}

// Packed pixels of three bytes, or of one.
class Plane {
  constructor(native, width, height, format = RGB24) {
    Object.assign(this, {native, width, height, format});
    this.size = width * height * (format === RGB24 ? 3 : 1);
    this.pointer = native.take(this.size);
  }

  close() {
    this.native.give(this.pointer);
    this.pointer = 0;
  }

  get pixels() {
    return this.width * this.height;
  }

  // The PixelArray record.
  get record() {
    const row = this.format === RGB24 ? 3 * this.width : this.width;
    return [this.format, this.width, this.height, row, this.pointer];
  }

  copy() {
    const copy = new Plane(this.native, this.width, this.height, this.format);
    copy.native.bytes(copy.pointer, copy.size).set(this.native.bytes(this.pointer, this.size));
    return copy;
  }
}

// Writes image's bytes where work can read them.
function withRgba(native, image, work) {
  const length = image.data.length;
  const rgba = native.take(length);
  try {
    native.bytes(rgba, length).set(image.data);
    return work(rgba);
  } finally {
    native.give(rgba);
  }
}

// What is transparent of a mask counts as black, as the tool takes it.
function layOverBlack(rgba) {
  for (let i = 0; i < rgba.length; i += 4) {
    const alpha = rgba[i + 3];
    if (alpha === 255) continue;
    for (let channel = i; channel < i + 3; ++channel)
      rgba[channel] = Math.round(rgba[channel] * alpha / 255);
  }
}

// What roxeSoftFocus takes for a blur of so many channels, as roxe.h states it.
function blurBytes(width, height, channels, radius) {
  if (radius <= 1) return 0;
  const row = channels * 32 * Math.ceil(width / 32);
  const windows = [radius, radius, radius | 1];
  const kept = windows.reduce((sum, window) => sum + Math.min(window + 1, height), 0);
  const tall = windows.filter((window) => window > 257).length;
  return 447 + 576 * channels + 24 * row / channels + row * (15 + kept) + tall * (64 * channels + 4 * row);
}

/** A picture in the module's memory. Its operations change it and return it; close() gives its memory
 * back. */
export class Picture {
  #native;
  #open;  // a Plane; null once the picture is closed
  #alpha = null;  // a Plane of three equal bytes a pixel, or null where every pixel is opaque

  constructor(native, colours, alpha) {
    this.#native = native;
    this.#colours = colours;
    this.#alpha = alpha;
  }

  get #colours() {
    if (!this.#open) throw new TypeError('this picture is closed');
    return this.#open;
  }

  set #colours(plane) {
    this.#open = plane;
  }

  static from(native, image) {
    checkImage(image);
    const picture = new Picture(native, new Plane(native, image.width, image.height), null);
    return picture.#orClosed(() => withRgba(native, image, (rgba) => {
      const {pointer, pixels} = picture.#colours;
      native.call.take_colours(rgba, pointer, pixels);
      if (native.call.is_opaque(rgba, pixels)) return;
      picture.#alpha = new Plane(native, image.width, image.height);
      native.call.take_alpha(rgba, picture.#alpha.pointer, pixels);
    }));
  }

  get width() {
    return this.#colours.width;
  }

  get height() {
    return this.#colours.height;
  }

  close() {
    this.#open?.close();
    this.#alpha?.close();
    this.#colours = this.#alpha = null;
  }

  copy() {
    const copy = new Picture(this.#native, this.#colours.copy(), null);
    return copy.#orClosed(() => {
      copy.#alpha = this.#alpha?.copy() ?? null;
    });
  }

  /** {width, height, data}: red, green, blue and alpha bytes. */
  toImage() {
    const native = this.#native, {width, height, pixels, pointer} = this.#colours;
    const rgba = native.take(4 * pixels);
    try {
      native.call.give(pointer, this.#alpha?.pointer ?? 0, rgba, pixels);
      return {width, height, data: new Uint8ClampedArray(native.bytes(rgba, 4 * pixels))};
    } finally {
      native.give(rgba);
    }
  }

  /** The natural size [width, height] of corners drawn upright. */
  static naturalSize(native, corners, what = 'corners') {
    const quad = outline(corners, what, true);
    return native.with([...quad, 0, 0], (pointer) => {
      const accepted = native.call.roxeGetPerspectiveDistortionCorrectionSize(
        pointer, 0, 0, 0, pointer + 32, pointer + 36);
      if (!accepted) throw new RangeError(`${what}: no rectangle seen in perspective has these corners`);
      return native.numbers(pointer + 32, 2);
    });
  }

  // ---- geometry

  straighten(options) {
    const {line, crop, edges, background} = read('straighten', options);
    this.#requireInside([line[0], line[1]], 'the point');
    this.#requireInside([line[2], line[3]], 'the point');
    if (line[0] === line[2] || line[1] === line[3]) return this;  // level or upright already
    const size = crop ? this.#cropped(straighteningAngle(line), crop, edges) : [this.width, this.height];
    return this.#draw('straighten', size, edges, background, (from, to, shift) =>
      this.#native.call.roxeuAutoStraightenImage(from, ...line.map((v) => v + shift), to));
  }

  rotate(options) {
    const {angle, about, expand, crop, edges, background} = read('rotate', options);
    if (crop && (expand || about))
      throw new TypeError(`crop excludes ${expand ? 'expand' : 'about'}`);
    if (about) this.#requireInside(about, 'about');
    const degrees = remainder(angle);
    if (edges === 'repeat' && !about && degrees % 90 === 0) return this.#turn((degrees / 90 + 4) % 4);

    const radians = degrees * Math.PI / 180;
    const centre = about ?? [this.width >> 1, this.height >> 1];
    let size = [this.width, this.height], target = centre;
    if (crop) {
      size = this.#cropped(radians, crop, edges);
      target = [size[0] >> 1, size[1] >> 1];
    } else if (expand) {
      const canvas = expanded(this.width, this.height, centre, radians);
      size = [canvas.width, canvas.height];
      target = canvas.centre;
    }
    return this.#draw('rotate', size, edges, background, (from, to, shift) =>
      this.#native.call.roxeRotateImage(from, centre[0] + shift, centre[1] + shift, radians, to,
        target[0], target[1]));
  }

  perspective(options) {
    const {corners, size, fit, edges, background} = read('perspective', options);
    if (size && fit) throw new TypeError('size excludes fit');
    const quad = outline(corners, 'corners', true);
    const natural = Picture.naturalSize(this.#native, corners, 'corners');
    this.#requireNear(corners, this.width, this.height, 'corners');
    let drawn = size ?? natural;
    if (fit) {
      const across = natural[1] * fit[0], down = natural[0] * fit[1];
      drawn = down > across ? [fit[0], Math.floor(across / natural[0])]
        : [Math.floor(down / natural[1]), fit[1]];
      if (drawn[0] < 1 || drawn[1] < 1)
        throw new RangeError('fit is too narrow for the natural size of these corners, ' +
          `${natural.join(' × ')} pixels`);
    }
    const {call} = this.#native;
    return this.#draw('perspective', drawn, edges, background, (from, to, shift) =>
      this.#native.with([...quad.map((v) => v + shift), 0, 0, ...drawn], (pointer) => {
        if (size || fit) return call.roxeAffineTransform(from, to, pointer, 0, pointer + 32);
        const status = call.roxePerspectiveDistortionCorrection(from, to, pointer, 0, 0, pointer + 32);
        return status === CORRECTED ? OK : 3;
      }));
  }

  warp(options) {
    const {from: source, to: target, size, edges, background} = read('warp', options);
    const drawn = size ?? [this.width, this.height];
    outline(source, 'from', false);
    outline(target, 'to', false);
    this.#requireNear(source, this.width, this.height, 'from');
    this.#requireNear(target, ...drawn, 'to');
    return this.#draw('warp', drawn, edges, background, (from, to, shift) =>
      this.#native.with([...source.map((v) => v + shift), ...target, 0, 0, ...drawn], (pointer) =>
        this.#native.call.roxeAffineTransform(from, to, pointer, pointer + 32, pointer + 64)));
  }

  // ---- blur

  softFocus(options) {
    const {radius, mask, maskRadius} = read('softFocus', options);
    if (!mask && maskRadius !== 1) throw new TypeError('maskRadius needs mask');
    const native = this.#native;
    if (mask && (mask.width !== this.width || mask.height !== this.height))
      throw new RangeError(`the mask has ${mask.width} × ${mask.height} pixels but the ` +
        `picture has ${this.width} × ${this.height}`);
    const result = new Plane(native, this.width, this.height);
    let grey = null;
    try {
      if (mask) {
        grey = new Plane(native, mask.width, mask.height, GRAY8);
        withRgba(native, mask, (rgba) => {
          layOverBlack(native.bytes(rgba, 4 * grey.pixels));
          native.call.take_brightness(rgba, grey.pointer, grey.pixels);
        });
      }
      // The library does not say so where it cannot have this, and gives something else.
      const room = blurBytes(this.width, this.height, 3, radius) +
        (grey ? blurBytes(this.width, this.height, 1, maskRadius) : 0);
      if (room > 0) native.give(native.take(room));
      const records = [...this.#colours.record, ...result.record, ...(grey ? grey.record : [])];
      expectOk(native.with(records, (pointer) =>
        native.call.roxeSoftFocus(pointer, pointer + 20, grey ? pointer + 40 : 0, radius, maskRadius)),
        'softFocus');
    } catch (error) {
      result.close();
      throw error;
    } finally {
      grey?.close();
    }
    this.#colours.close();
    this.#colours = result;
    return this;
  }

  // ---- colour and tone: in place

  replaceColour(options) {
    const {colour: c, tolerance, hue, saturation, value} = read('replaceColour', options);
    return this.#inPlace('replaceColour', (p, call) =>
      call.roxeReplaceColor(p, p, c.blue, c.green, c.red, tolerance, hue, saturation, value));
  }

  colourMask(options) {
    const {colour: c, tolerance} = read('colourMask', options);
    this.#requireMemory();
    this.#layOverBlack();
    return this.#inPlace('colourMask', (p, call) =>
      call.roxeReplaceColorMask(p, p, c.blue, c.green, c.red, tolerance));
  }

  tint(options) {
    const {colour: c, tolerance} = read('tint', options);
    return this.#inPlace('tint', (p, call) =>
      call.roxeColorTint(p, p, c.blue, c.green, c.red, tolerance));
  }

  temperature(options) {
    let {temperature, tint, grey} = read('temperature', options);
    if (grey) {
      if (temperature !== 0 || tint !== 0)
        throw new TypeError('grey cannot go with temperature or tint');
      this.#requireInside(grey, 'grey');
      const pixel = [...this.#native.bytes(this.#colours.pointer + 3 * (grey[1] * this.width + grey[0]), 3)];
      if (distanceFromGrey(pixel) === 0) return this;
      [temperature, tint] = this.#balanceFor(pixel);
    }
    return this.#inPlace('temperature', (p, call) =>
      call.roxeColorTemperature(p, p, temperature, tint));
  }

  autoGamma(options) {
    const {region} = read('autoGamma', options);
    if (!region) return this.#inPlace('autoGamma', (p, call) => call.roxeAutoGamma(p, p, 0));
    const [x, y, width, height] = region;
    if (x + width > this.width || y + height > this.height)
      throw new RangeError(`region ${region.join(',')} reaches outside the picture of ` +
        `${this.width} × ${this.height} pixels`);
    return this.#native.with([x, y, x + width, y + height], (rect) =>
      this.#inPlace('autoGamma', (p, call) => call.roxeAutoGamma(p, p, rect)));
  }

  shadowHighlight(options) {
    const {shadow, highlight, midtone} = read('shadowHighlight', options);
    return this.#inPlace('shadowHighlight', (p, call) =>
      call.roxeShadowHighlight(p, p, shadow, highlight, midtone));
  }

  variations(options) {
    const {red, green, blue, dark, level} = read('variations', options);
    return this.#inPlace('variations', (p, call) =>
      call.roxeVariations(p, p, red, green, blue, dark, level));
  }

  // ---- what they share

  // A mask is opaque, and selects among the colours that are seen, as that of the tool.
  #layOverBlack() {
    if (!this.#alpha) return;
    const {pointer, size} = this.#colours;
    const colours = this.#native.bytes(pointer, size);
    const alpha = this.#native.bytes(this.#alpha.pointer, size);
    for (let i = 0; i < size; ++i) colours[i] = Math.round(colours[i] * alpha[i] / 255);
    this.#alpha.close();
    this.#alpha = null;
  }

  #orClosed(work) {
    try {
      work();
      return this;
    } catch (error) {
      this.close();
      throw error;
    }
  }

  #requireInside([x, y], what) {
    if (x < 0 || y < 0 || x >= this.width || y >= this.height)
      throw new RangeError(`${what} (${x}, ${y}) lies outside the picture of ${this.width} × ` +
        `${this.height} pixels`);
  }

  #requireNear(corners, width, height, what) {
    for (let i = 0; i < 4; ++i) {
      const x = corners[2 * i], y = corners[2 * i + 1];
      if (x < -width || x > 2 * width || y < -height || y > 2 * height)
        throw new RangeError(`${what}: corner ${i + 1} (${x}, ${y}) lies far outside the picture of ` +
          `${width} × ${height} pixels`);
    }
  }

  #cropped(radians, crop, edges) {
    const size = cropped(this.width, this.height, radians, crop === 'free', edges === 'repeat');
    if (!size) throw new RangeError('the picture is too small to crop at this angle');
    return size;
  }

  // Of all balances the one that brings a colour nearest to grey, the gentlest of equals. Every one
  // is tried on a picture of this one pixel.
  #balanceFor(pixel) {
    const native = this.#native;
    return native.with([RGB24, 1, 1, 3, 0, RGB24, 1, 1, 3, 0, 0, 0], (pointer) => {
      const before = pointer + 40, after = pointer + 44;
      const words = new Uint32Array(native.call.memory.buffer, pointer, 10);
      [words[4], words[9]] = [before, after];
      native.bytes(before, 3).set(pixel);
      let best = null, least = Infinity;
      for (let temperature = -100; temperature <= 100; ++temperature)
        for (let tint = -100; tint <= 100; ++tint) {
          expectOk(native.call.roxeColorTemperature(pointer, pointer + 20, temperature, tint), 'temperature');
          const merit = 1000 * distanceFromGrey(native.bytes(after, 3)) +
            Math.abs(temperature) + Math.abs(tint);
          if (merit < least) [best, least] = [[temperature, tint], merit];
        }
      return best;
    });
  }

  // The most that an operation in place takes (roxe.h). Without it some do nothing and do not say so.
  #requireMemory() {
    this.#native.give(this.#native.take(100 * this.width + 8192));
  }

  #inPlace(operation, call) {
    const native = this.#native;
    this.#requireMemory();
    expectOk(native.with(this.#colours.record, (record) => call(record, native.call)), operation);
    return this;
  }

  #turn(quarters) {
    if (quarters === 0) return this;
    const turned = (plane) => {
      if (!plane) return null;
      const swaps = quarters % 2 === 1;
      const result = new Plane(this.#native, swaps ? plane.height : plane.width,
        swaps ? plane.width : plane.height);
      this.#native.call.turn_quarters(plane.pointer, result.pointer, plane.width, plane.height, quarters);
      return result;
    };
    return this.#replace(turned);
  }

  // Draws colours and opacity on planes of another size. Uncovered pixels are opaque background.
  #draw(operation, [width, height], edges, background, call) {
    const native = this.#native;
    const drawn = (plane, {blue, green, red}) => {
      if (!plane) return null;
      const result = new Plane(native, width, height);
      let source = plane;
      try {
        native.call.fill(result.pointer, result.pixels, blue, green, red);
        if (edges === 'repeat') {
          source = new Plane(native, plane.width + 2, plane.height + 2);
          native.call.repeat_edges(plane.pointer, source.pointer, plane.width, plane.height);
        }
        expectOk(native.with([...source.record, ...result.record], (pointer) =>
          call(pointer, pointer + 20, edges === 'repeat' ? 1 : 0)), operation);
        return result;
      } catch (error) {
        result.close();
        throw error;
      } finally {
        if (source !== plane) source.close();
      }
    };
    return this.#replace((plane) => drawn(plane, plane === this.#alpha ? OPAQUE : background));
  }

  #replace(make) {
    const colours = make(this.#colours);
    let alpha;
    try {
      alpha = make(this.#alpha);
    } catch (error) {
      colours.close();
      throw error;
    }
    this.close();
    this.#colours = colours;
    this.#alpha = alpha;
    return this;
  }
}
