// What the engine says of parameters and scenes, and of what it refuses.

import assert from 'node:assert/strict';
import { join } from 'node:path';
import { test } from 'node:test';
import { pathToFileURL } from 'node:url';

const { EngineError, loadEngine } = await import(pathToFileURL(join(process.env.VINTREL_WEB, 'engine/engine.js')));
const engine = await loadEngine();
const blank = { blank: true, width: 40, height: 30 };

test('a scene written and read again says the same', () => {
  const parameters = {
    flakes: 1234.5,
    speed: { keys: [{ frame: -1.5, value: 0.1, ease: 'hold' }, { frame: 1e6, value: 300, ease: 'smooth' }] },
    color: [1, 2, 255],
    offset: [-12.25, 1e-7],
    'transfer-mode': 2,
    'stochastic-wiggle': 0,
    'random-seed': 77,
  };
  const render = { input: 'a "b" \\ \u007f ü.png', fps: '24000/1001', shutter: 90, pixelAspect: 1.5, depth: '16' };
  const scene = engine.readScene(engine.writeScene({ render, parameters }), 'a.toml');
  for (const [slug, course] of Object.entries(parameters)) {
    assert.deepEqual(scene.parameters[slug], course, slug);
  }
  for (const [key, value] of Object.entries(render)) {
    assert.equal(scene.render[key], value, key);
  }
});

test('what is wrong is said in the words of the tool', () => {
  const cases = [
    [() => engine.render({ plate: blank, parameters: { flaks: 1 } }), /no parameter 'flaks' \(did you mean 'flakes'/],
    [() => engine.render({ plate: blank, parameters: { flakes: -1 } }), /^Flakes: '-1' is not possible/],
    [() => engine.render({ plate: blank, parameters: { size: NaN } }), /^Size: 'nan' is not possible/],
    [() => engine.render({ plate: blank, frame: 0.5 }), /frame 0.5/],
    [() => engine.render({ plate: blank, frame: 2e9, fps: '24000/1001' }), /frame 2000000000 is beyond/],
    [() => engine.render({ plate: blank, reduction: 3 }), /^reduction: 3 is not 1, 2 or 4/],
    [() => engine.render({ plate: { id: 'x', width: 3, height: 2, data: new Uint8Array(5) } }), /'x' needs 3 x 2/],
    [() => engine.render({ plate: { blank: true, width: 40000, height: 2 } }), /40000/],
    [() => engine.render({ plate: { blank: true, width: 32767, height: 32767 } }), /not enough memory/],
    [() => engine.readScene('[parameters]\nFlakes = "x"\n', 'a.toml'), /^a.toml:2:10: Flakes takes a number/],
    [() => engine.readScene('[render', 'b.toml'), /^b.toml:1:/],
    [() => engine.parse('wind', 'abc'), /^Wind: 'abc' is not possible/],
  ];
  for (const [task, message] of cases) {
    assert.throws(task, (error) => error instanceof EngineError && message.test(error.message), String(task));
  }
  // None of that has left anything behind.
  assert.equal(engine.render({ plate: blank }).data.length, 40 * 30 * 4);
});

test('values are read as the tool reads them, and the effect greys out what does nothing', () => {
  for (const [slug, value, text] of [['color', [255, 238, 221], '#ffeedd'], ['offset', [50, 20], '50%,20%'],
    ['stochastic-wiggle', 1, 'on'], ['size', 2.5, '2.5']]) {
    assert.deepEqual(engine.parse(slug, text), value);
  }
  assert.deepEqual(engine.disabled({ 'composite-with-original': 0 }), ['embed-depth']);
  assert.deepEqual(engine.disabled({}), []);
});

test('plates are forgotten, oldest first, and asked for again', () => {
  const data = new Uint8ClampedArray(4096 * 4096 * 4);
  for (const id of ['a', 'b', 'c', 'd', 'e']) {
    engine.render({ plate: { id, width: 4096, height: 4096, data }, reduction: 4, parameters: { flakes: 0 } });
  }
  assert.ok(engine.plates.includes('e') && !engine.plates.includes('a'));
  engine.render({ plate: { id: 'e', width: 4096, height: 4096 }, reduction: 4 });
  assert.throws(() => engine.render({ plate: { id: 'a', width: 4096, height: 4096 } }), EngineError);
});
