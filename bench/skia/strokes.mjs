// Draws recorded flakes as Skia's strokes with round caps:  node strokes.mjs FILE [ROUNDS]
//
// FILE is what `vintrel_bench --capsules FILE` writes: width, height, then nine floats a flake (start x and y,
// end x and y, radius, red, green, blue, alpha).  Prints nanoseconds a flake, medians: of the strokes, and of
// the same calls without the last one, which is what the way from the script into the library costs.
import { readFileSync } from 'node:fs';
import { performance } from 'node:perf_hooks';

let createCanvas;
try {
  ({ createCanvas } = await import('@napi-rs/canvas'));
} catch (error) {
  console.log(`Skia: skipped, its package is not there (${error.code}); install it with: npm install --no-package-lock`);
  process.exit(0);
}

const [file, rounds = '5'] = process.argv.slice(2);
if (!file || !(Number(rounds) >= 1)) {
  console.error('usage: node strokes.mjs FILE [ROUNDS]');
  process.exit(2);
}
const bytes = readFileSync(file);
const floats = new Float32Array(bytes.buffer, bytes.byteOffset, bytes.length / 4);
const [width, height] = floats;
const values = floats.subarray(2);
const kFields = 9;
const count = values.length / kFields;

// Styles are text; writing and reading it is no part of drawing.
const styles = Array.from({ length: count }, (_, i) => {
  const [red, green, blue] = values.subarray(i * kFields + 5, i * kFields + 8).map((v) => Math.round(v * 255));
  return `rgb(${red},${green},${blue})`;
});

const canvas = createCanvas(width, height);
const context = canvas.getContext('2d');
context.lineCap = 'round';
context.translate(0.5, 0.5);

function clear() {
  context.fillStyle = 'rgb(90,110,140)';
  context.fillRect(-1, -1, width + 2, height + 2);
  context.getImageData(0, 0, 1, 1);
}

// Reading a pixel back makes the library finish what it has put off.
function draw(stroke) {
  clear();
  const start = performance.now();
  for (let i = 0, v = 0; i < count; ++i, v += kFields) {
    context.strokeStyle = styles[i];
    context.globalAlpha = values[v + 8];
    context.lineWidth = 2 * values[v + 4];
    context.beginPath();
    context.moveTo(values[v], values[v + 1]);
    context.lineTo(values[v + 2], values[v + 3]);
    if (stroke) {
      context.stroke();
    }
  }
  context.globalAlpha = 1;
  context.getImageData(0, 0, 1, 1);
  return ((performance.now() - start) * 1e6) / count;
}

// Snow must have changed a share of the picture, and the calls without strokes nothing.
function changedPixels() {
  const { data } = context.getImageData(0, 0, width, height);
  let changed = 0;
  for (let i = 0; i < data.length; i += 4) {
    changed += data[i] !== 90 || data[i + 1] !== 110 || data[i + 2] !== 140 ? 1 : 0;
  }
  return changed;
}

function median(list) {
  return list.sort((a, b) => a - b)[Math.floor(list.length / 2)];
}

draw(true);
const drawn = changedPixels();
draw(false);
if (drawn < count / 10 || changedPixels() !== 0) {
  console.error(`Skia: ${drawn} pixels changed by ${count} strokes, ${changedPixels()} by none: not what was asked`);
  process.exit(1);
}
const strokes = [];
const calls = [];
for (let round = 0; round < Number(rounds); ++round) {
  strokes.push(draw(true));
  calls.push(draw(false));
}
const [whole, bare] = [median(strokes), median(calls)];
console.log(
  `Skia: ${whole.toFixed(1)} ns a flake over ${count} flakes, ${bare.toFixed(1)} of them for the calls ` +
    `without strokes; ${drawn} pixels changed`);
