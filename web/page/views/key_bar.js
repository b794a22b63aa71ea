// What can be done with the key that is selected: its frame, how it leads on, its removal, the way to the ones beside it.

import { isKeyed, kEases } from '../state/course.js';
import { titleOf } from '../state/declarations.js';
import { neighbouringKey, selectedKey } from '../state/selection.js';
import { createSegments } from './controls/choice.js';
import { createFrameField } from './controls/frame_field.js';
import { h, set, setText } from './dom.js';
import { icon } from './icons.js';

const kEaseTitles = {
  hold: 'Stays until the next key',
  linear: 'Goes straight to the next key',
  smooth: 'Starts and ends at rest',
};

/** Returns { element, update(state) }. */
export function createKeyBar(declarations, { store, actions, notices }) {
  const name = h('span', { class: 'key-bar-name' });
  const selected = () => selectedKey(store.state);
  const button = (name, label, act, title = label) =>
    h('button', { type: 'button', class: 'icon-button', 'aria-label': label, title, onclick: act }, icon(name));
  const back = button('previous', 'Key before', () => actions.selectNeighbour(-1));
  const on = button('next', 'Key after', () => actions.selectNeighbour(1));
  // Where there are no lanes to drag it on, this is how a key is moved.
  const frame = createFrameField({
    label: 'Frame of the key', slug: 'key frame', notices,
    rule: 'it is a whole number from the first frame to the last, and no other key is there',
    fits: (number) => number === selected()?.frame || (selected() !== undefined && actions.canMoveKey(selected().slug, number)),
    change: (number, options) => {
      actions.moveKey(selected().slug, selected().frame, number, { takesPlayhead: true, ...options });
    },
  });
  const eases = createSegments({
    label: 'How the key leads to the next',
    segments: kEases.map((ease) => ({ id: ease, label: ease[0].toUpperCase() + ease.slice(1), title: kEaseTitles[ease] })),
    choose: (ease) => actions.setEase(selected().slug, selected().frame, ease),
  });
  const remove = button('trash', 'Remove this key', () => actions.removeKey(selected().slug, selected().frame), 'Remove this key (Delete)');
  const element = h('div', { class: 'key-bar', role: 'group', 'aria-label': 'Selected key', hidden: true },
    back, h('label', { class: 'key-bar-key' }, name, frame.element), eases.element, remove, on);
  return {
    element,
    update(state) {
      // In playback no key stays chosen. The bar keeps its place where it has one of its own, or the page would jump.
      const chosen = state.view.playing ? undefined : selectedKey(state);
      element.hidden = !Object.values(state.parameters).some(isKeyed);
      element.classList.toggle('is-idle', !chosen);
      setText(name, chosen ? `${titleOf(declarations.bySlug.get(chosen.slug))} at` : 'No key chosen');
      frame.element.hidden = !chosen;
      frame.update(chosen?.frame ?? '', !chosen);
      eases.update(chosen && (chosen.key.ease ?? 'linear'), !chosen);
      set(remove, { disabled: !chosen });
      set(back, { disabled: !neighbouringKey(state, declarations, -1) });
      set(on, { disabled: !neighbouringKey(state, declarations, 1) });
    },
  };
}
