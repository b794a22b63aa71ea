// One parameter: the diamond of its keys, its name, its control, and the way back to its default.

import { isKeyed, keyAt, valueAt } from '../state/course.js';
import { spokenValue, titleOf } from '../state/declarations.js';
import { createChoice } from './controls/choice.js';
import { createColor } from './controls/color.js';
import { createNumber } from './controls/number.js';
import { createPoint } from './controls/point.js';
import { createToggle } from './controls/toggle.js';
import { h, set, svg } from './dom.js';
import { icon } from './icons.js';
import { showMenu } from './menu.js';

const kControls = {
  slider: createNumber,
  integer: createNumber,
  checkbox: createToggle,
  popup: createChoice,
  color: createColor,
  point: createPoint,
};

/** Returns { element, title, update(state, isDisabled) }. */
export function createParameterRow(declaration, { actions, store, pool }) {
  const { slug, animatable } = declaration;
  const title = titleOf(declaration);
  const trouble = h('div', { class: 'row-trouble', role: 'alert' });
  const control = kControls[declaration.type](declaration, {
    change: (value, options) => actions.setValue(slug, value, options),
    drag: (dragging) => {
      actions.setView({ dragging });
      if (!dragging) {
        store.settle();
      }
    },
    reset: () => actions.reset(slug),
    parse: (...question) => pool.parse(...question),
    complain: (text) => {
      trouble.textContent = text;
    },
  });
  const diamond = animatable
    ? h('button', { type: 'button', class: 'diamond', onclick: () => actions.toggleKey(slug) }, createDiamond())
    : h('span', { class: 'diamond' });
  const back = h(
    'button',
    { type: 'button', class: 'row-reset', title: `Reset ${title}`, 'aria-label': `Reset ${title}`, onclick: () => actions.reset(slug) },
    icon('reset'),
  );
  const element = h(
    'div',
    { class: `row row-${declaration.type}`, role: 'group', 'aria-label': title, 'data-slug': slug, oncontextmenu: openMenu, onkeydown: press },
    diamond,
    h('span', { class: 'row-name', title: `${title} (${slug})`, ondblclick: () => actions.reset(slug) }, title),
    h('div', { class: 'row-control' }, control.elements),
    back,
    trouble,
  );

  let shown = {};

  function openMenu(event) {
    if (event.target.matches('input[type=text]')) {
      return; // the browser's own menu has the clipboard
    }
    event.preventDefault();
    const isByKey = event.clientX === 0 && event.clientY === 0;
    const { clientX: x, clientY: y } = event;
    const rectangle = isByKey ? element.getBoundingClientRect() : { left: x, right: x, top: y, bottom: y };
    showMenu(menuItems(), rectangle, event.target.closest('[tabindex], button, input') ?? diamond, title);
  }

  function menuItems() {
    const course = actions.courseOf(slug);
    const { frame } = store.state.time;
    const items = [{ label: 'Reset', hint: 'R', act: () => actions.reset(slug), disabled: !actions.isSet(slug) }];
    if (animatable) {
      items.push(
        'line',
        { label: keyAt(course, frame) ? 'Remove key' : 'Add key', hint: 'K', act: () => actions.toggleKey(slug) },
        { label: 'Previous key', act: () => actions.goToKey(-1, slug), disabled: !isKeyed(course) },
        { label: 'Next key', act: () => actions.goToKey(1, slug), disabled: !isKeyed(course) },
        { label: 'Remove all keys', act: () => actions.removeAllKeys(slug), disabled: !isKeyed(course) },
      );
    }
    return items;
  }

  function press(event) {
    if (event.target.matches('input[type=text]') || event.ctrlKey || event.metaKey || event.altKey) {
      return;
    }
    const key = event.key.toLowerCase();
    if (key === 'k' && animatable) {
      actions.toggleKey(slug);
    } else if (key === 'r') {
      actions.reset(slug);
    } else {
      return;
    }
    event.preventDefault();
    event.stopPropagation();
  }

  return {
    element,
    title,
    update(state, isDisabled) {
      const course = state.parameters[slug] ?? declaration.default;
      const { frame } = state.time;
      const key = isKeyed(course) ? frame : undefined;
      if (course === shown.course && key === shown.key && isDisabled === shown.isDisabled) {
        return;
      }
      shown = { course, key, isDisabled };
      const value = valueAt(course, frame);
      control.update(value, isDisabled);
      element.classList.toggle('is-set', slug in state.parameters);
      element.classList.toggle('is-disabled', isDisabled);
      set(back, { tabindex: slug in state.parameters ? '0' : '-1', disabled: !(slug in state.parameters) });
      if (animatable) {
        const here = keyAt(course, frame) !== undefined;
        const kind = here ? 'full' : isKeyed(course) ? 'half' : 'hollow';
        set(diamond, {
          'data-keys': kind,
          'aria-pressed': String(here),
          'aria-label': `Key of ${title} here`,
          title: here ? 'Remove the key here' : `Add a key here: ${spokenValue(declaration, value)}`,
        });
      }
    },
  };
}

function createDiamond() {
  return svg(
    'svg',
    { viewBox: '0 0 12 12', 'aria-hidden': 'true' },
    svg('path', { class: 'diamond-half', d: 'M6 1l5 5H1z' }),
    svg('path', { class: 'diamond-line', d: 'M6 1l5 5-5 5-5-5z' }),
  );
}
