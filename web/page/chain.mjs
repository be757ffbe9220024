// The list of operations: what is in it, undo, and the same as the tool's recipe.

import {operations} from '../roxe.mjs';

/** 'shadowHighlight' -> 'shadow highlight'; the tool writes a hyphen. */
export const spaced = (name) => name.replace(/[A-Z]/g, (letter) => ' ' + letter.toLowerCase());
const hyphened = (name) => spaced(name).replaceAll(' ', '-');

// Where the page starts for what an operation requires, at places that fit the picture.
function typical(name, option, {width, height}) {
  const x = (share) => Math.round(share * (width - 1)), y = (share) => Math.round(share * (height - 1));
  const inset = [x(.2), y(.2), x(.8), y(.2), x(.8), y(.8), x(.2), y(.8)];
  switch (option.kind) {
    case 'line': return [x(.1), y(.5), x(.9), y(.5)];
    case 'corners': return name === 'to' ? [x(0), y(0), x(1), y(0), x(1), y(1), x(0), y(1)] : inset;
    case 'point': return [width >> 1, height >> 1];
    case 'region': return [x(.25), y(.25), Math.max(1, width >> 1), Math.max(1, height >> 1)];
    case 'size': return [width, height];
    case 'colour': return '#c86432';
    case 'decimal': return 0;
    default: return {tolerance: 80, radius: 21, maskRadius: 25}[name] ?? option.initial;
  }
}

let steps = 0;

/** A new step of the list for a picture of this size. */
export function newStep(name, size) {
  const options = {};
  for (const [key, option] of Object.entries(operations[name]))
    options[key] = option.required ? typical(key, option, size) : option.initial;
  return {id: ++steps, name, on: true, options};
}

/** What an option that is not required starts with when it is switched on. */
export const startOf = (key, option, size) => typical(key, option, size);

/** The file of every mask that is in use, by the id of its step: 'mask.png', 'mask-2.png' ... */
export function maskNames(chain) {
  const masked = chain.filter((step) => step.on && step.options.mask);
  return new Map(masked.map((step, i) => [step.id, i === 0 ? 'mask.png' : `mask-${i + 1}.png`]));
}

// What the tool writes; null: it writes nothing.
function argument(step, key, option, maskName) {
  const value = step.options[key];
  if (value === undefined || value === false || value === option.initial) return null;
  if (option.kind === 'picture') return `--mask ${maskName}`;
  if (key === 'maskRadius' && !step.options.mask) return null;
  const words = `--${hyphened(key)}`;
  if (option.kind === 'flag') return words;
  if (key === 'crop') return value === 'free' ? '--crop free' : '--crop';
  if (option.kind === 'size') return `${words} ${value.join('x')}`;
  if (option.kind === 'colour') return `${words} '${value}'`;
  return `${words} ${Array.isArray(value) ? value.join(',') : value}`;
}

/** The steps that are switched on as the tool's recipe, one a line. */
export function recipe(chain) {
  const names = maskNames(chain);
  return chain.filter((step) => step.on).map((step) => {
    const isMask = step.name === 'colourMask';
    const words = [isMask ? 'replace-colour' : hyphened(step.name)];
    for (const [key, option] of Object.entries(operations[step.name])) {
      const text = argument(step, key, option, names.get(step.id));
      if (text) words.push(text);
    }
    if (isMask) words.push('--mask-only');
    return words.join(' ') + '\n';
  }).join('');
}

/** The same chain for a picture of another size. Places and lengths are scaled. */
export function scaled(chain, scale) {
  if (scale === 1) return chain;
  return chain.map((step) => {
    const options = {...step.options};
    for (const [key, option] of Object.entries(operations[step.name])) {
      const value = options[key];
      if (value === undefined) continue;
      if (Array.isArray(value)) options[key] = value.map((v) => Math.round(v * scale));
      else if (option.unit === 'px') options[key] = Math.max(1, Math.round(value * scale));
      if (option.kind === 'size' || option.kind === 'region')
        options[key] = options[key].map((v, i) =>
          option.kind === 'size' || i > 1 ? Math.max(1, v) : v);
    }
    return {...step, options};
  });
}

/** What workers need: names and options of the steps that are switched on. Options that were not
 * given, or mean nothing without another one, are left out. */
export function plain(chain) {
  const counts = ([key, value], options) =>
    value !== undefined && (key !== 'maskRadius' || options.mask !== undefined);
  return chain.filter((step) => step.on).map(({name, options}) =>
    ({name, options: Object.fromEntries(Object.entries(options).filter((o) => counts(o, options)))}));
}

/** Undo and redo over snapshots. A state is never changed, only replaced. */
export class History {
  #past = [];
  #future = [];

  constructor(state) {
    this.state = state;
  }
  get canUndo() {
    return this.#past.length > 0;
  }
  get canRedo() {
    return this.#future.length > 0;
  }
  record(state) {
    this.#past.push(this.state);
    this.#future = [];
    this.state = state;
  }
  undo() {
    this.#future.push(this.state);
    this.state = this.#past.pop();
  }
  redo() {
    this.#past.push(this.state);
    this.state = this.#future.pop();
  }
}
