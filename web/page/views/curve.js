// The course of a parameter as a drawing: a line for a number, two for a point, a strip for a color.

import { valueAt } from '../state/course.js';
import { colorText } from '../state/declarations.js';
import { shareOf } from './time_scale.js';

// A curve is sampled this often along its length, and at its keys.
const kSamples = 240;
const kMargin = 0.18;

/** The least and the most that a course reaches, wide enough to be drawn: { least, most }. */
export function extentOf({ keys }) {
  const numbers = keys.flatMap(({ value }) => value);
  const [least, most] = [Math.min(...numbers), Math.max(...numbers)];
  const room = most > least ? (most - least) * kMargin : Math.max(Math.abs(most) * 0.5, 0.5);
  return { least: least - room, most: most + room };
}

/** How far from the top a number stands, 0 to 1. */
export function heightOf(number, { least, most }) {
  return (most - number) / (most - least);
}

/** Path data in a box of 1000 by 100, one line for each part of the value. */
export function curvePath(course, time) {
  const extent = extentOf(course);
  const frames = samplesOf(course, time);
  const parts = [course.keys[0].value].flat().length;
  return Array.from({ length: parts }, (_, part) =>
    frames
      .map(({ frame, value }, i) => {
        const number = [value].flat()[part];
        return `${i === 0 ? 'M' : 'L'}${(shareOf(frame, time) * 1000).toFixed(1)} ${(heightOf(number, extent) * 100).toFixed(2)}`;
      })
      .join(''),
  ).join('');
}

/** A CSS gradient of a color's course. */
export function colorStrip(course, time) {
  const stops = samplesOf(course, time).map(({ frame, value }) => `${colorText(value)} ${(shareOf(frame, time) * 100).toFixed(2)}%`);
  return `linear-gradient(to right, ${stops.join(', ')})`;
}

function samplesOf(course, time) {
  const { first, last } = time;
  const even = Array.from({ length: kSamples + 1 }, (_, i) => first + (i / kSamples) * (last - first));
  const within = course.keys.map(({ frame }) => frame).filter((frame) => frame >= first && frame <= last);
  const samples = [];
  for (const frame of [...new Set([...even, ...within])].sort((a, b) => a - b)) {
    const leaving = course.keys.findLast((key) => key.frame < frame);
    const isAfterHold = leaving?.ease === 'hold' && within.includes(frame);
    if (isAfterHold) {
      samples.push({ frame, value: leaving.value }); // a step goes straight up
    }
    samples.push({ frame, value: valueAt(course, frame) });
  }
  return samples;
}
