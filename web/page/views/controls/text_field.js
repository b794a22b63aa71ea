// A field for a typed value.  It shows the value until the visitor types; what cannot be read stays there with a word
// about it, and nothing changes.

import { h, set } from '../dom.js';

/**
 * `shown(value)` is the text at rest, `typed(value)` the text to edit; `read(text)` promises the value or throws with
 * what is wrong; `step(value, event)` gives the next value for an arrow key, where there is one.
 * `complain(text or '')` shows what is wrong.
 */
export function createTextField({ label, shown, typed = shown, read, step, change, complain, slug, className = '' }) {
  const element = h('input', {
    class: `field ${className}`, type: 'text', 'aria-label': label, autocomplete: 'off', spellcheck: 'false',
    onfocus: () => {
      element.value = typed(value);
      element.select();
    },
    onblur: () => (isDirty ? enter() : rest()),
    oninput: () => {
      isDirty = true;
    },
    onkeydown: press,
    onwheel: turn,
  });
  let value;
  let isDirty = false;

  function rest() {
    isDirty = false;
    element.removeAttribute('aria-invalid');
    complain('');
    element.value = document.activeElement === element ? typed(value) : shown(value);
  }

  // Promises whether the text still stands: the visitor may have typed on before the answer came.
  async function enter() {
    const text = element.value.trim();
    const stands = () => element.value.trim() === text;
    let next;
    try {
      next = await read(text);
    } catch (error) {
      if (stands()) {
        element.setAttribute('aria-invalid', 'true');
        complain(error.message);
      }
      return stands();
    }
    const isLast = stands();
    value = next;
    if (isLast) {
      rest();
    }
    change(next, {});
    return isLast;
  }

  function press(event) {
    if (event.key === 'Enter') {
      event.preventDefault();
      enter().then((isLast) => isLast && element.select());
    } else if (event.key === 'Escape' && (isDirty || element.hasAttribute('aria-invalid'))) {
      event.stopPropagation();
      rest();
      element.select();
    } else if (step && (event.key === 'ArrowUp' || event.key === 'ArrowDown')) {
      event.preventDefault();
      by(event.key === 'ArrowUp' ? 1 : -1, event);
    }
  }

  function turn(event) {
    if (step && document.activeElement === element) {
      event.preventDefault();
      by((event.deltaY || event.deltaX) < 0 ? 1 : -1, event);
    }
  }

  function by(direction, event) {
    const next = step(value, direction, event);
    value = next;
    rest();
    change(next, { merge: `press ${slug}` });
  }

  return {
    element,
    update(next, isDisabled) {
      value = next;
      set(element, { disabled: isDisabled });
      if (!isDirty) {
        const text = document.activeElement === element ? typed(value) : shown(value);
        if (element.value !== text) {
          element.value = text;
        }
      }
    },
  };
}
