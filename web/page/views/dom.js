// Elements with little ado.  Texts are set as texts, never as markup.

const kSvg = 'http://www.w3.org/2000/svg';

/**
 * h('button', { class: 'icon', 'aria-label': 'Play', onclick: play }, icon('play'), 'Play')
 *
 * Names that begin with `on` are listeners, true and false set and leave out an attribute, the rest are attributes.
 */
export function h(tag, attributes = {}, ...children) {
  return furnish(document.createElement(tag), attributes, children);
}

export function svg(tag, attributes = {}, ...children) {
  return furnish(document.createElementNS(kSvg, tag), attributes, children);
}

/** Sets attributes as `h` does; undefined and false take one away. */
export function set(element, attributes) {
  for (const [name, value] of Object.entries(attributes)) {
    if (name.startsWith('on')) {
      element.addEventListener(name.slice(2), value);
    } else if (value === undefined || value === false) {
      element.removeAttribute(name);
    } else {
      const text = value === true ? '' : String(value);
      if (element.getAttribute(name) !== text) {
        element.setAttribute(name, text);
      }
    }
  }
}

export function setText(element, text) {
  if (element.textContent !== text) {
    element.textContent = text;
  }
}

/** Follows a drag that began with `event`: move(event) for each motion, end() once, also when it is cut off. */
export function followPointer(event, move, end = () => {}) {
  const target = event.currentTarget;
  target.setPointerCapture(event.pointerId);
  const listening = new AbortController();
  const options = { signal: listening.signal };
  const over = () => {
    listening.abort();
    end();
  };
  target.addEventListener('pointermove', move, options);
  target.addEventListener('pointerup', over, options);
  target.addEventListener('pointercancel', over, options);
  target.addEventListener('lostpointercapture', over, options);
}

function furnish(element, attributes, children) {
  set(element, attributes);
  element.append(...children.flat().filter((child) => child !== undefined && child !== null && child !== false));
  return element;
}
