// PNG files of 8 bits, pixels exactly as given, color under alpha included. Works wherever streams are.
//
// The browser's own deflate does the work, beside the thread that asks; a canvas would round what lies under alpha.

import { crc32 } from './crc32.js';
import { isOpaque } from './pixels.js';

const kSignature = Uint8Array.of(0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a);
const kRgb = 2;
const kRgba = 6;
const kUp = 2; // the filter that subtracts the pixel above

/** The file's Blob. `data` is straight RGBA; a picture without transparency is written without alpha. */
export async function pngOf({ width, height, data }) {
  const channels = isOpaque(data) ? 3 : 4;
  const header = new Uint8Array(13);
  new DataView(header.buffer).setUint32(0, width);
  new DataView(header.buffer).setUint32(4, height);
  header.set([8, channels === 4 ? kRgba : kRgb, 0, 0, 0], 8);
  const pixels = await deflated(filteredRows(width, height, data, channels));
  const chunks = [chunk('IHDR', header), chunk('IDAT', pixels), chunk('IEND', new Uint8Array())];
  return new Blob([kSignature, ...chunks], { type: 'image/png' });
}

function filteredRows(width, height, data, channels) {
  const rowBytes = width * channels + 1;
  const rows = new Uint8Array(rowBytes * height);
  const above = width * 4;
  let to = 0;
  let from = 0;
  for (let row = 0; row < height; ++row) {
    rows[to++] = kUp;
    for (let column = 0; column < width; ++column, from += 4) {
      for (let channel = 0; channel < channels; ++channel) {
        rows[to++] = row === 0 ? data[from + channel] : data[from + channel] - data[from + channel - above];
      }
    }
  }
  return rows;
}

async function deflated(bytes) {
  const stream = new Blob([bytes]).stream().pipeThrough(new CompressionStream('deflate'));
  return new Uint8Array(await new Response(stream).arrayBuffer());
}

function chunk(type, body) {
  const bytes = new Uint8Array(body.length + 12);
  const view = new DataView(bytes.buffer);
  view.setUint32(0, body.length);
  bytes.set(new TextEncoder().encode(type), 4);
  bytes.set(body, 8);
  view.setUint32(body.length + 8, crc32(bytes.subarray(4, body.length + 8)));
  return bytes;
}
