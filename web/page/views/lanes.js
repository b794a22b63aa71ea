// The lanes of the timeline: for each parameter with keys its curve, and the keys on it.

import { isKeyed } from '../state/course.js';
import { titleOf } from '../state/declarations.js';
import { spanOf } from '../state/time_span.js';
import { colorStrip, curvePath, extentOf } from './curve.js';
import { h, set, svg } from './dom.js';
import { createLaneKeys } from './lane_keys.js';

/** Returns { element, update(state) }. */
export function createLanes(declarations, context) {
  const { store, actions } = context;
  const hint = h('p', { class: 'lanes-hint muted' }, 'No keys yet: the ◇ beside a parameter adds one at the playhead.');
  const element = h('div', { class: 'lanes' }, hint);
  const lanes = new Map(); // by slug

  function goToRow({ slug, group }) {
    if (group) {
      actions.setView({ open: { ...store.state.view.open, [group]: true } });
    }
    const row = document.querySelector(`.row[data-slug="${CSS.escape(slug)}"]`);
    row?.scrollIntoView({ block: 'nearest' });
    row?.querySelector('.slider, input, [role=radio][tabindex="0"]')?.focus();
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
          const lane = createLane(declaration, context, () => goToRow(declaration));
          lanes.set(declaration.slug, lane);
          element.insertBefore(lane.element, element.children[i] ?? null);
        }
        lanes.get(declaration.slug).update(state);
      });
      hint.hidden = keyed.length > 0;
    },
  };
}

/** One lane: { declaration, element, update(state) }; `goToRow()` shows the parameter's control. */
function createLane(declaration, context, goToRow) {
  const title = titleOf(declaration);
  const hasStrip = declaration.type === 'color';
  const path = svg('path', { class: 'curve', d: '' });
  const drawing = hasStrip
    ? h('div', { class: 'lane-strip' })
    : svg('svg', { class: 'lane-curve', viewBox: '0 0 1000 100', preserveAspectRatio: 'none', 'aria-hidden': 'true' }, path);
  const keys = createLaneKeys(declaration, context);
  const name = h('button', { type: 'button', class: 'lane-name', title: `Show ${title} in the panel`, onclick: goToRow }, title);
  const element = h(
    'div',
    { class: 'lane', role: 'group', 'aria-label': `Keys of ${title}` },
    name,
    h('div', { class: 'lane-track' }, drawing, keys.element),
  );
  let drawn = {};

  return {
    declaration,
    element,
    update(state) {
      const course = state.parameters[declaration.slug];
      const span = spanOf(state);
      const { first, last } = span;
      if (drawn.course !== course || drawn.first !== first || drawn.last !== last) {
        const extent = hasStrip || declaration.type === 'point' ? undefined : extentOf(course);
        drawn = { course, first, last, extent };
        if (hasStrip) {
          drawing.style.background = colorStrip(course, span);
        } else {
          set(path, { d: curvePath(course, span) });
        }
      }
      keys.update(course, drawn.extent, state);
    },
  };
}
