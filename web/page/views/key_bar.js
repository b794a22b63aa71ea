// What can be done with the key that is selected: how it leads on, and its removal.

import { keyAt, kEases } from '../state/course.js';
import { titleOf } from '../state/declarations.js';
import { createSegments } from './controls/choice.js';
import { h, setText } from './dom.js';
import { icon } from './icons.js';

const kEaseTitles = {
  hold: 'Stays until the next key',
  linear: 'Goes straight to the next key',
  smooth: 'Starts and ends at rest',
};

/** Returns { element, update(state) }. */
export function createKeyBar(declarations, { store, actions }) {
  const name = h('span', { class: 'key-bar-name' });
  const selected = () => store.state.view.key;
  const eases = createSegments({
    label: 'How the key leads to the next',
    segments: kEases.map((ease) => ({ id: ease, label: ease[0].toUpperCase() + ease.slice(1), title: kEaseTitles[ease] })),
    choose: (ease) => actions.setEase(selected().slug, selected().frame, ease),
  });
  const remove = h(
    'button',
    { type: 'button', class: 'icon-button', 'aria-label': 'Remove this key', title: 'Remove this key (Delete)', onclick: () => actions.removeKey(selected().slug, selected().frame) },
    icon('trash'),
  );
  const element = h('div', { class: 'key-bar', role: 'group', 'aria-label': 'Selected key', hidden: true }, name, eases.element, remove);
  return {
    element,
    update({ view, parameters }) {
      const key = view.key && keyAt(parameters[view.key.slug], view.key.frame);
      element.hidden = !key;
      if (key) {
        setText(name, `${titleOf(declarations.bySlug.get(view.key.slug))} @ ${key.frame}`);
        eases.update(key.ease ?? 'linear');
      }
    },
  };
}
