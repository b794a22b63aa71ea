// The timeline: transport, a ruler to scrub on, a bar of what is rendered ahead, and lanes of keys.

import { parseRate } from '../share/rate.js';
import { spanOf } from '../state/time_span.js';
import { followPointer, h, set } from './dom.js';
import { createKeyBar } from './key_bar.js';
import { createLanes } from './lanes.js';
import { frameAtShare, labelledFrames, runs, shareOf } from './time_scale.js';
import { createTimelineZoom } from './timeline_zoom.js';
import { createTransport } from './transport.js';

const kLabelPixels = 70;

/** Returns { element, update(state), showCached(numbers), showRate(rate) }. */
export function createTimeline(declarations, context) {
  const { store, actions } = context;
  const transport = createTransport(context);
  const keyBar = createKeyBar(declarations, context);
  const lanes = createLanes(declarations, context);
  const zoom = createTimelineZoom(context);
  const ticks = h('div', { class: 'ticks', 'aria-hidden': 'true' });
  const bar = h('div', { class: 'rendered', 'aria-hidden': 'true' });
  const ruler = h(
    'div',
    { class: 'ruler', role: 'slider', tabindex: '0', 'aria-label': 'Playhead', onpointerdown: scrub, onkeydown: press },
    ticks, bar,
  );
  const playhead = h('div', { class: 'playhead', 'aria-hidden': 'true' });
  const overlay = h('div', { class: 'playhead-room' }, playhead);
  const body = h(
    'div',
    { class: 'timeline-body' },
    h('div', { class: 'ruler-row' }, zoom.buttons, h('div', { class: 'ruler-holder' }, ruler, zoom.bar)),
    lanes.element, overlay,
  );
  const element = h('section', { class: 'timeline', 'aria-label': 'Time' }, transport.element, keyBar.element, body);
  let drawn = '';
  let cached = () => [];
  let barTimer;
  zoom.listen(body, lanes.element, frameAt);
  new ResizeObserver(() => draw(store.state)).observe(ruler);

  function frameAt(x) {
    const { left, width } = ruler.getBoundingClientRect();
    return frameAtShare((x - left) / width, spanOf(store.state));
  }

  function scrub(event) {
    if (event.button !== 0) {
      return;
    }
    event.preventDefault();
    ruler.focus();
    const follow = (now) => actions.setFrame(frameAt(now.clientX));
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

  // What changes with the part of the clip that is shown, and with nothing else.
  function draw(state) {
    const { first, last } = spanOf(state);
    const { fps } = state.time;
    const text = `${first} ${last} ${fps} ${ruler.clientWidth}`;
    if (text === drawn || ruler.clientWidth === 0) {
      return;
    }
    drawn = text;
    const span = { first, last };
    const frames = labelledFrames(span, ruler.clientWidth / kLabelPixels, parseRate(fps)?.perSecond ?? 24);
    ticks.replaceChildren(
      ...frames.map((frame) => {
        const tick = h('span', { class: 'tick' }, h('span', {}, String(frame)));
        tick.style.left = `${shareOf(frame, span) * 100}%`;
        return tick;
      }),
    );
    drawBar();
  }

  return {
    element,
    update(state) {
      const { time } = state;
      transport.update(state);
      keyBar.update(state);
      lanes.update(state);
      zoom.update(state);
      draw(state);
      const share = shareOf(time.frame, spanOf(state));
      playhead.style.left = `${share * 100}%`;
      playhead.hidden = share < 0 || share > 1;
      set(ruler, { 'aria-valuemin': time.first, 'aria-valuemax': time.last, 'aria-valuenow': time.frame });
    },
    /** `numbers()` are those of the frames that are ready; asked for at most once for each picture on the screen. */
    showCached(numbers) {
      cached = numbers;
      barTimer ??= requestAnimationFrame(() => {
        barTimer = undefined;
        drawBar();
      });
    },
    showRate: transport.showRate,
  };

  function drawBar() {
    const span = spanOf(store.state);
    const width = 1 / (span.last - span.first + 1);
    const within = cached().filter((number) => number >= span.first && number <= span.last);
    bar.replaceChildren(
      ...runs(within).map(([from, to]) => {
        const run = h('span', {});
        run.style.left = `${shareOf(from, span) * 100}%`;
        run.style.width = `${Math.max(shareOf(to, span) - shareOf(from, span), width) * 100}%`;
        return run;
      }),
    );
  }
}
