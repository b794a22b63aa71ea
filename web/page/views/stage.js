// The picture: the plate and the snow on it, one over the other, with zoom, pan and the wipe line.

import { followPointer, h, set, setText } from './dom.js';
import { createPointHandles } from './point_handle.js';
import { createStagePointer } from './stage_pointer.js';
import { placeOf, zoomedAt } from './stage_zoom.js';

const kWipeStep = 0.01;

/** Returns { element, showFrame(frame), showPlate(plate), setSize(picture), update(state, previous), zoomBy(factor), zoomText }. */
export function createStage(context, declarations) {
  const { store, actions } = context;
  const plateCanvas = h('canvas', { class: 'canvas' });
  const frameCanvas = h('canvas', { class: 'canvas' });
  const wipe = h('div', {
    class: 'wipe', role: 'slider', tabindex: '0', 'aria-label': 'Wipe line: plate at the left, snow at the right',
    'aria-valuemin': 0, 'aria-valuemax': 100, onpointerdown: dragWipe, onkeydown: pressWipe,
  });
  const handles = createPointHandles(context, declarations);
  const picture = h('div', { class: 'picture', role: 'img' }, plateCanvas, frameCanvas);
  const over = h('div', { class: 'picture-over' }, wipe, handles.element);
  const badge = h('div', { class: 'badge', role: 'status', 'aria-live': 'off' });
  const empty = h('div', { class: 'stage-wait' }, 'Loading…');
  const element = h('section', { class: 'stage', 'aria-label': 'Picture', tabindex: '-1' }, picture, over, empty, badge);

  let size = { width: 1920, height: 1080, pixelAspect: 1 };
  let box = { width: 1, height: 1 };
  let place;

  const observer = new ResizeObserver(() => {
    box = { width: element.clientWidth, height: element.clientHeight };
    lay(store.state);
  });
  observer.observe(element);

  const geometry = {
    get picture() {
      return size;
    },
    get stage() {
      return box;
    },
    get place() {
      return place;
    },
  };
  createStagePointer(element, context, geometry);

  function lay({ view }) {
    place = placeOf(view, size, box, devicePixelRatio);
    for (const layer of [picture, over]) {
      layer.style.left = `${place.left}px`;
      layer.style.top = `${place.top}px`;
      layer.style.width = `${place.width}px`;
      layer.style.height = `${place.height}px`;
    }
    picture.classList.toggle('is-pixelated', place.zoom >= 2);
    element.classList.toggle('can-pan', place.width > box.width || place.height > box.height);
    element.dataset.zoom = `${Math.round(place.zoom * 100)} %`;
  }

  function dragWipe(event) {
    event.preventDefault();
    event.stopPropagation();
    wipe.focus();
    followPointer(event, (now) => {
      const { left, width } = over.getBoundingClientRect();
      actions.setView({ wipe: Math.min(Math.max((now.clientX - left) / width, 0), 1) });
    });
  }

  function pressWipe(event) {
    const { wipe: share = 0.5 } = store.state.view;
    const step = kWipeStep * (event.shiftKey ? 10 : 1);
    const to = { ArrowRight: share + step, ArrowLeft: share - step, Home: 0, End: 1 }[event.key];
    if (to !== undefined) {
      event.preventDefault();
      event.stopPropagation();
      actions.setView({ wipe: Math.min(Math.max(to, 0), 1) });
    }
  }

  function showLayers({ view }) {
    const show = view.holdPlate ? 'plate' : (view.show ?? 'result');
    const share = view.wipe ?? 0.5;
    plateCanvas.hidden = show === 'result' || show === 'snow';
    frameCanvas.hidden = show === 'plate';
    frameCanvas.style.clipPath = show === 'wipe' ? `inset(0 0 0 ${share * 100}%)` : '';
    // Plate and frame may both be transparent: under the snow's side the plate must not show through.
    plateCanvas.style.clipPath = show === 'wipe' ? `inset(0 ${(1 - share) * 100}% 0 0)` : '';
    wipe.hidden = show !== 'wipe';
    wipe.style.left = `${share * 100}%`;
    set(wipe, { 'aria-valuenow': Math.round(share * 100) });
    picture.setAttribute('aria-label', show === 'plate' ? 'The plate' : 'Snow on the plate');
  }

  return {
    element,
    /** { image, reduction, frame } from preview or player. */
    showFrame({ image, reduction, frame }) {
      draw(frameCanvas, image);
      empty.hidden = true;
      const extent = reduction === 1 ? 'full size' : `reduced to 1/${reduction}`;
      setText(badge, `${extent} · ${image.milliseconds.toFixed(1)} ms`);
      badge.classList.toggle('is-reduced', reduction !== 1);
      set(element, { 'data-frame': frame, 'data-reduction': reduction });
    },
    showPlate(plate) {
      if (plate.blank) {
        set(plateCanvas, { width: 1, height: 1 });
      } else {
        draw(plateCanvas, plate);
      }
    },
    /** The size of the picture at hand, with its pixels' aspect. */
    setSize({ width, height, pixelAspect }) {
      size = { width, height, pixelAspect };
      lay(store.state);
    },
    update(state, previous) {
      if (state.view !== previous.view) {
        lay(state);
        showLayers(state);
      }
      handles.update(state);
    },
    zoomBy(factor) {
      actions.setView(zoomedAt(factor, { x: box.width / 2, y: box.height / 2 }, place, size, box));
    },
    get zoomText() {
      return element.dataset.zoom;
    },
  };
}

function draw(canvas, { width, height, data }) {
  if (canvas.width !== width || canvas.height !== height) {
    canvas.width = width;
    canvas.height = height;
  }
  canvas.getContext('2d').putImageData(new ImageData(data, width, height), 0, 0);
}
