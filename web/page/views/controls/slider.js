// A slider whose fill is its value.  Its travel is narrower than what may be typed; a value beyond the travel shows as
// full or empty with a mark at that end.

import { fitted, numberText, stepFor, stepOf, titleOf } from '../../state/declarations.js';
import { followPointer, h, set } from '../dom.js';

const kFineShare = 0.1;

/**
 * `change(value, { merge })` hears of each new value, `drag(isOn)` of the beginning and the end of a drag.
 * Returns { element, update(value, isDisabled) }.
 */
export function createSlider(declaration, { change, drag, reset }) {
  const { sliderMin, sliderMax } = declaration;
  const fill = h('div', { class: 'slider-fill' });
  const element = h(
    'div',
    {
      class: 'slider', role: 'slider', tabindex: '0',
      'aria-label': titleOf(declaration), 'aria-valuemin': declaration.validMin, 'aria-valuemax': declaration.validMax,
      onpointerdown: begin, onkeydown: press, onwheel: turn, ondblclick: reset,
    },
    fill,
  );
  let value = declaration.default;
  let isDisabled = false;
  let drags = 0;

  // Moves by what the pointer moved, so that fine drags (Alt or Ctrl) can go on from coarse ones.
  function begin(event) {
    if (isDisabled || event.button !== 0) {
      return;
    }
    event.preventDefault();
    element.focus();
    const { left, width } = element.getBoundingClientRect();
    const merge = `drag ${declaration.slug} ${++drags}`;
    let at = event.clientX;
    let exact = sliderMin + ((at - left) / width) * (sliderMax - sliderMin);
    const follow = (now) => {
      const isFine = now.altKey || now.ctrlKey;
      exact += ((now.clientX - at) / width) * (sliderMax - sliderMin) * (isFine ? kFineShare : 1);
      at = now.clientX;
      const onTravel = Math.min(Math.max(exact, sliderMin), sliderMax);
      const coarse = stepOf(declaration) * 10;
      change(fitted(declaration, now.shiftKey ? Math.round(onTravel / coarse) * coarse : onTravel), { merge });
    };
    drag(true);
    follow(event);
    followPointer(event, follow, () => drag(false));
  }

  function press(event) {
    const step = stepFor(declaration, event);
    const to = {
      ArrowRight: value + step,
      ArrowUp: value + step,
      ArrowLeft: value - step,
      ArrowDown: value - step,
      PageUp: value + stepOf(declaration) * 10,
      PageDown: value - stepOf(declaration) * 10,
      Home: sliderMin,
      End: sliderMax,
    }[event.key];
    if (to !== undefined && !isDisabled) {
      event.preventDefault();
      event.stopPropagation();
      change(fitted(declaration, to), { merge: `press ${declaration.slug}` });
    }
  }

  // Only where the visitor is at work: elsewhere the wheel scrolls.
  function turn(event) {
    if (document.activeElement !== element || isDisabled) {
      return;
    }
    event.preventDefault();
    const direction = (event.deltaY || event.deltaX) < 0 ? 1 : -1;
    change(fitted(declaration, value + direction * stepFor(declaration, event)), { merge: `press ${declaration.slug}` });
  }

  return {
    element,
    update(nextValue, nextDisabled) {
      value = nextValue;
      isDisabled = nextDisabled;
      const share = (value - sliderMin) / (sliderMax - sliderMin);
      fill.style.width = `${Math.min(Math.max(share, 0), 1) * 100}%`;
      element.classList.toggle('beyond-end', share > 1);
      element.classList.toggle('beyond-start', share < 0);
      set(element, {
        'aria-valuenow': value,
        'aria-valuetext': numberText(declaration, value),
        'aria-disabled': isDisabled ? 'true' : undefined,
        tabindex: isDisabled ? '-1' : '0',
      });
    },
  };
}
