// RGB as clips keep it: brightness for each pixel, color for two by two, limited range.
//
// A browser's own way from RGB differs from one to the next, and some write full range, which not every player heeds.
// So it is done here, in the colors that the tool's clips have: BT.709 from 720 lines on, else BT.601.

import { isOpaque } from './pixels.js';

const kHdLines = 720;
const kHd = { red: 0.2126, blue: 0.0722, matrix: 'bt709', primaries: 'bt709' };
const kSd = { red: 0.299, blue: 0.114, matrix: 'smpte170m', primaries: 'smpte170m' };
const kShift = 16;
const kHalf = 1 << (kShift - 1);

/** What a clip of so many lines is tagged with, as WebCodecs has it. */
export function colorSpaceOf(height) {
  const { matrix, primaries } = colorsOf(height);
  return { matrix, primaries, transfer: primaries, fullRange: false };
}

/**
 * The top left `width` × `height` (both even) of a frame of straight RGBA, over black, as I420: the plane of
 * brightness, then a quarter of its size each, blue's difference and red's.
 */
export function i420Of(frame, width, height) {
  const pixels = overBlack(frame);
  const bytes = new Uint8Array((width * height * 3) / 2);
  const { luma, blue, red } = weightsOf(height);
  const stride = frame.width * 4;
  const blueAt = width * height;
  const redAt = blueAt + blueAt / 4;
  for (let row = 0; row < height; ++row) {
    let from = row * stride;
    for (let to = row * width; to < (row + 1) * width; ++to, from += 4) {
      const sum = luma[0] * pixels[from] + luma[1] * pixels[from + 1] + luma[2] * pixels[from + 2];
      bytes[to] = 16 + ((sum + kHalf) >> kShift);
    }
  }
  for (let row = 0, place = 0; row < height; row += 2) {
    let from = row * stride;
    for (let column = 0; column < width; column += 2, from += 8, ++place) {
      const r = pixels[from] + pixels[from + 4] + pixels[from + stride] + pixels[from + stride + 4];
      const g = pixels[from + 1] + pixels[from + 5] + pixels[from + stride + 1] + pixels[from + stride + 5];
      const b = pixels[from + 2] + pixels[from + 6] + pixels[from + stride + 2] + pixels[from + stride + 6];
      bytes[blueAt + place] = 128 + ((blue[0] * r + blue[1] * g + blue[2] * b + kHalf * 4) >> (kShift + 2));
      bytes[redAt + place] = 128 + ((red[0] * r + red[1] * g + red[2] * b + kHalf * 4) >> (kShift + 2));
    }
  }
  return bytes;
}

function overBlack({ data }) {
  if (isOpaque(data)) {
    return data;
  }
  const pixels = new Uint8Array(data.length);
  for (let at = 0; at < data.length; at += 4) {
    const alpha = data[at + 3];
    pixels[at] = Math.round((data[at] * alpha) / 255);
    pixels[at + 1] = Math.round((data[at + 1] * alpha) / 255);
    pixels[at + 2] = Math.round((data[at + 2] * alpha) / 255);
  }
  return pixels;
}

function colorsOf(height) {
  return height >= kHdLines ? kHd : kSd;
}

// Brightness spans 219 steps from 16 on, a difference 224 about 128. In fixed point.
function weightsOf(height) {
  const { red, blue } = colorsOf(height);
  const green = 1 - red - blue;
  const fixed = (weights, span) => weights.map((weight) => Math.round(((weight * span) / 255) * 2 ** kShift));
  const difference = (own, weights) =>
    fixed(
      weights.map((weight) => weight / (2 * (1 - own))),
      224,
    );
  return {
    luma: fixed([red, green, blue], 219),
    blue: difference(blue, [-red, -green, 1 - blue]),
    red: difference(red, [1 - red, -green, -blue]),
  };
}
