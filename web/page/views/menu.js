// A button with a menu: arrow keys go through it, Escape and a click elsewhere close it.

import { h } from './dom.js';
import { icon } from './icons.js';

let lastId = 0;

/**
 * `items()` is asked each time the menu opens: entries are { label, hint, act, checked, disabled }, 'line', or
 * { heading }. `content` is what the button shows. Returns the wrapping element; its `button` is the button.
 */
export function menuButton({ content, label, items, className = '' }) {
  const id = `menu-${++lastId}`;
  const list = h('div', { class: 'menu', id, role: 'menu', popover: 'auto', 'aria-label': label });
  const button = h(
    'button',
    { class: `button ${className}`, type: 'button', 'aria-haspopup': 'menu', 'aria-expanded': 'false', 'aria-label': label, popovertarget: id },
    h('span', { class: 'button-text' }, ...[content].flat()),
    icon('down'),
  );
  list.addEventListener('beforetoggle', (event) => {
    button.setAttribute('aria-expanded', String(event.newState === 'open'));
    if (event.newState === 'open') {
      fill(list, items());
    }
  });
  list.addEventListener('toggle', (event) => {
    if (event.newState === 'open') {
      placeAt(list, button.getBoundingClientRect());
    }
  });
  button.addEventListener('keydown', (event) => {
    if (event.key === 'ArrowDown') {
      event.preventDefault();
      list.togglePopover(true);
    }
  });
  walkWithArrows(list);
  const wrapped = h('div', { class: 'menu-holder' }, button, list);
  wrapped.button = button;
  return wrapped;
}

/** A menu at a place of the window, for instance under the pointer; focus goes back to `opener`. */
export function showMenu(items, rectangle, opener, label) {
  const list = h('div', { class: 'menu', role: 'menu', popover: 'auto', 'aria-label': label });
  walkWithArrows(list);
  document.body.append(list);
  list.addEventListener('toggle', (event) => {
    if (event.newState === 'closed') {
      list.remove();
      opener.focus();
    }
  });
  fill(list, items);
  list.showPopover();
  placeAt(list, rectangle);
}

function fill(list, items) {
  list.replaceChildren(
    ...items.map((item) => {
      if (item === 'line') {
        return h('div', { class: 'menu-line', role: 'separator' });
      }
      if (item.heading) {
        return h('div', { class: 'menu-heading', role: 'presentation' }, item.heading);
      }
      const isChoice = item.checked !== undefined;
      return h(
        'button',
        {
          type: 'button', tabindex: '-1', class: 'menu-item',
          role: isChoice ? 'menuitemradio' : 'menuitem',
          'aria-checked': isChoice ? String(item.checked) : undefined,
          disabled: item.disabled,
          onclick: () => {
            list.hidePopover();
            item.act();
          },
        },
        h('span', { class: 'menu-mark' }, item.checked && icon('check')),
        h('span', { class: 'menu-label' }, item.label),
        item.hint && h('span', { class: 'menu-hint' }, item.hint),
      );
    }),
  );
}

// Beside the rectangle and within the window, with the focus on the first item.
function placeAt(list, { left, right, top, bottom }) {
  const margin = 8;
  const { offsetWidth: width, offsetHeight: height } = list;
  const x = left + width + margin > innerWidth ? Math.max(margin, right - width) : left;
  const below = bottom + 4 + height + margin <= innerHeight;
  list.style.left = `${x}px`;
  list.style.top = `${below ? bottom + 4 : Math.max(margin, top - 4 - height)}px`;
  list.querySelector('[role^=menuitem]:not(:disabled)')?.focus();
}

function walkWithArrows(list) {
  list.addEventListener('keydown', (event) => {
    const items = [...list.querySelectorAll('[role^=menuitem]:not(:disabled)')];
    const at = items.indexOf(document.activeElement);
    const to = { ArrowDown: at + 1, ArrowUp: at - 1, Home: 0, End: items.length - 1 }[event.key];
    if (to !== undefined) {
      event.preventDefault();
      event.stopPropagation();
      items.at(to % items.length)?.focus();
    } else if (event.key === 'Tab') {
      list.hidePopover();
    } else if (event.key.length === 1 && event.key !== ' ') {
      const letter = event.key.toLowerCase();
      const turned = [...items.slice(at + 1), ...items.slice(0, at + 1)];
      turned.find((item) => item.querySelector('.menu-label').textContent.toLowerCase().startsWith(letter))?.focus();
      event.stopPropagation();
    }
  });
}
