// What the page keeps and how it changes: undo, keys, the time that is shown, and where a picture stands.

import assert from 'node:assert/strict';
import test from 'node:test';
import { createCost } from '../../../web/page/preview/cost.js';
import { createActions } from '../../../web/page/state/actions.js';
import { keyAt, valueAt, withKey, withMovedKey, withoutKey } from '../../../web/page/state/course.js';
import { arrange } from '../../../web/page/state/declarations.js';
import { selectedKey } from '../../../web/page/state/selection.js';
import { createStore, kInitialState } from '../../../web/page/state/store.js';
import { spanOf } from '../../../web/page/state/time_span.js';
import { placeOf, zoomedAt } from '../../../web/page/views/stage_zoom.js';

test('a drag is one step, where one looks is none, and steps go back and forth', () => {
  const store = createStore();
  const put = (value, merge) =>
    store.update((state) => ({ ...state, parameters: { flakes: value } }), { label: `${value}`, merge });
  put(1, 'drag 1');
  put(2, 'drag 1');
  put(3, 'drag 2');
  store.update((state) => ({ ...state, view: { zoom: 2 }, time: { ...state.time, frame: 50 } }));
  assert.equal(store.undo(), '3');
  assert.deepEqual(store.state.parameters, { flakes: 2 });
  assert.deepEqual([store.state.time.frame, store.state.view.zoom], [50, 2]);
  store.undo();
  assert.deepEqual([store.state.parameters, store.undo()], [{}, undefined]);
  store.redo();
  put(4);
  assert.deepEqual([store.redo(), store.undo(), store.state.parameters.flakes], [undefined, '4', 2]);
  assert.throws(() => {
    store.state.parameters.flakes = 5;
  }, TypeError);
});

test('keys are added, moved and removed in order, and lead on by their ease', () => {
  let course = withKey(withKey(10, 0, 0, 'linear'), 20, 100);
  assert.equal(keyAt(course, 20).ease, 'linear', 'as the key before');
  course = withKey(course, 10, 80, 'hold');
  assert.deepEqual([-5, 0, 5, 10, 15, 20, 99].map((frame) => valueAt(course, frame)), [0, 0, 40, 80, 80, 100, 100]);
  assert.equal(valueAt(withKey(course, 0, 0, 'smooth'), 2.5), 80 * (0.25 ** 2 * 2.5));
  assert.deepEqual(withMovedKey(course, 0, 20).keys.map(({ frame, value }) => [frame, value]), [[10, 80], [20, 0]]);
  assert.equal([0, 10, 20].reduce(withoutKey, course), 100, 'the last key leaves its value behind');
  assert.deepEqual(valueAt({ keys: [{ frame: 0, value: [0, 10], ease: 'linear' }, { frame: 2, value: [4, 30] }] }, 1), [2, 20]);
});

test('of a long clip a part is shown, which the playhead does not leave', () => {
  const store = createStore({ ...kInitialState, time: { ...kInitialState.time, last: 5000 } });
  const actions = createActions(store, arrange([]));
  const span = () => spanOf(store.state);
  actions.setFrame(1000);
  actions.zoomTime(10, 1000);
  assert.deepEqual([span().last - span().first, span().first], [500, 900]);
  actions.panTime(100);
  assert.equal(span().last, 5000, 'not beyond the end');
  actions.setFrame(1200);
  assert.equal(span().first, 1200, 'pushed');
  actions.setView({ playing: true });
  actions.setFrame(1800);
  assert.ok(span().first < 1800 && span().last > 2200, 'the page is turned');
  actions.zoomTime(1e9, 1800);
  assert.equal(span().last - span().first, 8);
  actions.setTime({ first: 10, last: 12 });
  assert.deepEqual(span(), { first: 10, last: 12 });
  actions.zoomTime(1e-9);
  assert.equal(store.state.view.span, undefined);
});

test('every key is reached from its neighbour, and a key that is made is the selected one', () => {
  const list = ['size', 'wind'].map((slug) => ({ slug, type: 'slider', default: 0 }));
  const store = createStore();
  const actions = createActions(store, arrange(list));
  for (const [slug, frame] of [['wind', 0], ['size', 20], ['wind', 20], ['wind', 50]]) {
    actions.setFrame(frame);
    actions.toggleKey(slug);
  }
  actions.setFrame(80);
  actions.setValue('size', 7);
  const selected = () => selectedKey(store.state) && [store.state.view.key.slug, store.state.view.key.frame];
  const walk = (step) => {
    actions.selectNeighbour(step);
    return selected();
  };
  assert.deepEqual(selected(), ['size', 80]);
  assert.deepEqual([walk(-1), walk(-1), walk(-1), walk(-1)], [['wind', 50], ['wind', 20], ['size', 20], ['wind', 0]]);
  actions.setFrame(20);
  assert.equal(selected(), undefined, 'the playhead has left it');
  assert.deepEqual([walk(1), walk(1)], [['size', 20], ['wind', 20]]);
  actions.moveKey('wind', 20, 30, { takesPlayhead: true });
  assert.deepEqual([selected(), actions.canMoveKey('wind', 50), actions.canMoveKey('wind', 40)], [['wind', 30], false, true]);
});

test('the point under the pointer stays there while zooming', () => {
  const picture = { width: 1920, height: 1080, pixelAspect: 2 };
  const stage = { width: 800, height: 600 };
  const point = { x: 500, y: 320 };
  const share = (place) => [(point.x - place.left) / place.width, (point.y - place.top) / place.height];
  let place = placeOf({ zoom: 1 }, picture, stage, 1);
  const before = share(place);
  place = placeOf(zoomedAt(3, point, place, picture, stage), picture, stage, 1);
  share(place).forEach((part, i) => assert.ok(Math.abs(part - before[i]) < 1e-9));
  const fit = placeOf({}, picture, stage, 2);
  assert.ok(fit.left >= 0 && fit.left + fit.width <= 800 && Math.abs(fit.width / fit.height - 3840 / 1080) < 1e-9);
});

test('a reduction is chosen by what frames cost, and does not go back and forth', () => {
  const cost = createCost();
  assert.equal(cost.reductionFor(1), 1, 'nothing is known yet');
  [40, 40, 900].forEach((milliseconds) => cost.note(1, milliseconds));
  assert.deepEqual([50, 20, 5].map((time) => cost.reductionFor(time)), [1, 2, 4]);
  assert.deepEqual([cost.reductionFor(45, 2), cost.reductionFor(80, 2)], [2, 1]);
});
