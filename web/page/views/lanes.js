// The lanes of the timeline: for each parameter with keys its curve, and the keys on it.

import { isKeyed } from '../state/course.js';
import { titleOf, valueText } from '../state/declarations.js';
import { colorStrip, curvePath, extentOf, heightOf } from './curve.js';
import { followPointer, h, set, svg } from './dom.js';
import { frameAtShare, shareOf } from './time_scale.js';

/** Returns { element, update(state, previous) }. */
export function createLanes(declarations, { store, actions }) {
  const element = h('div', { class: 'lanes' });
  const lanes = new Map();
  let drags = 0;

  function createLane(declaration) {
    const isColor = declaration.type === 'color';
    const path = svg('path', { class: 'curve', d: '' });
    const drawing = isColor
      ? h('div', { class: 'lane-strip' })
      : svg('svg', { class: 'lane-curve', viewBox: '0 0 1000 100', preserveAspectRatio: 'none', 'aria-hidden': 'true' }, path);
    const keys = h('div', { class: 'lane-keys' });
    const track = h('div', { class: 'lane-track' }, drawing, keys);
    const name = h('button', { type: 'button', class: 'lane-name', title: `Show ${titleOf(declaration)} in the panel`, onclick: () => goToRow(declaration) }, titleOf(declaration));
    const lane = h('div', { class: 'lane', role: 'group', 'aria-label': `Keys of ${titleOf(declaration)}` }, name, track);
    return { declaration, isColor, path, drawing, keys, track, element: lane, buttons: new Map() };
  }

  function goToRow({ slug, group }) {
    if (group) {
      actions.setView({ open: { ...store.state.view.open, [group]: true } });
    }
    const row = document.querySelector(`.row[data-slug="${CSS.escape(slug)}"]`);
    row?.scrollIntoView({ block: 'nearest' });
    row?.querySelector('.slider, input, [role=radio][tabindex="0"]')?.focus();
  }

  function createKey(lane, frame) {
    const { slug } = lane.declaration;
    return h('button', {
      type: 'button', class: 'key', 'data-frame': frame,
      onfocus: (event) => actions.selectKey(slug, Number(event.currentTarget.dataset.frame)),
      onpointerdown: (event) => drag(event, lane),
      onkeydown: (event) => press(event, lane),
    }, svg('svg', { viewBox: '0 0 12 12', 'aria-hidden': 'true' }, svg('path', { d: 'M6 1l5 5-5 5-5-5z' })));
  }

  function drag(event, lane) {
    if (event.button !== 0) {
      return;
    }
    const { slug } = lane.declaration;
    const merge = `move ${slug} ${++drags}`;
    let frame = Number(event.currentTarget.dataset.frame);
    const button = event.currentTarget;
    button.focus();
    followPointer(
      event,
      (now) => {
        const { left, width } = lane.track.getBoundingClientRect();
        const to = frameAtShare((now.clientX - left) / width, store.state.time);
        // A key that stands in the way would be lost for good; this one goes around it.
        if (to !== frame && !lane.buttons.has(to)) {
          rename(lane, frame, to);
          actions.moveKey(slug, frame, to, { merge });
          frame = to;
        }
      },
      () => {
        actions.setFrame(frame);
        store.settle();
      },
    );
  }

  function press(event, lane) {
    const { slug } = lane.declaration;
    const frame = Number(event.currentTarget.dataset.frame);
    const frames = [...lane.buttons.keys()].sort((a, b) => a - b);
    const at = frames.indexOf(frame);
    const by = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
    if (by && !event.altKey && !event.ctrlKey) {
      const to = frame + by * (event.shiftKey ? 10 : 1);
      const { first, last } = store.state.time;
      if (!lane.buttons.has(to) && to >= first && to <= last) {
        rename(lane, frame, to);
        actions.moveKey(slug, frame, to, { merge: `nudge ${slug}` });
        actions.setFrame(to);
      }
    } else if (by) {
      lane.buttons.get(frames[at + by])?.focus();
    } else if (event.key === 'Delete' || event.key === 'Backspace' || event.key === 'k') {
      const neighbour = frames[at + 1] ?? frames[at - 1];
      actions.removeKey(slug, frame);
      lane.buttons.get(neighbour)?.focus();
    } else {
      return;
    }
    event.preventDefault();
    event.stopPropagation();
  }

  // The button of a key that moves stays the same, and keeps its focus and its pointer.
  function rename(lane, from, to) {
    const button = lane.buttons.get(from);
    lane.buttons.delete(from);
    lane.buttons.set(to, button);
    button.dataset.frame = to;
  }

  function draw(lane, course, state) {
    const { time, view } = state;
    if (lane.course !== course || lane.time !== `${time.first} ${time.last}`) {
      lane.course = course;
      lane.time = `${time.first} ${time.last}`;
      if (lane.isColor) {
        lane.drawing.style.background = colorStrip(course, time);
      } else {
        set(lane.path, { d: curvePath(course, time) });
      }
    }
    const extent = extentOf(course);
    const present = new Set(course.keys.map(({ frame }) => frame));
    for (const [frame, button] of lane.buttons) {
      if (!present.has(frame)) {
        lane.buttons.delete(frame);
        button.remove();
      }
    }
    for (const { frame, value, ease } of course.keys) {
      if (!lane.buttons.has(frame)) {
        const button = createKey(lane, frame);
        lane.buttons.set(frame, button);
        lane.keys.append(button);
      }
      const button = lane.buttons.get(frame);
      const isSelected = view.key?.slug === lane.declaration.slug && view.key.frame === frame;
      const height = lane.isColor || Array.isArray(value) ? 0.5 : heightOf(value, extent);
      button.style.left = `${shareOf(frame, time) * 100}%`;
      button.style.top = `${height * 100}%`;
      button.hidden = frame < time.first || frame > time.last;
      const text = `${titleOf(lane.declaration)} at frame ${frame}: ${valueText(lane.declaration, value)}, ${ease ?? 'linear'}`;
      set(button, { 'aria-label': text, title: text, 'data-ease': ease ?? 'linear', class: `key${isSelected ? ' is-selected' : ''}${frame === time.frame ? ' is-here' : ''}` });
    }
  }

  return {
    element,
    update(state) {
      const keyed = declarations.values.filter(({ slug }) => isKeyed(state.parameters[slug]));
      for (const [slug, lane] of lanes) {
        if (!keyed.includes(lane.declaration)) {
          lanes.delete(slug);
          lane.element.remove();
        }
      }
      keyed.forEach((declaration, i) => {
        if (!lanes.has(declaration.slug)) {
          const lane = createLane(declaration);
          lanes.set(declaration.slug, lane);
          element.insertBefore(lane.element, element.children[i] ?? null);
        }
        draw(lanes.get(declaration.slug), state.parameters[declaration.slug], state);
      });
      element.hidden = keyed.length === 0;
    },
  };
}
