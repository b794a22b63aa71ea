// Values and keys as short text, and back: what links and command lines are made of.
//
// Numbers are written in JavaScript's shortest form that reads back as the same number, so nothing is lost on the way.

import { kEases } from '../state/course.js';
import { colorText } from '../state/declarations.js';

const kMostPercent = 32767;
const kLastFrame = 2 ** 31 - 1;
// Bounds are single precision: what one reads as in decimals may lie a rounding error beyond it.
const kSinglePrecision = 1e-7;

/** The text of a value: `45`, `on`, `Lighten`, `#ffeedd`, and `50,50` with `separator` between a point's parts. */
export function valueText(declaration, value, separator = ',') {
  switch (declaration.type) {
    case 'checkbox':
      return value ? 'on' : 'off';
    case 'popup':
      return declaration.choices[value - 1] ?? String(value);
    case 'color':
      return colorText(value);
    case 'point':
      return value.map(String).join(separator);
    default:
      return String(value);
  }
}

/** The value that `text` says, without regard to case; null when the parameter cannot have it. */
export function readValue(declaration, text) {
  const word = text.trim().toLowerCase();
  switch (declaration.type) {
    case 'checkbox':
      return { on: 1, off: 0 }[word] ?? null;
    case 'popup': {
      const choice = declaration.choices.findIndex((name) => name.toLowerCase() === word);
      return choice < 0 ? null : choice + 1;
    }
    case 'color': {
      const channels = /^#([0-9a-f]{2})([0-9a-f]{2})([0-9a-f]{2})$/.exec(word);
      return channels && channels.slice(1).map((digits) => parseInt(digits, 16));
    }
    case 'point':
      return readPoint(declaration, word);
    default:
      return readSlider(declaration, word);
  }
}

/** The frame and the ease of a key that users may write; null for others. */
export function readKeyPlace(frameText, easeText) {
  const frame = readNumber(frameText);
  const ease = kEases.find((name) => name === easeText);
  return frame === null || Math.abs(frame) > kLastFrame || !ease ? null : { frame, ease };
}

/** Keys by frame; null when two of them share one. */
export function sortedKeys(keys) {
  const sorted = [...keys].sort((one, other) => one.frame - other.frame);
  return sorted.some((key, index) => index > 0 && key.frame === sorted[index - 1].frame) ? null : sorted;
}

/** All of `text` as a finite number, or null. */
function readNumber(text) {
  return /^-?(\d+\.?\d*|\.\d+)(e[-+]?\d+)?$/i.test(text) && Number.isFinite(Number(text)) ? Number(text) : null;
}

function readSlider({ type, validMin, validMax }, text) {
  const number = readNumber(text);
  if (number === null) {
    return null;
  }
  const within = Math.min(Math.max(number, validMin), validMax);
  const isPossible = Math.abs(number - within) <= Math.abs(within) * kSinglePrecision;
  return isPossible && (type !== 'integer' || Number.isInteger(within)) ? within : null;
}

function readPoint({ restrictedToLayer }, text) {
  const point = text.split(/[,;]/).map(readNumber);
  const [least, most] = restrictedToLayer ? [0, 100] : [-kMostPercent, kMostPercent];
  return point.length === 2 && point.every((part) => part !== null && part >= least && part <= most) ? point : null;
}
