// Playback: frames are rendered ahead on the pool, in the order in which they will be wanted, and shown at the clip's
// rate.  No frame is left out; when one is late the picture waits for it.

import { parseRate } from '../share/rate.js';
import { lookText, renderOn, requestFor } from './shot.js';

// Of a frame's time, what may go into rendering it where the pool shall keep up.
const kLoad = 0.85;
// Over which frames the rate that is read out is measured.
const kMeasured = 24;

/**
 * `show` as in preview.js; `onRate({shown, wanted, ready})` about twice a second.  The state says what to do:
 * view.playing, view.quality ('auto', or the reduction), time.loop.  `refresh()` is called whenever the state changed.
 */
export function createPlayer({ store, actions, pool, library, cache, cost, show, fail, onRate }) {
  let source;
  let request;
  let look;
  let timer;
  let dueAt = 0;
  let next;
  let times = [];
  const underWay = new Map();

  const period = () => 1000 / (parseRate(store.state.time.fps)?.perSecond ?? 24);
  const following = (frame) => {
    const { first, last, loop } = store.state.time;
    return frame < last ? frame + 1 : loop ? first : undefined;
  };

  function reduction() {
    const { quality = 'auto' } = store.state.view;
    return quality === 'auto' ? cost.reductionFor(period() * pool.size * kLoad, request?.reduction) : quality;
  }

  // Another look drops what was rendered for the old one and goes on at the same frame.
  function follow() {
    const now = requestFor(store.state, source, reduction());
    const text = lookText(now);
    if (text !== look) {
      request = now;
      look = text;
      stopRendering();
      cache.use(look);
    }
  }

  function stopRendering() {
    for (const controller of underWay.values()) {
      controller.abort();
    }
    underWay.clear();
  }

  function renderAhead() {
    const bytes = (source.width * source.height * 4) / request.reduction ** 2;
    const { first, last } = store.state.time;
    const room = Math.min(cache.room(bytes) - 2, last - first + 1);
    let frame = next;
    for (let ahead = 0; frame !== undefined && ahead < room && underWay.size < pool.size + 1; ++ahead) {
      if (!cache.has(frame) && !underWay.has(frame)) {
        render(frame);
      }
      frame = following(frame);
    }
  }

  async function render(frame) {
    const controller = new AbortController();
    const ofLook = look;
    const { reduction: ofReduction } = request;
    underWay.set(frame, controller);
    try {
      const image = await renderOn(pool, request, frame, { signal: controller.signal, priority: 1 });
      cost.note(ofReduction, image.milliseconds);
      cache.put(ofLook, frame, image);
    } catch (error) {
      if (error.name !== 'AbortError') {
        actions.setView({ playing: false });
        fail(error);
      }
    }
    if (underWay.get(frame) === controller) {
      underWay.delete(frame);
    }
    if (store.state.view.playing && source && ofLook === look) {
      renderAhead();
    }
  }

  function tick(now) {
    timer = requestAnimationFrame(tick);
    if (now < dueAt) {
      return;
    }
    if (next === undefined) {
      actions.setView({ playing: false });
      return;
    }
    const image = cache.get(next);
    if (!image) {
      return;
    }
    const frame = next;
    next = following(frame);
    // Displays do not refresh at the clip's rate; the debt is kept as long as it is less than a frame.
    dueAt = now - dueAt > period() ? now + period() : dueAt + period();
    measure(now);
    show({ image, reduction: request.reduction, frame, look });
    actions.setFrame(frame);
    renderAhead();
  }

  function measure(now) {
    times = [...times, now].slice(-kMeasured - 1);
    if (times.length > 2 && times.length % 2 === 1) {
      const shown = ((times.length - 1) * 1000) / (times.at(-1) - times[0]);
      onRate({ shown, wanted: 1000 / period(), ready: cache.numbers().length });
    }
  }

  async function start() {
    const { plate } = store.state;
    const isWanted = () => store.state.view.playing && timer === undefined && store.state.plate === plate;
    let loaded;
    try {
      loaded = await library.load(plate);
    } catch (error) {
      if (isWanted()) {
        actions.setView({ playing: false });
        fail(error);
      }
      return;
    }
    if (!isWanted()) {
      return;
    }
    source = loaded;
    const { frame, first, last } = store.state.time;
    next = frame >= last ? first : frame;
    look = undefined;
    times = [];
    dueAt = 0;
    follow();
    renderAhead();
    timer = requestAnimationFrame(tick);
  }

  function stop() {
    cancelAnimationFrame(timer);
    timer = undefined;
    source = undefined;
    stopRendering();
    onRate(undefined);
  }

  return {
    refresh(state, previous) {
      const { playing } = state.view;
      if (playing && timer === undefined) {
        start();
      } else if (!playing && timer !== undefined) {
        stop();
      } else if (playing && state.plate !== previous.plate) {
        stop();
        start();
      } else if (playing && source) {
        const { frame } = state.time;
        if (frame !== previous.time.frame && following(frame) !== next) {
          next = frame; // someone else moved the playhead
        }
        follow();
        renderAhead();
      }
    },
  };
}
