/** ROXE: operations on photographs, compiled to WebAssembly. */

/** Red, green, blue and alpha bytes, row by row; ImageData is one. */
export interface Image {
  readonly width: number;
  readonly height: number;
  readonly data: Uint8ClampedArray | Uint8Array;
}

/** What an operation gives. */
export interface Result {
  width: number;
  height: number;
  /** Of a buffer that is not shared, as ImageData wants it; older compilers do not know the kinds. */
  data: ReturnType<Uint8ClampedArray['slice']>;
}

/** '#E07A2C', '#e72' or a CSS name. */
export type Colour = string;
export type Point = readonly [x: number, y: number];
export type Line = readonly [x1: number, y1: number, x2: number, y2: number];
/** x1, y1, ... x4, y4 */
export type Corners = readonly [number, number, number, number, number, number, number, number];
export type Region = readonly [x: number, y: number, width: number, height: number];
export type Size = readonly [width: number, height: number];

export interface Drawing {
  /** 'repeat': the pixels at the edges are repeated once around, so that no seam is lost (default);
   * 'keep': the library's own result. */
  edges?: 'repeat' | 'keep';
  /** Colour of uncovered pixels (default: 'black'); they are opaque. */
  background?: Colour;
}

export interface Cropping {
  /** The largest upright part without background: of the proportions of the picture (true, 'fit')
   * or of any ('free'). */
  crop?: boolean | 'fit' | 'free';
}

export interface StraightenOptions extends Drawing, Cropping {
  /** Two points of a line that should be level or upright, whichever is nearer. */
  line: Line;
}

export interface RotateOptions extends Drawing, Cropping {
  /** Degrees, positive clockwise, -3600 ... 3600. */
  angle: number;
  /** The point that stays in place (default: the centre). */
  about?: Point;
  /** Makes room, so that nothing is cut off. */
  expand?: boolean;
}

export interface PerspectiveOptions extends Drawing {
  /** The corners of something rectangular, in any order. */
  corners: Corners;
  /** Draws it at exactly this size (default: the natural size). */
  size?: Size;
  /** Draws it as large as fits, in its natural proportions. */
  fit?: Size;
}

export interface WarpOptions extends Drawing {
  /** Four points around their outline. */
  from: Corners;
  /** Where these come to lie, in the same order. */
  to: Corners;
  /** Size of the result (default: that of the picture). */
  size?: Size;
}

export interface SoftFocusOptions {
  /** Width of the blur in pixels, a length: 1 ... 100000. */
  radius: number;
  /** Of the same size: white stays sharp, black is blurred, as is what is transparent. */
  mask?: Image;
  /** Width of the blur of the mask's edges (default: 1, none). */
  maskRadius?: number;
}

export interface SelectionOptions {
  /** The reference colour. */
  colour: Colour;
  /** How far from it colours count, 0 ... 200. */
  tolerance: number;
}

export interface ReplaceColourOptions extends SelectionOptions {
  /** Degrees, -360 ... 360. */
  hue?: number;
  /** Percent, -100 ... 100. */
  saturation?: number;
  /** Percent, -100 ... 100. */
  value?: number;
}

export interface TemperatureOptions {
  /** -100 (cooler) ... 100 (warmer). */
  temperature?: number;
  /** -100 (greener) ... 100 (more magenta). */
  tint?: number;
  /** A pixel that should be grey: finds the temperature and tint that bring it nearest, the gentlest
   * of equals. Neither may be given besides. */
  grey?: Point;
}

export interface AutoGammaOptions {
  /** Judges the exposure by this part of the picture. */
  region?: Region;
}

export interface ShadowHighlightOptions {
  /** Opens the shadows, 0 ... 100. */
  shadow?: number;
  /** Tames the highlights, 0 ... 100. */
  highlight?: number;
  /** Contrast of the midtones, -100 ... 100. */
  midtone?: number;
}

export interface VariationsOptions {
  /** Steps to take away, -1000 ... 1000; negative: to add. */
  red?: number;
  green?: number;
  blue?: number;
  /** Steps to darken; negative: to lighten. */
  dark?: number;
  /** Size of a step, 0 (fine) ... 6 (coarse), 2 by default. */
  level?: number;
}

/** A picture in the module's memory. Its operations change it and return it. */
export interface Picture {
  readonly width: number;
  readonly height: number;
  straighten(options: StraightenOptions): this;
  rotate(options: RotateOptions): this;
  perspective(options: PerspectiveOptions): this;
  warp(options: WarpOptions): this;
  softFocus(options: SoftFocusOptions): this;
  replaceColour(options: ReplaceColourOptions): this;
  colourMask(options: SelectionOptions): this;
  tint(options: SelectionOptions): this;
  temperature(options?: TemperatureOptions): this;
  autoGamma(options?: AutoGammaOptions): this;
  shadowHighlight(options?: ShadowHighlightOptions): this;
  variations(options?: VariationsOptions): this;
  copy(): Picture;
  toImage(): Result;
  /** Gives the memory back. Nothing else may be called afterwards. */
  close(): void;
}

/** Every operation gives a new image; the one that it is given stays as it is. Bad arguments throw a
 * TypeError or a RangeError whose message is one sentence. */
export interface Roxe {
  straighten(image: Image, options: StraightenOptions): Result;
  rotate(image: Image, options: RotateOptions): Result;
  perspective(image: Image, options: PerspectiveOptions): Result;
  warp(image: Image, options: WarpOptions): Result;
  softFocus(image: Image, options: SoftFocusOptions): Result;
  replaceColour(image: Image, options: ReplaceColourOptions): Result;
  /** The selection of replaceColour and tint: white at the reference colour, black beyond the
   * tolerance. Opaque: transparent colours count as laid over black. */
  colourMask(image: Image, options: SelectionOptions): Result;
  tint(image: Image, options: SelectionOptions): Result;
  temperature(image: Image, options?: TemperatureOptions): Result;
  autoGamma(image: Image, options?: AutoGammaOptions): Result;
  shadowHighlight(image: Image, options?: ShadowHighlightOptions): Result;
  variations(image: Image, options?: VariationsOptions): Result;
  /** The natural size of corners drawn upright. */
  naturalSize(corners: Corners): [width: number, height: number];
  /** A picture for several operations in a row. */
  open(image: Image): Picture;
}

/** Loads the library. source: the place (text or a URL), the bytes or the compiled WebAssembly.Module
 * of roxe.wasm; by default the file that comes with this package. */
export function load(
  source?: string | {readonly href: string} | ArrayBuffer | ArrayBufferView | object): Promise<Roxe>;

/** Every option of every operation: its kind, range, initial value, unit and meaning. */
export const operations: Readonly<Record<string, Readonly<Record<string, {
  kind: string;
  meaning: string;
  required?: boolean;
  low?: number;
  high?: number;
  unit?: string;
  values?: readonly unknown[];
  initial?: unknown;
}>>>>;
