// The engine's frames against the host library's own, built for this machine: every byte, in every depth, by the
// plain loop and by the fast one.

import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';
import { pathToFileURL } from 'node:url';

const { loadEngine } = await import(pathToFileURL(join(process.env.VINTREL_WEB, 'engine/engine.js')));
const engine = await loadEngine();
const plainEngine = await loadEngine({ isPlain: true });

function numbers(seed) {
  let state = seed;
  return () => {
    state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
    return state;
  };
}

function plateOf({ width, height, seed, blank }) {
  if (blank) {
    return { blank, width, height };
  }
  const next = numbers(seed);
  const data = Uint8ClampedArray.from({ length: width * height * 4 }, () => next() >>> 24);
  return { id: `${width}x${height}-${seed}`, width, height, data };
}

/** Any values of every parameter inside its slider's travel; few enough flakes for the plain loop. */
function randomParameters(random) {
  const unit = () => random() / 2 ** 32;
  const parameters = {};
  for (const one of engine.parameters) {
    if (one.type === 'color') {
      parameters[one.slug] = [0, 1, 2].map(() => random() >>> 24);
    } else if (one.type === 'point') {
      parameters[one.slug] = [unit() * 100, unit() * 100];
    } else if (one.type === 'checkbox') {
      parameters[one.slug] = random() >>> 31;
    } else if (one.type === 'popup') {
      parameters[one.slug] = 1 + Math.floor(unit() * one.choices.length);
    } else if (one.default !== null) {
      const value = one.sliderMin + unit() * (one.sliderMax - one.sliderMin);
      parameters[one.slug] = one.type === 'integer' ? Math.round(value) : value;
    }
  }
  parameters.flakes = Math.floor(unit() * 4000);
  return parameters;
}

const keyed = {
  flakes: 3000,
  speed: { keys: [{ frame: -5, value: 100, ease: 'smooth' }, { frame: 20, value: 500 }] },
  wind: { keys: [{ frame: 0, value: 0, ease: 'hold' }, { frame: 7, value: 80 }] },
  offset: { keys: [{ frame: 2, value: [50, 50] }, { frame: 12, value: [20.5, 80] }] },
  color: { keys: [{ frame: 0, value: [255, 0, 8] }, { frame: 30, value: [1, 200, 90] }] },
};
// Between tangents and cosines of two C libraries lies a last digit here and there; 15.9 degrees is such a place.
const tangents = { flakes: 20000, spread: 15.9, 'stochastic-wiggle': 0, 'wiggle/amount': 90 };

const usual = {
  width: 203, height: 117, seed: 7, blank: false, frame: 10, fps: '24', shutter: 180, reduction: 1, depth: 8, pixelAspect: 1,
};
const looks = [
  ...[8, 9, 10, 11].map((frame) => ({ frame, parameters: keyed })), // each continues the sums of the one before
  { frame: 12, parameters: { ...keyed, speed: 30 } }, // and this one must not
  { frame: 250000, fps: '60', parameters: keyed },
  { frame: -3, fps: '24000/1001', shutter: 360, parameters: keyed, pixelAspect: 1.5 },
  { blank: true, parameters: { flakes: 5000, 'composite-with-original': 0 }, reduction: 2 },
  { parameters: { flakes: 0 } },
  { parameters: tangents, frame: 500 },
  { width: 960, height: 540, parameters: { ...tangents, spread: 12.32 }, frame: 100000 },
  ...Array.from({ length: 24 }, (_, i) => {
    const random = numbers(100 + i);
    return {
      parameters: randomParameters(random), seed: i, width: 1 + (random() >>> 23), height: 1 + (random() >>> 24),
      frame: random() >>> 20, fps: ['24', '25', '30000/1001', '12.5'][i % 4], reduction: [1, 2, 4][i % 3],
    };
  }),
];

test('frames are those of the host library', async (t) => {
  const cases = looks.flatMap((look) =>
    [8, 16, 32].flatMap((depth) => [false, true].map((isPlain) => ({ ...usual, ...look, depth, isPlain }))));
  const folder = mkdtempSync(join(tmpdir(), 'vintrel-web-'));
  t.after(() => rmSync(folder, { recursive: true }));
  const given = cases.map(({ parameters, ...rest }) => ({ ...rest, scene: engine.writeScene({ parameters }) }));
  writeFileSync(join(folder, 'cases.json'), JSON.stringify(given));
  execFileSync(process.env.VINTREL_REFERENCE, [join(folder, 'cases.json'), join(folder, 'frames')]);
  const expected = readFileSync(join(folder, 'frames'));

  const wrong = [];
  let at = 0;
  for (const { isPlain, parameters, ...one } of cases) {
    const plate = { ...plateOf(one), pixelAspect: one.pixelAspect };
    const { data } = (isPlain ? plainEngine : engine).render({ ...one, plate, parameters });
    const bytes = Buffer.from(data.buffer);
    if (!bytes.equals(expected.subarray(at, at + bytes.length))) {
      const first = bytes.findIndex((byte, i) => byte !== expected[at + i]);
      wrong.push(`${JSON.stringify({ ...one, isPlain, parameters })}: from byte ${first} on`);
    }
    at += bytes.length;
  }
  assert.equal(at, expected.length);
  assert.equal(wrong.length, 0, `${wrong.length} of ${cases.length} frames differ:\n${wrong.slice(0, 4).join('\n')}`);
});

test('the plain engine draws plainly', () => {
  const roots = (one, flakes) => {
    const before = one.rootsAsked;
    one.render({ plate: { blank: true, width: 64, height: 64 }, parameters: { flakes } });
    return one.rootsAsked - before;
  };
  assert.ok(roots(plainEngine, 2000) - roots(plainEngine, 1000) > 500);
  assert.equal(roots(engine, 2000), 0);
});
