// The course of a parameter as a drawing: a line for a number, two for a point, a strip for a color.

import { valueBetween } from '../state/course.js';
import { colorText } from '../state/declarations.js';
import { shareOf } from './time_scale.js';

// A curve is sampled this often along its length, and at its keys.
const kSamples = 240;
const kMargin = 0.18;

/** The least and the most that a course reaches, wide enough to be drawn: { least, most }. */
export function extentOf({ keys }) {
  let [least, most] = [Infinity, -Infinity];
  for (const number of keys.flatMap(({ value }) => value)) {
    least = Math.min(least, number);
    most = Math.max(most, number);
  }
  const room = most > least ? (most - least) * kMargin : Math.max(Math.abs(most) * 0.5, 0.5);
  return { least: least - room, most: most + room };
}

/** How far from the top a number stands, 0 to 1. */
export function heightOf(number, { least, most }) {
  return (most - number) / (most - least);
}

/** Path data in a box of 1000 by 100, one line for each part of the value, of the frames from first to last. */
export function curvePath(course, span) {
  const extent = extentOf(course);
  const frames = samplesOf(course, span);
  const parts = [course.keys[0].value].flat().length;
  return Array.from({ length: parts }, (_, part) =>
    frames
      .map(({ frame, value }, i) => {
        const number = [value].flat()[part];
        return `${i === 0 ? 'M' : 'L'}${(shareOf(frame, span) * 1000).toFixed(1)} ${(heightOf(number, extent) * 100).toFixed(2)}`;
      })
      .join(''),
  ).join('');
}

/** A CSS gradient of a color's course. */
export function colorStrip(course, span) {
  const stops = samplesOf(course, span).map(({ frame, value }) => `${colorText(value)} ${(shareOf(frame, span) * 100).toFixed(2)}%`);
  return `linear-gradient(to right, ${stops.join(', ')})`;
}

// In the order of their frames: evenly, and at the keys; a step after a key that holds goes straight up.
function samplesOf({ keys }, { first, last }) {
  const even = Array.from({ length: kSamples + 1 }, (_, i) => first + (i / kSamples) * (last - first));
  const within = keys.map(({ frame }) => frame).filter((frame) => frame >= first && frame <= last);
  const isKey = new Set(within);
  const samples = [];
  let next = 0; // the first key that is not before the sample
  for (const frame of [...new Set([...even, ...within])].sort((a, b) => a - b)) {
    while (next < keys.length && keys[next].frame < frame) {
      next += 1;
    }
    const leaving = keys[next - 1];
    if (leaving?.ease === 'hold' && isKey.has(frame)) {
      samples.push({ frame, value: leaving.value });
    }
    samples.push({ frame, value: valueBetween(leaving, keys[next], frame) });
  }
  return samples;
}
