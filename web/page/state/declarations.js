// What the effect declares, ordered for the page: nothing here knows a parameter by its name.

import { isKeyed } from './course.js';

/**
 * `list` is the engine's `parameters`.  Returns
 *   tree      top-level entries in the order declared; a group's entry has `children`
 *   values    what holds a value (no groups), in order
 *   bySlug    Map from slug to such a declaration
 */
export function arrange(list) {
  const tree = [];
  const path = [tree];
  for (const declaration of list) {
    if (declaration.type === 'group') {
      const group = { ...declaration, children: [] };
      path.at(-1).push(group);
      path.push(group.children);
    } else if (declaration.type === 'groupEnd') {
      path.pop();
    } else {
      path.at(-1).push(declaration);
    }
  }
  const values = list.filter(hasValue);
  return { tree, values, bySlug: new Map(values.map((declaration) => [declaration.slug, declaration])) };
}

/** Whether a declaration is of a parameter with a value, and no group's. */
export function hasValue({ type }) {
  return type !== 'group' && type !== 'groupEnd';
}

/** What stands beside the control: a checkbox has its text there and often no name. */
export function titleOf(declaration) {
  return declaration.displayName || declaration.name || declaration.label || declaration.slug;
}

export function equalValues(a, b) {
  return JSON.stringify(a) === JSON.stringify(b);
}

/** A text that is equal for equal settings: in the order declared, without what has its default. */
export function settingsText(parameters, { values }) {
  const set = values
    .filter(({ slug, default: usual }) => slug in parameters && !equalValues(parameters[slug], usual))
    .map(({ slug }) => [slug, canonical(parameters[slug])]);
  return JSON.stringify(set);
}

function canonical(course) {
  return isKeyed(course) ? course.keys.map(({ frame, value, ease }) => [frame, value, ease ?? 'linear']) : course;
}

/** Keeps a number within the valid range, with as many decimals as its control shows. */
export function fitted(declaration, number) {
  const decimals = declaration.type === 'integer' ? 0 : declaration.decimals;
  const rounded = Number(number.toFixed(decimals));
  return Math.min(Math.max(rounded, declaration.validMin), declaration.validMax);
}

/** How far one arrow key goes: about a hundredth of the travel, a round number that the control can show. */
export function stepOf(declaration) {
  const smallest = declaration.type === 'integer' ? 1 : 10 ** -declaration.decimals;
  const hundredth = (declaration.sliderMax - declaration.sliderMin) / 100;
  const power = 10 ** Math.floor(Math.log10(hundredth));
  const round = [5, 2, 1].map((digit) => digit * power).find((step) => step <= hundredth * 1.0001);
  return Math.max(smallest, round ?? power);
}

/** The step with its coarse (Shift) and fine (Alt or Ctrl) variants; fine ones stay visible in the control. */
export function stepFor(declaration, { shiftKey, altKey, ctrlKey }) {
  const step = stepOf(declaration);
  if (shiftKey) {
    return step * 10;
  }
  if (altKey || ctrlKey) {
    return Math.max(declaration.type === 'integer' ? 1 : 10 ** -declaration.decimals, step / 10);
  }
  return step;
}

const kThinSpace = '\u202f';

/** "45 000", "25.0 %": thousands apart, as many decimals as declared, and the one unit that the effect declares. */
export function numberText(declaration, number) {
  const decimals = declaration.type === 'integer' ? 0 : declaration.decimals;
  const [whole, fraction] = Math.abs(number).toFixed(decimals).split('.');
  const apart = whole.length > 4 ? whole.replace(/\B(?=(\d{3})+$)/g, kThinSpace) : whole;
  const sign = number < 0 && Number(number.toFixed(decimals)) !== 0 ? '\u2212' : '';
  return sign + apart + (fraction ? `.${fraction}` : '') + (declaration.percent ? `${kThinSpace}%` : '');
}

/** "50.0 %": a side of a point. */
export function percentText(number) {
  return `${number.toFixed(1)}${kThinSpace}%`;
}

export function colorText([red, green, blue]) {
  const hex = (part) => Math.round(Math.min(Math.max(part, 0), 255)).toString(16).padStart(2, '0');
  return `#${hex(red)}${hex(green)}${hex(blue)}`;
}

export function colorFromText(text) {
  return [1, 3, 5].map((at) => Number.parseInt(text.slice(at, at + 2), 16));
}

/** The value in words, for labels and for those who listen; what is read again is written by share/value_text.js. */
export function spokenValue(declaration, value) {
  switch (declaration.type) {
    case 'checkbox':
      return value ? 'on' : 'off';
    case 'popup':
      return declaration.choices[value - 1];
    case 'color':
      return colorText(value);
    case 'point':
      return value.map(percentText).join(', ');
    default:
      return numberText(declaration, value);
  }
}
