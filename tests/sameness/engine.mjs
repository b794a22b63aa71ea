// Frames by the page's engine in node: engine.mjs OUT_WEB CASES [fast|plain [NAME DEPTH FILE]]
import { readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';

const [web, cases, loop, wantedName, wantedDepth, file] = process.argv.slice(2);
const { loadEngine } = await import(pathToFileURL(join(web, 'engine/engine.js')));
const engine = await loadEngine({ isPlain: loop === 'plain' });
const arrays = { 8: Uint8ClampedArray, 16: Uint16Array, 32: Float32Array };

// The effect has alpha first.
function bytesOf(data) {
  const turned = data.map((_, i) => data[i % 4 === 0 ? i + 3 : i - 1]);
  return new Uint8Array(turned.buffer);
}

// Of 64 bits, in two halves: whole numbers of 53 bits hold all products.  The factor is 2^40 + 0x1b3.
function hashOf(bytes) {
  let [high, low] = [0xcbf29ce4, 0x84222325];
  for (const byte of bytes) {
    const mixed = (low ^ byte) >>> 0;
    const product = mixed * 0x1b3;
    low = product >>> 0;
    high = (Math.imul(high, 0x1b3) + Math.floor(product / 2 ** 32) + (mixed << 8)) >>> 0;
  }
  return [high, low].map((half) => half.toString(16).padStart(8, '0')).join('');
}

for (const { name, depth, width, height, samples, frame, scene } of JSON.parse(readFileSync(cases, 'utf8'))) {
  const bits = depth === 32 ? 'float' : String(depth);
  if (wantedName && !(name === wantedName && bits === wantedDepth)) {
    continue;
  }
  const { render, parameters } = engine.readScene(scene);
  const plate = { id: `${name} ${bits}`, width, height, depth, data: arrays[depth].from(samples) };
  const { data } = engine.render({
    plate, parameters, frame, depth, fps: render.fps, shutter: render.shutter,
  });
  const bytes = bytesOf(data);
  if (file) {
    writeFileSync(file, bytes);
  } else {
    console.log(`${name} ${bits} ${hashOf(bytes)}`);
  }
}
