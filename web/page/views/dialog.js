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
  // A click on the shade behind the dialog, and nothing that began or ended inside. As it begins is too early: the
  // browser would take the focus away again from where the closing dialog puts it.
  const isOnShade = ({ target, clientX: x, clientY: y }) => {
    const { left, right, top, bottom } = dialog.getBoundingClientRect();
    return target === dialog && (x < left || x > right || y < top || y > bottom);
  };
  let beganOnShade = false;
  dialog.addEventListener('pointerdown', (event) => {
    beganOnShade = isOnShade(event);
  });
  dialog.addEventListener('click', (event) => {
    if (beganOnShade && isOnShade(event)) {
      dialog.close();
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

/** A field for the name of a file; a form is not sent without one. */
export function fileField(attributes) {
  return h('input', { class: 'field', type: 'text', required: true, pattern: '.*\\S.*', title: 'The name of a file', spellcheck: 'false', ...attributes });
}
