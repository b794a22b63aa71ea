// The timeline: transport, a ruler to scrub on, a bar of what is rendered ahead, and lanes of keys.

import { parseRate } from '../share/rate.js';
import { followPointer, h, set } from './dom.js';
import { createKeyBar } from './key_bar.js';
import { createLanes } from './lanes.js';
import { frameAtShare, labelledFrames, runs, shareOf } from './time_scale.js';
import { createTransport } from './transport.js';

const kLabelPixels = 70;

/** Returns { element, update(state), showCached(numbers), showRate(rate) }. */
export function createTimeline(declarations, context) {
  const { store, actions } = context;
  const transport = createTransport(context);
  const keyBar = createKeyBar(declarations, context);
  const lanes = createLanes(declarations, context);
  const ticks = h('div', { class: 'ticks', 'aria-hidden': 'true' });
  const bar = h('div', { class: 'rendered', 'aria-hidden': 'true' });
  const ruler = h(
    'div',
    { class: 'ruler', role: 'slider', tabindex: '0', 'aria-label': 'Frame', onpointerdown: scrub, onkeydown: press },
    ticks, bar,
  );
  const playhead = h('div', { class: 'playhead', 'aria-hidden': 'true' });
  const overlay = h('div', { class: 'playhead-room' }, playhead);
  const body = h('div', { class: 'timeline-body' }, h('div', { class: 'ruler-row' }, h('span', { class: 'lane-name' }), ruler), lanes.element, overlay);
  const element = h('section', { class: 'timeline', 'aria-label': 'Time' }, transport.element, keyBar.element, body);
  let drawn = '';
  let barTimer;
  new ResizeObserver(() => drawTicks(store.state.time)).observe(ruler);

  function scrub(event) {
    if (event.button !== 0) {
      return;
    }
    event.preventDefault();
    ruler.focus();
    const follow = (now) => {
      const { left, width } = ruler.getBoundingClientRect();
      actions.setFrame(frameAtShare((now.clientX - left) / width, store.state.time));
    };
    actions.setView({ dragging: true });
    follow(event);
    followPointer(event, follow, () => actions.setView({ dragging: false }));
  }

  // Left, Right, Home and End are shortcuts everywhere (shortcuts.js); a slider answers to Page keys, too.
  function press(event) {
    const by = { PageUp: -10, PageDown: 10, ArrowDown: -1, ArrowUp: 1 }[event.key];
    if (by) {
      event.preventDefault();
      event.stopPropagation();
      actions.setFrame(store.state.time.frame + by);
    }
  }

  function drawTicks(time) {
    const text = `${time.first} ${time.last} ${time.fps} ${ruler.clientWidth}`;
    if (text === drawn || ruler.clientWidth === 0) {
      return;
    }
    drawn = text;
    const frames = labelledFrames(time, ruler.clientWidth / kLabelPixels, parseRate(time.fps)?.perSecond ?? 24);
    ticks.replaceChildren(
      ...frames.map((frame) => {
        const tick = h('span', { class: 'tick' }, h('span', {}, String(frame)));
        tick.style.left = `${shareOf(frame, time) * 100}%`;
        return tick;
      }),
    );
  }

  return {
    element,
    update(state) {
      const { time } = state;
      transport.update(state);
      keyBar.update(state);
      lanes.update(state);
      drawTicks(time);
      playhead.style.left = `${shareOf(time.frame, time) * 100}%`;
      set(ruler, { 'aria-valuemin': time.first, 'aria-valuemax': time.last, 'aria-valuenow': time.frame });
    },
    /** `numbers()` are those of the frames that are ready; asked for at most once for each picture on the screen. */
    showCached(numbers) {
      barTimer ??= requestAnimationFrame(() => {
        barTimer = undefined;
        drawBar(numbers());
      });
    },
    showRate: transport.showRate,
  };

  function drawBar(numbers) {
    const { time } = store.state;
    const width = 1 / (time.last - time.first + 1);
    const within = numbers.filter((number) => number >= time.first && number <= time.last);
    bar.replaceChildren(
      ...runs(within).map(([from, to]) => {
        const run = h('span', {});
        run.style.left = `${shareOf(from, time) * 100}%`;
        run.style.width = `${Math.max(shareOf(to, time) - shareOf(from, time), width) * 100}%`;
        return run;
      }),
    );
  }
}
