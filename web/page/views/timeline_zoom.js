// What part of the clip the timeline shows: buttons, wheel and keys to zoom, and a bar to push along.

import { spanOf } from '../state/time_span.js';
import { followPointer, h, set } from './dom.js';
import { icon } from './icons.js';
import { shareOf } from './time_scale.js';

const kStep = 1.5;
const kWheelShare = 0.0025;
const kPan = 0.5; // of what is shown, for a key

/** Returns { buttons, bar, listen(body, lanes, frameAt), update(state) }; `frameAt(x)` is the frame there in the window. */
export function createTimelineZoom({ store, actions }) {
  const button = (name, label, hint, act) =>
    h('button', { type: 'button', class: 'icon-button', 'aria-label': label, title: `${label} (${hint})`, onclick: act }, icon(name));
  const out = button('minus', 'Show more of the time', 'wheel, or − on the timeline', () => actions.zoomTime(1 / kStep));
  const all = button('fit', 'Show all frames', 'F on the timeline', actions.showAllTime);
  const closer = button('plus', 'Zoom into the time', 'wheel, or + on the timeline', () => actions.zoomTime(kStep));
  const thumb = h('div', { class: 'time-thumb' });
  const bar = h('div', { class: 'time-bar', 'aria-hidden': 'true', onpointerdown: push }, thumb);

  function push(event) {
    const { width } = bar.getBoundingClientRect();
    let at = event.clientX;
    followPointer(event, (now) => {
      const { first, last } = store.state.time;
      const span = spanOf(store.state);
      actions.panTime(((now.clientX - at) / width) * ((last - first) / (span.last - span.first)));
      at = now.clientX;
    });
  }

  function press(event) {
    const act = {
      '+': () => actions.zoomTime(kStep),
      '=': () => actions.zoomTime(kStep),
      '-': () => actions.zoomTime(1 / kStep),
      f: actions.showAllTime,
      PageUp: event.shiftKey && (() => actions.panTime(-kPan)),
      PageDown: event.shiftKey && (() => actions.panTime(kPan)),
    }[event.key];
    if (act && !event.ctrlKey && !event.metaKey && !event.altKey) {
      event.preventDefault();
      event.stopPropagation();
      act();
    }
  }

  return {
    buttons: h('div', { class: 'time-zoom', role: 'group', 'aria-label': 'Zoom of the timeline' }, out, all, closer),
    bar,
    listen(body, lanes, frameAt) {
      body.addEventListener('keydown', press, { capture: true });
      body.addEventListener('wheel', (event) => {
        const isSideways = event.shiftKey || Math.abs(event.deltaX) > Math.abs(event.deltaY);
        const scrollsLanes = lanes.contains(event.target) && lanes.scrollHeight > lanes.clientHeight && !event.ctrlKey;
        if (!isSideways && scrollsLanes) {
          return;
        }
        event.preventDefault();
        if (isSideways) {
          actions.panTime((event.deltaX || event.deltaY) / bar.parentElement.clientWidth);
        } else {
          actions.zoomTime(Math.exp(-event.deltaY * kWheelShare), frameAt(event.clientX));
        }
      }, { passive: false });
    },
    update({ time, view }) {
      const { first, last } = spanOf({ time, view });
      set(out, { disabled: view.span === undefined });
      set(all, { disabled: view.span === undefined });
      bar.hidden = view.span === undefined;
      thumb.style.left = `${shareOf(first, time) * 100}%`;
      thumb.style.width = `${(shareOf(last, time) - shareOf(first, time)) * 100}%`;
    },
  };
}
