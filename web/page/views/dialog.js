// Dialogs: the browser's own element keeps the focus inside, closes on Escape and gives the focus back as it closes.

import { h } from './dom.js';
import { icon } from './icons.js';

let lastId = 0;

/** Opens a dialog at once; it goes from the page when it is closed. Returns the element; `close()` closes it. */
export function openDialog({ title, content, className = '', onClose = () => {} }) {
  const id = `dialog-${++lastId}`;
  const dialog = h(
    'dialog',
    { class: `dialog ${className}`, 'aria-labelledby': id },
    h('header', {},
      h('h2', { id }, title),
      h('button', { type: 'button', class: 'icon-button', 'aria-label': 'Close', onclick: () => dialog.close() }, icon('close'))),
    h('div', { class: 'dialog-body' }, content),
  );
  dialog.addEventListener('close', () => {
    dialog.remove();
    onClose();
  });
  // A press on the shade behind the dialog, and nothing that began inside.
  dialog.addEventListener('pointerdown', (event) => {
    if (event.target === dialog) {
      const { left, right, top, bottom } = dialog.getBoundingClientRect();
      const { clientX: x, clientY: y } = event;
      if (x < left || x > right || y < top || y > bottom) {
        dialog.close();
      }
    }
  });
  document.body.append(dialog);
  dialog.showModal();
  return dialog;
}

/** Asks before something is replaced; promises true or false. */
export function confirmDialog({ title, text, act }) {
  return new Promise((resolve) => {
    let answer = false;
    const yes = h('button', { type: 'button', class: 'button primary', onclick: () => {
      answer = true;
      dialog.close();
    } }, act);
    const no = h('button', { type: 'button', class: 'button', onclick: () => dialog.close() }, 'Cancel');
    const dialog = openDialog({
      title, className: 'small', onClose: () => resolve(answer),
      content: [h('p', {}, text), h('div', { class: 'dialog-buttons' }, no, yes)],
    });
    no.focus();
  });
}
