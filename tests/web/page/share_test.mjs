// Links, scenes and command lines hold a state whole, and take nothing that is not one.

import assert from 'node:assert/strict';
import test from 'node:test';

import { commandOf, quoted } from '../../../web/page/share/command.js';
import { hashToState, stateToHash } from '../../../web/page/share/link.js';
import { parseRate } from '../../../web/page/share/rate.js';
import { stateOfScene } from '../../../web/page/share/scene.js';

const slider = { type: 'slider', animatable: true, validMin: -10000, validMax: 10000, default: 3 };
const kDeclarations = [
  { ...slider, slug: 'wind', displayName: 'Wind' },
  { type: 'group', slug: 'wiggle', displayName: 'Wiggle' },
  { ...slider, slug: 'wiggle/amount', displayName: 'Amount' },
  { type: 'groupEnd', slug: '' },
  { ...slider, slug: 'spread', displayName: 'Spread', animatable: false },
  { ...slider, slug: 'seed', displayName: 'Seed', type: 'integer', validMin: 0 },
  { type: 'checkbox', slug: 'stay', displayName: 'Stay', animatable: true, default: 1 },
  {
    type: 'popup',
    slug: 'mode',
    displayName: 'Mode',
    animatable: true,
    default: 2,
    choices: ['Laid Over', 'Hues', 'Hue'],
  },
  { type: 'color', slug: 'color', displayName: 'Color', animatable: true, default: [255, 255, 255] },
  {
    type: 'point',
    slug: 'offset',
    displayName: 'Offset',
    animatable: true,
    restrictedToLayer: false,
    default: [50, 50],
  },
];
const kTime = { frame: 60, first: 0, last: 119, fps: '24', shutter: 180, loop: true };

const key = (frame, value, ease = 'linear') => ({ frame, value, ease });
const stateWith = (parameters, time = kTime) => ({ plate: { kind: 'shipped', name: 'street' }, parameters, time });

const kFullState = stateWith(
  {
    wind: { keys: [key(-10, -1e-7, 'smooth'), key(0.5, 1 / 3), key(90, 9999.5, 'hold')] },
    'wiggle/amount': 0.1,
    spread: -7,
    seed: 42,
    stay: { keys: [key(0, 1, 'hold'), key(5, 0, 'hold')] },
    mode: { keys: [key(0, 2), key(1, 3, 'smooth'), key(2, 3, 'hold'), key(3, 1)] },
    color: { keys: [key(0, [1, 2, 255]), key(9, [171, 205, 239], 'smooth')] },
    offset: { keys: [key(0, [50, -20.25]), key(9, [1e-9, 300], 'hold')] },
  },
  { frame: 7, first: -10, last: 200, fps: '24000/1001', shutter: 90.5, loop: false },
);

test('a link holds a state whole', () => {
  for (const state of [
    stateWith({}),
    kFullState,
    stateWith({ wind: 0, mode: 1, color: [0, 16, 1], offset: [0, 1] }),
  ]) {
    const hash = stateToHash(state, kDeclarations);
    const { notes, ...read } = hashToState(hash, kDeclarations);
    assert.deepEqual(read, state, hash);
    assert.deepEqual(notes, []);
    assert.match(hash, /^#[\w\-.~!$&'()*+,;=:@/?]+$/, 'nothing in it that an address may not hold');
  }
  assert.equal(
    stateToHash(stateWith({ wind: 3 }), kDeclarations),
    '#v=1&plate=street&at=60',
    'defaults are left out',
  );
});

test('a link from anywhere is read as far as it goes', () => {
  assert.equal(hashToState('', kDeclarations), null);
  assert.equal(hashToState('#main', kDeclarations), null);
  const broken = [
    ...[
      'wind=10001',
      'wind=',
      'wind=0x10',
      'wind=NaN',
      'wind=0:1,0:2',
      'wind=0:1q',
      'wind=0:1:2',
      'wind=1e999:1',
      'wind',
    ],
    ...['spread=0:1', 'seed=1.5', 'seed=-1', 'stay=2', 'mode=4', 'mode=', 'color=12345', 'color=red', 'offset=1'],
    ...['offset=1,2,3', 'offset=40000,0', '__proto__=1', 'constructor=1', 'wiggle=1', 'time=9-0', 'time=a', 'fps=0'],
    ...['time=0-9999999', 'fps=24/0', 'shutter=0', 'at=1.5', 'loop=maybe', '%=1', 'blank=99999x9', 'wind=%E0%A4%A'],
  ];
  const { notes, ...read } = hashToState(`#v=1&plate=street&at=60&${broken.join('&')}&seed=7`, kDeclarations);
  assert.deepEqual(read, stateWith({ seed: 7 }));
  assert.equal(notes.length, broken.length, notes.join('\n'));
  assert.equal(hashToState(`#v=1&wind=${'1'.repeat(200_000)}`, kDeclarations).notes.length, 1);
  assert.equal(hashToState('#v=2&seed=7', kDeclarations).parameters.seed, 7, 'a newer page');
});

test('a command line says what differs, in words that the shell leaves alone', () => {
  const { line, sceneFile } = commandOf(kFullState, kDeclarations, { frames: 'all', input: "it's 1.png" });
  assert.equal(sceneFile, null);
  assert.equal(
    line,
    `vintrel render 'it'\\''s 1.png' -o snow.mp4 --frames -10-200 --fps 24000/1001 --shutter 90.5 ` +
      `--key wind@-10=-1e-7:smooth,0.5=0.3333333333333333,90=9999.5:hold --set wiggle/amount=0.1 --set spread=-7 ` +
      `--set seed=42 --key stay@0=on:hold,5=off:hold --key 'mode@0=Hues,1=Hue:smooth,2=Hue:hold,3=Laid Over' ` +
      `--key 'color@0=#0102ff,9=#abcdef:smooth' --key 'offset@0=50;-20.25,9=1e-9;300:hold'`,
  );
  assert.equal(quoted('$(rm)'), "'$(rm)'");
  const many = { keys: Array.from({ length: 300 }, (_, frame) => key(frame, frame)) };
  const long = commandOf(stateWith({ wind: many }), kDeclarations);
  assert.equal(long.line, 'vintrel render --scene snow.toml street.png -o snow.png --frames 60');
  assert.equal(long.sceneFile, 'snow.toml');
});

test('a scene says what the page can show, and what it leaves out', () => {
  const render = { input: 'plates/street.png', frames: '10-50x5,90', fps: '25', shutter: 90, proxy: 2 };
  const { plate, parameters, time, notes } = stateOfScene(
    { render, parameters: { wind: 3, seed: 7 } },
    kDeclarations,
    ['street'],
  );
  assert.deepEqual(plate, { kind: 'shipped', name: 'street' });
  assert.deepEqual(parameters, { seed: 7 });
  assert.deepEqual(time, { first: 10, last: 90, frame: 10, fps: '25', shutter: 90 });
  assert.equal(notes.length, 2);
});

test('rates are read as the tool reads them', () => {
  const cases = {
    24: 24,
    12.5: 12.5,
    23.976: 24000 / 1001,
    23.98: 24000 / 1001,
    '30000/1001': 30000 / 1001,
    59.94: 60000 / 1001,
  };
  for (const [text, perSecond] of Object.entries(cases)) {
    assert.equal(parseRate(text).perSecond, perSecond, text);
  }
  for (const text of ['', '0', '1001', '24/0', '-24', '1e2', '24.', '.5', '1.2345678']) {
    assert.equal(parseRate(text), null, text);
  }
});
