// The list of operations on the page: a card each, with a control for every option.

import {operations} from '../roxe.mjs';
import {spaced, startOf} from './chain.mjs';

// What a slider offers where the option allows more than anybody needs; the number beside it takes
// everything.
const USUAL = {
  angle: [-45, 45, 0.1], radius: [1, 201, 1], maskRadius: [1, 201, 1], red: [-30, 30, 1],
  green: [-30, 30, 1], blue: [-30, 30, 1], dark: [-30, 30, 1],
};

const WORDS = {
  straighten: 'straighten', colourMask: 'colour mask', softFocus: 'soft focus', warp: 'warp',
};
export const title = (name) => WORDS[name] ?? spaced(name);

export function element(tag, attributes = {}, ...children) {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (name.startsWith('on')) made.addEventListener(name.slice(2), value);
    else if (value === true) made.setAttribute(name, '');
    else if (value !== false && value !== undefined) made.setAttribute(name, value);
  }
  made.append(...children);
  return made;
}

const PLACES = {
  point: ['x', 'y'], line: ['x 1', 'y 1', 'x 2', 'y 2'], size: ['width', 'height'],
  corners: ['x 1', 'y 1', 'x 2', 'y 2', 'x 3', 'y 3', 'x 4', 'y 4'],
  region: ['x', 'y', 'width', 'height'],
};

/** Draws the list. act: what the page does for each gesture:
 *   change(step, key, value, final), select(step), toggle(step), move(step, by), remove(step),
 *   pipette(step), sizeBefore(step) */
export function drawChain(list, chain, selected, act) {
  list.replaceChildren(...chain.map((step, i) => card(step, i, chain.length, step.id === selected, act)));
}

function card(step, i, count, isSelected, act) {
  const name = title(step.name);
  const head = element('div', {class: 'head'},
    element('input', {
      type: 'checkbox', 'aria-label': `${name} is applied`, checked: step.on,
      onchange: () => act.toggle(step),
    }),
    element('button', {
      type: 'button', class: 'name', 'aria-expanded': String(isSelected),
      onclick: () => act.select(step),
    }, name),
    element('button', {
      type: 'button', 'aria-label': `Move ${name} up`, disabled: i === 0, 'data-do': 'up',
      onclick: () => act.move(step, -1),
    }, '↑'),
    element('button', {
      type: 'button', 'aria-label': `Move ${name} down`, disabled: i === count - 1, 'data-do': 'down',
      onclick: () => act.move(step, 1),
    }, '↓'),
    element('button', {
      type: 'button', 'aria-label': `Remove ${name}`, 'data-do': 'remove',
      onclick: () => act.remove(step),
    }, '✕'));
  const item = element('li', {class: step.on ? '' : 'off', 'data-id': step.id}, head);
  if (isSelected)
    for (const [key, option] of Object.entries(operations[step.name]))
      if (key !== 'background') item.append(control(step, key, option, act));
  return item;
}

function control(step, key, option, act) {
  const id = `option-${step.id}-${key}`;
  const value = step.options[key];
  const meaning = element('small', {}, option.meaning);
  const label = (...more) => element('label', {for: id}, `${spaced(key)} `, meaning, ...more);
  const change = (next, final = true) => act.change(step, key, next, final);

  if (option.kind === 'whole' || option.kind === 'decimal')
    return slider(id, key, option, value, label(), change);
  if (option.kind === 'flag')
    return element('div', {class: 'control'}, element('label', {}, element('input', {
      type: 'checkbox', id, checked: value, onchange: ({target}) => change(target.checked),
    }), ` ${spaced(key)} `, meaning));
  if (option.kind === 'choice') {
    const words = {false: 'no', true: 'yes', fit: 'in proportion'};
    const select = element('select', {id, onchange: ({target}) => change(option.values[target.value])},
      ...option.values.map((v, i) => element('option', {value: i, selected: v === value}, words[v] ?? v))
        .filter((_, i) => option.values[i] !== 'fit'));
    return element('div', {class: 'control'}, label(), select);
  }
  if (option.kind === 'colour')
    return element('div', {class: 'control'}, label(),
      element('input', {
        type: 'color', id, value, oninput: ({target}) => change(target.value, false),
        onchange: ({target}) => change(target.value),
      }),
      element('button', {type: 'button', 'data-do': 'pipette', onclick: () => act.pipette(step)}, 'Pipette'));
  if (option.kind === 'picture')
    return element('div', {class: 'control'}, element('label', {}, element('input', {
      type: 'checkbox', id, checked: value !== undefined,
      onchange: ({target}) => change(target.checked ? 'new' : undefined),
    }), ' mask ', element('small', {}, 'paint what stays sharp')));
  return places(id, key, option, value, meaning, change, act.sizeBefore(step));
}

function slider(id, key, option, value, label, change) {
  const [low, high, step] = USUAL[key] ?? [option.low, option.high, 1];
  const number = element('input', {
    type: 'number', value, min: option.low, max: option.high, step: option.kind === 'whole' ? 1 : 'any',
    'aria-label': `${spaced(key)} in ${option.unit || 'steps'}`,
    onchange: ({target}) => {
      if (target.value !== '' && target.validity.valid) change(Number(target.value));
      else target.value = range.value;
    },
  });
  const range = element('input', {
    type: 'range', id, min: low, max: high, step, value,
    oninput: ({target}) => {
      number.value = target.value;
      change(Number(target.value), false);
    },
    onchange: ({target}) => change(Number(target.value)),
  });
  const unit = element('span', {}, number, ` ${option.unit ?? ''}`);
  return element('div', {class: 'control'}, label, range, unit);
}

function places(id, key, option, value, meaning, change, size) {
  const box = element('div', {class: 'control', role: 'group', 'aria-label': spaced(key)});
  if (option.required) {
    box.append(element('span', {class: 'label'}, `${spaced(key)} `, meaning));
  } else {
    box.append(element('label', {}, element('input', {
      type: 'checkbox', id, checked: value !== undefined,
      onchange: ({target}) => change(target.checked ? startOf(key, option, size) : undefined),
    }), ` ${spaced(key)} `, meaning));
  }
  if (value !== undefined)
    box.append(element('div', {class: 'places'}, ...value.map((v, i) => element('input', {
      type: 'number', value: v, step: 1, 'data-place': `${key}-${i}`,
      'aria-label': `${spaced(key)}: ${PLACES[option.kind][i]}`,
      onchange: ({target}) => {
        if (target.value !== '' && target.validity.valid)
          change(value.map((old, k) => (k === i ? Number(target.value) : old)));
        else target.value = v;
      },
    }))));
  return box;
}
