// One of a few choices side by side, or of many in a list; they count from 1.

import { titleOf } from '../../state/declarations.js';
import { h } from '../dom.js';

const kMostSideBySide = 3;

export function createChoice(declaration, { change }) {
  return declaration.choices.length <= kMostSideBySide ? sideBySide(declaration, change) : list(declaration, change);
}

function sideBySide(declaration, change) {
  const group = createSegments({
    label: titleOf(declaration),
    segments: declaration.choices.map((label, i) => ({ id: i + 1, label })),
    choose: (id) => change(id, {}),
  });
  group.element.classList.add('spread');
  return { elements: [group.element], update: group.update };
}

function list(declaration, change) {
  const select = h(
    'select',
    { class: 'field spread', 'aria-label': titleOf(declaration), onchange: () => change(Number(select.value), {}) },
    declaration.choices.map((label, i) => h('option', { value: i + 1 }, label)),
  );
  return {
    elements: [select],
    update(value, isDisabled) {
      select.value = String(value);
      select.disabled = isDisabled;
    },
  };
}

/** Buttons of which one is pressed: `segments` are { id, label, title }. Arrow keys choose, as radio buttons do. */
export function createSegments({ label, segments, choose, className = '' }) {
  const buttons = segments.map((segment) =>
    h('button', { type: 'button', role: 'radio', class: 'segment', title: segment.title, onclick: () => choose(segment.id) }, segment.label),
  );
  const element = h('div', { class: `segments ${className}`, role: 'radiogroup', 'aria-label': label, onkeydown: press }, buttons);

  function press(event) {
    const by = { ArrowRight: 1, ArrowDown: 1, ArrowLeft: -1, ArrowUp: -1 }[event.key];
    if (by) {
      event.preventDefault();
      event.stopPropagation();
      const at = (buttons.indexOf(document.activeElement) + by + buttons.length) % buttons.length;
      buttons[at].focus();
      choose(segments[at].id);
    }
  }

  return {
    element,
    update(chosen, isDisabled = false) {
      segments.forEach(({ id }, i) => {
        const isChosen = id === chosen;
        buttons[i].setAttribute('aria-checked', String(isChosen));
        buttons[i].tabIndex = isChosen ? 0 : -1;
        buttons[i].disabled = isDisabled;
      });
    },
  };
}
