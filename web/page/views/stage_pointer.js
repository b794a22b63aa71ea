// Pointers on the stage: the wheel and two fingers zoom, one pushes the picture, a double click goes between fit and 1:1.

import { pannedBy, zoomedAt } from './stage_zoom.js';

const kWheelShare = 0.0015;
const kPinchWheelShare = 0.01; // browsers tell a pinch on a touchpad as a wheel with Ctrl

/** `geometry` has the present picture, stage and place, as stage_zoom.js knows them. */
export function createStagePointer(element, { store, actions }, geometry) {
  const pointers = new Map();

  const at = ({ clientX, clientY }) => {
    const { left, top } = element.getBoundingClientRect();
    return { x: clientX - left, y: clientY - top };
  };
  const zoom = (factor, point) =>
    actions.setView(zoomedAt(factor, point, geometry.place, geometry.picture, geometry.stage));

  element.addEventListener('wheel', (event) => {
    event.preventDefault();
    zoom(Math.exp(-event.deltaY * (event.ctrlKey ? kPinchWheelShare : kWheelShare)), at(event));
  }, { passive: false });

  element.addEventListener('dblclick', (event) => {
    const isFit = (store.state.view.zoom ?? 'fit') === 'fit';
    if (isFit) {
      zoom(1 / geometry.place.zoom, at(event));
    } else {
      actions.setView({ zoom: 'fit' });
    }
  });

  element.addEventListener('pointerdown', (event) => {
    if (event.button > 1) {
      return;
    }
    element.setPointerCapture(event.pointerId);
    pointers.set(event.pointerId, at(event));
    element.classList.add('is-panning');
  });
  element.addEventListener('pointermove', (event) => {
    const before = pointers.get(event.pointerId);
    if (!before) {
      return;
    }
    const now = at(event);
    const other = [...pointers].find(([id]) => id !== event.pointerId)?.[1];
    pointers.set(event.pointerId, now);
    if (other) {
      const apart = (point) => Math.hypot(point.x - other.x, point.y - other.y);
      zoom(apart(now) / Math.max(apart(before), 1), { x: (now.x + other.x) / 2, y: (now.y + other.y) / 2 });
    } else if ((store.state.view.zoom ?? 'fit') !== 'fit') {
      actions.setView({ center: pannedBy(now.x - before.x, now.y - before.y, geometry.place, geometry.stage) });
    }
  });
  const release = (event) => {
    pointers.delete(event.pointerId);
    if (pointers.size === 0) {
      element.classList.remove('is-panning');
    }
  };
  element.addEventListener('pointerup', release);
  element.addEventListener('pointercancel', release);
}
