// The keys on a lane: buttons that are dragged or moved with the arrow keys.

import { spokenValue, titleOf } from '../state/declarations.js';
import { spanOf } from '../state/time_span.js';
import { heightOf } from './curve.js';
import { followPointer, h, set, svg } from './dom.js';
import { frameAtShare, shareOf } from './time_scale.js';

// More keys than that in sight stand so close that none can be grasped.
const kMostShown = 300;

/** Returns { element, update(course, extent, state) }; `extent` as curve.js has it, undefined where there is no height. */
export function createLaneKeys(declaration, { store, actions }) {
  const { slug } = declaration;
  const buttons = new Map(); // by frame
  const crowd = h('p', { class: 'lane-crowd muted', hidden: true });
  const element = h('div', { class: 'lane-keys' }, crowd);
  const course = () => actions.courseOf(slug);
  let drags = 0;

  function createKey(frame) {
    return h('button', {
      type: 'button', class: 'key', 'data-frame': frame,
      onfocus: (event) => actions.selectKey(slug, frameOf(event.currentTarget)),
      onpointerdown: drag,
      onkeydown: press,
    }, svg('svg', { viewBox: '0 0 12 12', 'aria-hidden': 'true' }, svg('path', { d: 'M6 1l5 5-5 5-5-5z' })));
  }

  function drag(event) {
    if (event.button !== 0) {
      return;
    }
    const button = event.currentTarget;
    const merge = `move ${slug} ${++drags}`;
    button.focus();
    followPointer(
      event,
      (now) => {
        const { left, width } = element.getBoundingClientRect();
        const to = frameAtShare((now.clientX - left) / width, spanOf(store.state));
        if (actions.canMoveKey(slug, to)) {
          move(button, to, { merge });
        }
      },
      () => {
        actions.setFrame(frameOf(button));
        store.settle();
      },
    );
  }

  function press(event) {
    const button = event.currentTarget;
    const frame = frameOf(button);
    const by = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
    if (by && !event.altKey && !event.ctrlKey) {
      const to = frame + by * (event.shiftKey ? 10 : 1);
      if (actions.canMoveKey(slug, to)) {
        move(button, to, { takesPlayhead: true, merge: `nudge ${slug}` });
      }
    } else if (by) {
      focusOn(neighbour(frame, by));
    } else if (event.key === 'Delete' || event.key === 'Backspace' || event.key === 'k') {
      const next = neighbour(frame, 1) ?? neighbour(frame, -1);
      actions.removeKey(slug, frame);
      focusOn(next);
    } else {
      return;
    }
    event.preventDefault();
    event.stopPropagation();
  }

  function neighbour(frame, step) {
    const { keys } = course();
    return keys[keys.findIndex((key) => key.frame === frame) + step]?.frame;
  }

  // It may be out of sight, and comes into it with the playhead.
  function focusOn(frame) {
    if (frame !== undefined) {
      actions.selectKey(slug, frame);
      buttons.get(frame)?.focus();
    }
  }

  // The button of a key that moves stays the same, and keeps its focus and its pointer.
  function move(button, to, options) {
    const from = frameOf(button);
    buttons.delete(from);
    buttons.set(to, button);
    button.dataset.frame = to;
    actions.moveKey(slug, from, to, options);
  }

  function show({ frame, value, ease = 'linear' }, extent, { time, view }, span) {
    if (!buttons.has(frame)) {
      buttons.set(frame, createKey(frame));
      element.append(buttons.get(frame));
    }
    const button = buttons.get(frame);
    button.style.left = `${shareOf(frame, span) * 100}%`;
    button.style.top = `${(extent ? heightOf(value, extent) : 0.5) * 100}%`;
    const isSelected = view.key?.slug === slug && view.key.frame === frame;
    const text = `${titleOf(declaration)} at frame ${frame}: ${spokenValue(declaration, value)}, ${ease}`;
    set(button, {
      'aria-label': text, title: text, 'data-ease': ease,
      class: `key${isSelected ? ' is-selected' : ''}${frame === time.frame ? ' is-here' : ''}`,
    });
  }

  return {
    element,
    update({ keys }, extent, state) {
      const span = spanOf(state);
      const inSight = keys.filter(({ frame }) => frame >= span.first && frame <= span.last);
      const isCrowd = inSight.length > kMostShown;
      const shown = isCrowd ? inSight.filter(({ frame }) => frame === state.time.frame) : inSight;
      const present = new Set(shown.map(({ frame }) => frame));
      for (const [frame, button] of buttons) {
        if (!present.has(frame)) {
          buttons.delete(frame);
          button.remove();
        }
      }
      shown.forEach((key) => show(key, extent, state, span));
      crowd.hidden = !isCrowd;
      crowd.textContent = isCrowd ? `${inSight.length} keys; zoom into the time to grasp them` : '';
    },
  };
}

const frameOf = (button) => Number(button.dataset.frame);
