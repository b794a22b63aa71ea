// Values as the page holds them, written in the grammar of scene files, which the tool's own reader takes.

import { EngineError } from './error.js';

const quoted = (text) => JSON.stringify(text).replaceAll('\u007f', '\\u007f');

function valueText(value, declaration) {
  if (Array.isArray(value)) {
    const parts = value.map(Number);
    return declaration?.type === 'color' ? quoted(parts.join(',')) : `[${parts.join(', ')}]`;
  }
  if (typeof value === 'number') {
    const isSwitch = declaration?.type === 'checkbox' && (value === 0 || value === 1);
    return isSwitch ? String(value === 1) : numberText(value);
  }
  if (typeof value === 'boolean') {
    return String(value);
  }
  if (typeof value === 'string') {
    return quoted(value);
  }
  throw new EngineError(`${declaration?.displayName ?? 'a parameter'} cannot be ${JSON.stringify(value)}`);
}

// As few digits as tell the number apart; whole ones beyond 64 bits need an exponent.
function numberText(number) {
  if (Number.isNaN(number)) {
    return 'nan';
  }
  if (!Number.isFinite(number)) {
    return number > 0 ? 'inf' : '-inf';
  }
  return Math.abs(number) >= 2 ** 53 ? number.toExponential() : String(number);
}

function courseText(course, declaration) {
  if (course === null || typeof course !== 'object' || Array.isArray(course)) {
    return valueText(course, declaration);
  }
  if (!Array.isArray(course.keys)) {
    throw new EngineError(`${declaration?.displayName ?? 'a parameter'} has neither a value nor keys`);
  }
  const keys = course.keys.map(
    ({ frame, value, ease = 'linear' }) =>
      `[${numberText(Number(frame))}, ${valueText(value, declaration)}, ${quoted(String(ease))}]`,
  );
  return `{ keys = [${keys.join(', ')}] }`;
}

/** The [parameters] of a scene file. `declarations` is a Map by slug. */
export function parametersText(parameters, declarations) {
  const lines = Object.entries(parameters).map(
    ([slug, course]) => `${quoted(slug)} = ${courseText(course, declarations.get(slug))}\n`,
  );
  return `[parameters]\n${lines.join('')}`;
}

const kebabCase = (key) => key.replace(/[A-Z]/g, (letter) => `-${letter.toLowerCase()}`);

/** The [render] of a scene file; what is undefined or null is left out. */
export function renderText(render) {
  const lines = Object.entries(render)
    .filter(([, value]) => value !== undefined && value !== null)
    .map(([key, value]) => `${quoted(kebabCase(key))} = ${valueText(value)}\n`);
  return `[render]\n${lines.join('')}`;
}
