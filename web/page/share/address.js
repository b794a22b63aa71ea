// The look in the page's address: taken up from there, and kept there as it changes.

import { kInitialState } from '../state/store.js';
import { hashToState, stateToHash } from './link.js';

const kMilliseconds = 400; // browsers refuse an address that changes too often

/** The state to begin with; `notices` hear what of the address was left out. */
export function stateOfAddress(parameters, notices) {
  const linked = hashToState(location.hash, parameters);
  if (!linked) {
    return kInitialState;
  }
  const { notes, ...state } = linked;
  notes.forEach(notices.note);
  return { ...kInitialState, ...state, plate: state.plate ?? kInitialState.plate };
}

/** Keeps the look in the address, and takes up one that is pasted there. */
export function createAddressFollower({ store, notices }, parameters) {
  let timer;
  let written = location.hash;
  window.addEventListener('hashchange', () => {
    const linked = location.hash === written ? null : hashToState(location.hash, parameters);
    if (linked && stateToHash(store.state, parameters) !== location.hash) {
      const { plate, time, notes } = linked;
      notes.forEach(notices.note);
      store.update((state) => ({ ...state, parameters: linked.parameters, time, plate: plate ?? state.plate }), { label: 'Link' });
    }
  });
  return function follow(state, previous) {
    const isSame = ['parameters', 'time', 'plate'].every((part) => state[part] === previous[part]);
    const hasStopped = previous.view.playing;
    if (state.view.playing || (isSame && !hasStopped)) {
      return;
    }
    clearTimeout(timer);
    timer = setTimeout(() => {
      written = stateToHash(store.state, parameters);
      history.replaceState(null, '', written);
    }, kMilliseconds);
  };
}
