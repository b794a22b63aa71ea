// Which pictures a video holds and which of them a frame is, counted as the tool counts them.

import { likelyRates, parseRate } from '../share/rate.js';

// Containers round times to their ticks, a thousandth of a second at the coarsest.
const kTickSeconds = 1.5e-3;

/**
 * Frames at a constant rate from a video's pictures, [{ time, duration }] in seconds and in any order:
 * { fps, frames, isConstant, timeOf(frame) }. At a varying rate a frame of the mean one is the picture nearest to it.
 */
export function indexOf(pictures) {
  const sorted = [...pictures].sort((one, other) => one.time - other.time);
  const times = Float64Array.from(sorted, ({ time }) => time - sorted[0].time);
  const start = sorted[0].time;
  const constant = constantRateOf(times);
  const fps = constant ?? meanRateOf(times, sorted.at(-1).duration);
  const { perSecond } = parseRate(fps);
  return {
    fps,
    frames: constant ? times.length : Math.round(times.at(-1) * perSecond) + 1,
    isConstant: constant !== null,
    timeOf: (frame) => start + (constant ? times[frame] : nearest(times, frame / perSecond)),
  };
}

// The likely rate that the times are nearest to, when they keep to it.
function constantRateOf(times) {
  if (times.length < 2) {
    return '25';
  }
  const strayOf = (rate) => {
    const { perSecond } = parseRate(rate);
    return times.reduce((most, time, picture) => Math.max(most, Math.abs(time - picture / perSecond)), 0);
  };
  const rated = likelyRates((times.length - 1) / times.at(-1)).map((rate) => ({ rate, stray: strayOf(rate) }));
  // A usual rate before a decimal that fits a little better.
  const least = Math.min(...rated.map(({ stray }) => stray));
  return rated.find(({ stray }) => stray <= kTickSeconds && stray <= least + kTickSeconds / 3)?.rate ?? null;
}

function meanRateOf(times, lastDuration) {
  return likelyRates(times.length / (times.at(-1) + lastDuration)).at(-1);
}

function nearest(times, time) {
  let [low, high] = [0, times.length - 1];
  while (low < high) {
    const middle = (low + high) >> 1;
    if (times[middle] < time) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  const before = times[Math.max(0, low - 1)];
  return time - before <= times[low] - time ? before : times[low];
}
