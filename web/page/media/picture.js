// Pictures of the visitor's: decoded by the browser, kept as exact straight bytes, and written as PNG.

import { kHeaderBytes, readHeader } from './header.js';
import { MediaError } from './media_error.js';
import { workerAt } from './worker_calls.js';

// Plate and frame lie in the memory of every engine, four bytes a pixel each, beside what lights the flakes.
const kMostPixels = 64e6;
const kMostSide = 32767;

const pictureWorker = workerAt(new URL('./picture_worker.js', import.meta.url));

let lastId = 0;

/**
 * The plate of a picture file: { id, name, width, height, data, pixelAspect, notes }. `data` is straight RGBA as the
 * file has it, upright, no profile applied; `notes` are sentences about what the picture lost on the way. Throws
 * MediaError when the browser cannot read it or it is too large.
 */
export async function decodePicture(blob, name = blob.name ?? 'picture') {
  const header = readHeader(new Uint8Array(await blob.slice(0, kHeaderBytes).arrayBuffer()));
  if (header) {
    checkSize(header, name);
  }
  const picture = await pictureWorker()
    .call('decode', { blob, mostPixels: kMostPixels })
    .catch((error) => {
      throw new MediaError(error instanceof MediaError ? tooLarge(name, error.message) : unreadable(name, header));
    });
  const { width, height, data, flaw } = picture;
  checkSize(picture, name);
  const notes = [];
  if (header?.bits > 8) {
    notes.push(`${name} has ${header.bits} bits a channel; 8 are shown`);
  }
  if (header?.isCmyk) {
    notes.push(`${name} is in CMYK; the browser makes RGB of it, a little other than the tool does`);
  }
  if (flaw) {
    notes.push(`${name} is not quite as in its file: ${flaw}`);
  }
  return { id: `picture:${++lastId}`, name, width, height, data, pixelAspect: uprightAspect(header, picture), notes };
}

/** The Blob of a PNG with exactly these straight RGBA pixels. */
export function encodePng({ width, height, data }) {
  return pictureWorker().call('encode', { width, height, data });
}

function checkSize({ width, height }, name) {
  if (width * height > kMostPixels) {
    throw new MediaError(tooLarge(name, `it has ${width} × ${height} pixels`));
  }
  if (Math.max(width, height) > kMostSide) {
    throw new MediaError(
      `${name} is too large: it is ${Math.max(width, height)} pixels long, at most ${kMostSide} a side`,
    );
  }
}

function tooLarge(name, size) {
  return `${name} is too large: ${size}, at most ${kMostPixels / 1e6} million fit in a page`;
}

function unreadable(name, header) {
  return header
    ? `${name} is damaged: its ${header.format} header can be read, its pixels cannot`
    : `${name} is not a picture that this browser reads`;
}

// A picture that the browser has turned on its side has its pixels turned with it.
function uprightAspect(header, { width, height }) {
  const aspect = header?.pixelAspect ?? 1;
  return header && header.width !== width && header.width === height ? 1 / aspect : aspect;
}
