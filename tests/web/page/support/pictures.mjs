// Pictures and videos for tests: every kind of PNG that means something else, and clips whose frames tell their number.

import { execFileSync } from 'node:child_process';
import { deflateSync } from 'node:zlib';

import { crc32 } from '../../../../web/page/media/crc32.js';

const kGray = 0;
const kRgb = 2;
const kPalette = 3;
const kGrayAlpha = 4;
const kRgba = 6;
const kChannels = { [kGray]: 1, [kRgb]: 3, [kPalette]: 1, [kGrayAlpha]: 2, [kRgba]: 4 };

const count = (length, make) => Buffer.from(Array.from({ length }, (_, index) => make(index) & 255));

/** PNG files by name: { bytes, pixelAspect }. */
export function pngsOfAllKinds() {
  const palette = chunk(
    'PLTE',
    count(768, (index) => index * 151),
  );
  const alphas = chunk(
    'tRNS',
    count(256, (index) => index),
  );
  const wide = Buffer.from([0, 0, 0x03, 0xe8, 0, 0, 0x07, 0xd0, 1]);
  const onItsSide = Buffer.from('4d4d002a00000008000101120003000000010006000000000000', 'hex');
  return {
    'every value under every alpha': {
      bytes: png(kRgba, 256, 256, (x, y) => [x, 255 - x, x * 7, y]),
      pixelAspect: 1,
    },
    'gray under alpha': { bytes: png(kGrayAlpha, 256, 256, (x, y) => [x, y]), pixelAspect: 1 },
    gray: { bytes: png(kGray, 37, 19, (x, y) => [x * 5 + y * 3]), pixelAspect: 1 },
    'a palette with alpha': {
      bytes: png(kPalette, 37, 19, (x, y) => [x * 5 + y * 3], [palette, alphas]),
      pixelAspect: 1,
    },
    'wide pixels': { bytes: png(kRgb, 37, 19, (x, y) => [x, y, x * y], [chunk('pHYs', wide)]), pixelAspect: 2 },
    'on its side': { bytes: png(kRgb, 37, 19, (x, y) => [x, y, x * y], [chunk('eXIf', onItsSide)]), pixelAspect: 1 },
    'wider than a texture': { bytes: png(kRgba, 17001, 3, (x, y) => [x, x >> 3, y, x >> 5]), pixelAspect: 1 },
  };
}

/** A PNG of 8 bits with nothing but a header: its size may be anything. */
export function pngHeader(width, height) {
  return Buffer.concat([kSignature, header(kRgba, width, height), chunk('IDAT', Buffer.alloc(0))]);
}

/** The samples that `pixelAt` gives, as a file. */
function png(colorType, width, height, pixelAt, chunks = []) {
  const rows = Array.from({ length: height }, (_, y) =>
    Buffer.concat([Buffer.of(0), count(width * kChannels[colorType], sampleOf(pixelAt, kChannels[colorType], y))]),
  );
  const pixels = chunk('IDAT', deflateSync(Buffer.concat(rows)));
  return Buffer.concat([
    kSignature,
    header(colorType, width, height),
    ...chunks,
    pixels,
    chunk('IEND', Buffer.alloc(0)),
  ]);
}

const kSignature = Buffer.from('89504e470d0a1a0a', 'hex');

function sampleOf(pixelAt, channels, y) {
  return (index) => pixelAt(Math.floor(index / channels), y)[index % channels];
}

function header(colorType, width, height) {
  const body = Buffer.alloc(13);
  body.writeUInt32BE(width, 0);
  body.writeUInt32BE(height, 4);
  body.set([8, colorType], 8);
  return chunk('IHDR', body);
}

function chunk(type, body) {
  const bytes = Buffer.alloc(body.length + 12);
  bytes.writeUInt32BE(body.length, 0);
  bytes.write(type, 4, 'latin1');
  bytes.set(body, 8);
  bytes.writeUInt32BE(crc32(bytes.subarray(4, body.length + 8)), body.length + 8);
  return bytes;
}

/** A video of gray frames, 60 + 4 n bright of 255, with pictures that are stored out of order. */
export function writeGrayVideo(file, codec, frames, rate) {
  const source = `color=black:s=128x96:r=${rate},format=yuv420p,geq=lum='round(16+(60+4*N)*219/255)':cb=128:cr=128`;
  const input = ['-v', 'error', '-y', '-f', 'lavfi', '-i', source, '-frames:v', frames];
  execFileSync(
    'ffmpeg',
    [...input, '-c:v', codec, '-g', 12, '-bf', 2, '-crf', 4, '-pix_fmt', 'yuv420p', file].map(String),
  );
}

/** A video without loss, each frame another. */
export function writeColorVideo(file, frames) {
  const input = ['-v', 'error', '-y', '-f', 'lavfi', '-i', 'testsrc=s=640x360:r=25', '-frames:v', frames];
  execFileSync('ffmpeg', [...input, '-c:v', 'ffv1', '-pix_fmt', 'bgr0', file].map(String));
}
