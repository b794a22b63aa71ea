// Frames along a line: shares of its length, and where to write numbers.

/** Where a frame stands between first and last: 0 to 1, or beyond. */
export function shareOf(frame, { first, last }) {
  return last === first ? 0 : (frame - first) / (last - first);
}

/** The frame nearest to a share of the length. */
export function frameAtShare(share, { first, last }) {
  return Math.round(first + share * (last - first));
}

/** Frames to label, so that about `room` labels fit: whole seconds, or parts that divide a second. */
export function labelledFrames({ first, last }, room, perSecond) {
  const least = (last - first) / Math.max(room, 1);
  const second = Math.round(perSecond);
  const seconds = [1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 1800, 3600].map((count) => count * second);
  const parts = Array.from({ length: second - 1 }, (_, i) => i + 1).filter((part) => second % part === 0);
  const steps = [...parts, ...seconds];
  const step = steps.find((candidate) => candidate >= least) ?? Math.ceil(least);
  const frames = [];
  for (let frame = Math.ceil(first / step) * step; frame <= last; frame += step) {
    frames.push(frame);
  }
  return frames;
}

/** Runs of consecutive numbers as [from, to] pairs. */
export function runs(numbers) {
  const ordered = [...numbers].sort((a, b) => a - b);
  const found = [];
  for (const number of ordered) {
    if (found.length > 0 && found.at(-1)[1] === number - 1) {
      found.at(-1)[1] = number;
    } else {
      found.push([number, number]);
    }
  }
  return found;
}
