// The state in the page's address, short enough to be sent and plain enough to be edited by hand:
//
//     #v=1&plate=street&at=48&time=0-95&fps=25&flakes=30000&color=f4f6ff&wind=0:0:s,48:600,90:30
//
// Parameters stand under their slugs, those at their defaults not at all. A course with keys lists them as frame:value,
// with `:s` behind those that lead on smoothly and `:h` behind those that hold. A link comes from anywhere, so whatever
// cannot be read is left out and named, and the rest counts.

import { isKeyed } from '../state/course.js';
import { equalValues, hasValue } from '../state/declarations.js';
import { kMostFrames } from '../state/time_span.js';
import { parseRate } from './rate.js';
import { readKeyPlace, readValue, sortedKeys, valueText } from './value_text.js';

const kVersion = 1;
/** A longer link is not read. */
export const kMostCharacters = 100_000;
// What a link leaves out: for all links that were ever made, whatever a new page begins with.
const kUsualTime = { first: 0, last: 119, fps: '24', shutter: 180, loop: true };
const kPlateNames = { shipped: 'plate', blank: 'blank' };
const kMostSide = 8192;
const kEaseTexts = { linear: '', smooth: ':s', hold: ':h' };
const kEaseOfLetter = { s: 'smooth', h: 'hold' };

/**
 * The hash of a state, with its `#`. A plate is named when it is a shipped one or blank; a picture of the
 * visitor's own stays with the visitor, and so does its name.
 */
export function stateToHash({ plate, parameters, time }, declarations) {
  const parts = [`v=${kVersion}`];
  const add = (name, text) => parts.push(`${name}=${escaped(text)}`);
  if (plate.kind === 'shipped' || plate.kind === 'blank') {
    add(kPlateNames[plate.kind], plate.name);
  }
  add('at', String(time.frame));
  if (time.first !== kUsualTime.first || time.last !== kUsualTime.last) {
    add('time', `${time.first}-${time.last}`);
  }
  if (String(time.fps) !== kUsualTime.fps) {
    add('fps', String(time.fps));
  }
  if (time.shutter !== kUsualTime.shutter) {
    add('shutter', String(time.shutter));
  }
  if (!time.loop) {
    add('loop', 'off');
  }
  for (const declaration of declarations.filter(hasValue)) {
    const course = parameters[declaration.slug];
    if (course !== undefined && !equalValues(course, declaration.default)) {
      add(declaration.slug, courseText(declaration, course));
    }
  }
  return '#' + parts.join('&');
}

/**
 * Reads a hash: null when it holds no state, else { plate, parameters, time, notes }. `plate` is there when the link
 * names one; `time` is whole, with the usual values for what the link leaves out; `notes` are sentences about what was
 * left out, in the link's order.
 */
export function hashToState(hash, declarations) {
  const text = hash.replace(/^#/, '');
  if (!/(^|&)v=/.test(text)) {
    return null;
  }
  const state = { parameters: {}, time: { frame: 0, ...kUsualTime }, notes: [] };
  if (text.length > kMostCharacters) {
    state.notes.push(`the link is too long: ${text.length} characters, at most ${kMostCharacters} are read`);
    return state;
  }
  const bySlug = new Map(declarations.filter(hasValue).map((declaration) => [declaration.slug, declaration]));
  for (const part of text.split('&').filter((piece) => piece !== '')) {
    const [name, value] = nameAndValue(part);
    if (value === null) {
      state.notes.push(`'${shortened(part)}' in the link cannot be read`);
    } else if (readers.has(name)) {
      readers.get(name)(value, state);
    } else if (bySlug.has(name)) {
      readCourse(bySlug.get(name), value, state);
    } else {
      state.notes.push(`there is no parameter '${shortened(name)}'; the link's value is left out`);
    }
  }
  const { time } = state;
  time.frame = Math.min(Math.max(time.frame, time.first), time.last);
  return state;
}

const readers = new Map(
  Object.entries({
    v(text, state) {
      if (!/^\d+$/.test(text) || Number(text) > kVersion) {
        state.notes.push('the link was made by a newer page; what this one knows is read');
      }
    },
    plate(text, state) {
      state.plate = { kind: 'shipped', name: text };
    },
    blank(text, state) {
      if (isFrameSize(text)) {
        state.plate = { kind: 'blank', name: text };
      } else {
        refuse('blank', text, state);
      }
    },
    at: timeReader('frame', readFrame),
    fps: timeReader('fps', (text) => (parseRate(text) ? text : null)),
    shutter: timeReader('shutter', (text) => {
      const degrees = Number(text);
      return text !== '' && degrees >= 1 && degrees <= 720 ? degrees : null;
    }),
    loop: timeReader('loop', (text) => ({ on: true, off: false })[text] ?? null),
    time(text, state) {
      const match = /^(-?\d+)-(-?\d+)$/.exec(text);
      const [first, last] = match ? [readFrame(match[1]), readFrame(match[2])] : [null, null];
      if (first === null || last === null || first > last || last - first >= kMostFrames) {
        refuse('time', text, state);
      } else {
        Object.assign(state.time, { first, last });
      }
    },
  }),
);

function timeReader(field, read) {
  return (text, state) => {
    const value = read(text);
    if (value === null) {
      refuse(field, text, state);
    } else {
      state.time[field] = value;
    }
  };
}

// As "1920x1080". A link is not to take all of a visitor's memory.
function isFrameSize(text) {
  const sides = /^(\d{1,5})x(\d{1,5})$/.exec(text)?.slice(1).map(Number);
  return sides !== undefined && sides.every((side) => side >= 1 && side <= kMostSide);
}

function readFrame(text) {
  return /^-?\d{1,7}$/.test(text) ? Number(text) : null;
}

function refuse(name, text, state) {
  state.notes.push(`${name}: '${shortened(text)}' in the link is not possible and is left out`);
}

function courseText(declaration, course) {
  if (!isKeyed(course)) {
    return linkText(declaration, course);
  }
  return course.keys
    .map(({ frame, value, ease = 'linear' }) => `${frame}:${linkText(declaration, value)}${kEaseTexts[ease]}`)
    .join(',');
}

// A link's colors do without the # that would begin another hash, choices without their blanks and capitals.
function linkText(declaration, value) {
  const text = valueText(declaration, value, ';');
  return declaration.type === 'color' ? text.slice(1) : declaration.type === 'popup' ? slug(text) : text;
}

function readLinkText(declaration, text) {
  if (declaration.type === 'color') {
    return readValue(declaration, `#${text}`);
  }
  if (declaration.type === 'popup') {
    return declaration.choices.findIndex((choice) => slug(choice) === text) + 1 || null;
  }
  return readValue(declaration, text);
}

function readCourse(declaration, text, state) {
  const course = text.includes(':') ? readKeys(declaration, text) : readLinkText(declaration, text);
  if (course === null) {
    refuse(declaration.displayName || declaration.slug, text, state);
  } else {
    state.parameters[declaration.slug] = course;
  }
}

function readKeys(declaration, text) {
  const keys = text.split(',').map((piece) => readKey(declaration, piece));
  const sorted = keys.includes(null) || !declaration.animatable ? null : sortedKeys(keys);
  return sorted && { keys: sorted };
}

function readKey(declaration, text) {
  const [frameText, valueWords = '', letter, ...more] = text.split(':');
  const place = readKeyPlace(frameText, letter === undefined ? 'linear' : kEaseOfLetter[letter]);
  const value = readLinkText(declaration, valueWords);
  return place && value !== null && more.length === 0 ? { frame: place.frame, value, ease: place.ease } : null;
}

function slug(text) {
  return text.toLowerCase().replace(/[^a-z0-9]+/g, '-');
}

// What a fragment may hold stays readable.
function escaped(text) {
  return encodeURIComponent(text).replace(/%(2F|3A|3B|2C|40)/g, decodeURIComponent);
}

function nameAndValue(part) {
  const equals = part.indexOf('=');
  if (equals < 0) {
    return [part, null];
  }
  try {
    return [decodeURIComponent(part.slice(0, equals)), decodeURIComponent(part.slice(equals + 1))];
  } catch {
    return [part, null]; // a percent sign without its digits
  }
}

function shortened(text) {
  return text.length > 40 ? `${text.slice(0, 40)}…` : text;
}
