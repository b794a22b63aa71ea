// How large clips become.

/**
 * Snow is noise to an encoder: heavy snow needs about as many bits a pixel at the quality that clip_writer.js holds.
 * The rate that is asked of encoders follows from it.
 */
export const kBitsPerPixel = 1;

// What the heaviest of the shipped looks took, in bits a pixel: H.264 keeps to the rate, VP9 to the quality. Pictures of
// 4K took half of it, a few flakes on a still picture a twentieth.
const kMostBitsPerPixel = { mp4: kBitsPerPixel, webm: 3.5 };

// Beyond that a browser may run out of memory, in which the clip lies twice when it is put together.
const kMostBytesInMemory = 512 << 20;

/** About what a clip of so many frames may come to in a format of clip.js, in bytes. */
export function mostClipBytes(format, { width, height }, count) {
  return (width * height * count * kMostBitsPerPixel[format]) / 8;
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
