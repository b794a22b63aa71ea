// The looks: each a thumbnail on the visitor's own picture; the one that is on now is marked.

import { settingsText } from '../state/declarations.js';
import { h, set } from './dom.js';

/** Returns { element, showThumbnail(look, image), update(state) }. */
export function createLooks(looks, declarations, { actions }) {
  const cards = looks.map((look) => {
    const canvas = h('canvas', { width: 16, height: 9, 'aria-hidden': 'true' });
    const button = h(
      'button',
      {
        type: 'button', class: 'look', title: look.description, 'aria-pressed': 'false', 'data-look': look.id || 'default',
        onclick: () => actions.setAllParameters(look.parameters, look.name), onkeydown: walk,
      },
      h('span', { class: 'look-picture' }, canvas),
      h('span', { class: 'look-name' }, look.name),
    );
    return { look, canvas, button, text: settingsText(look.parameters, declarations) };
  });
  const list = h('div', { class: 'look-list' }, cards.map(({ button }) => button));
  const element = h('section', { class: 'looks', 'aria-label': 'Looks' }, h('h2', { class: 'looks-title' }, 'Looks'), list);

  function walk(event) {
    const by = { ArrowDown: 1, ArrowRight: 1, ArrowUp: -1, ArrowLeft: -1 }[event.key];
    if (by) {
      event.preventDefault();
      event.stopPropagation();
      const buttons = cards.map(({ button }) => button);
      buttons[(buttons.indexOf(event.currentTarget) + by + buttons.length) % buttons.length].focus();
    }
  }

  return {
    element,
    showThumbnail(look, { width, height, data }) {
      const { canvas } = cards.find((card) => card.look === look);
      set(canvas, { width, height });
      canvas.getContext('2d').putImageData(new ImageData(data, width, height), 0, 0);
    },
    update(state) {
      const now = settingsText(state.parameters, declarations);
      for (const { button, text } of cards) {
        set(button, { 'aria-pressed': String(text === now) });
      }
    },
  };
}
