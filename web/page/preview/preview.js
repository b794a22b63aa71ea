// The frame at the playhead: reduced while something is dragged, full when it is let go.
//
// Of the pictures that a drag asks for, only the newest is worth rendering: one is under way, one waits, and the one
// that waits is always the last.  Playback (player.js) takes over while it runs.

import { lookText, renderOn, requestFor } from './shot.js';

// A picture that comes within this time keeps up with a hand; only slower looks are reduced.
const kDragMilliseconds = 20;

/**
 * `show({image, reduction, frame, look})` gets each picture, `fail(error)` what went wrong.  The cache is shared with
 * playback.  `refresh()` is called whenever the state changed.
 */
export function createPreview({ store, pool, library, cache, cost, show, fail }) {
  let shown = '';
  let underWay;
  let controller;
  let asked = 0;

  async function refresh() {
    const turn = ++asked;
    const { state } = store;
    if (state.view.playing) {
      controller?.abort();
      shown = '';
      return;
    }
    let source;
    try {
      source = await library.load(state.plate);
    } catch (error) {
      fail(error);
      return;
    }
    if (turn !== asked) {
      return;
    }
    const isDrag = Boolean(state.view.dragging);
    const request = requestFor(state, source, isDrag ? cost.reductionFor(kDragMilliseconds) : 1);
    const { frame } = state.time;
    const look = lookText(request);
    const wanted = `${look} ${frame}`;
    if (wanted === shown || wanted === underWay?.wanted) {
      return;
    }
    const cached = cache.look === look && cache.get(frame);
    if (cached) {
      controller?.abort();
      shown = wanted;
      show({ image: cached, reduction: request.reduction, frame, look });
      return;
    }
    if (underWay) {
      controller.abort(); // of use only while it waits; it asks again when it is done
      return;
    }
    render({ request, frame, look, wanted });
  }

  async function render({ request, frame, look, wanted }) {
    controller = new AbortController();
    underWay = { wanted };
    try {
      const image = await renderOn(pool, request, frame, { signal: controller.signal, priority: 2 });
      cost.note(request.reduction, image.milliseconds);
      if (!store.state.view.playing) {
        shown = wanted;
        if (request.reduction === 1) {
          cache.use(look);
          cache.put(look, frame, image);
        }
        show({ image, reduction: request.reduction, frame, look });
      }
    } catch (error) {
      if (error.name !== 'AbortError') {
        shown = wanted;
        fail(error);
      }
    }
    underWay = undefined;
    refresh();
  }

  return { refresh };
}
