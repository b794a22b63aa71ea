// How large clips become.

/** Snow is noise to an encoder: heavy snow needs about as much as this at the quality that clip_writer.js holds. */
export const kBitsPerPixel = 1;

// Beyond that a browser may run out of memory, in which the clip lies twice when it is put together.
const kMostBytesInMemory = 512 << 20;

/** What a clip of so many frames seldom exceeds, in bytes: little snow on a still picture needs a tenth of it. */
export function clipBytes({ width, height }, count) {
  return (width * height * count * kBitsPerPixel) / 8;
}

/** Whether a clip of that size should go into a file as it comes. */
export function isTooLargeForMemory(bytes) {
  return bytes > kMostBytesInMemory;
}

/** "31 MB" */
export function bytesText(bytes) {
  const [number, unit] = bytes >= 1e9 ? [bytes / 1e9, 'GB'] : [bytes / 1e6, 'MB'];
  return `${number.toFixed(number < 10 ? 1 : 0)} ${unit}`;
}
