// Which key is selected: the one that was chosen, while the playhead is on it.

import { isKeyed, keyAt } from './course.js';

/** { slug, frame, key }, or undefined. */
export function selectedKey({ view, parameters, time }) {
  const { slug, frame } = view.key ?? {};
  const key = slug !== undefined && frame === time.frame ? keyAt(parameters[slug], frame) : undefined;
  return key && { slug, frame, key };
}

/**
 * The key before (step -1) or after (step 1) the selected one, or else the playhead: { slug, frame }, or undefined.
 * Keys of one frame follow each other in the order declared, so that all are reached.
 */
export function neighbouringKey(state, { values }, step) {
  const selected = selectedKey(state);
  const here = selected
    ? { frame: selected.frame, order: values.findIndex(({ slug }) => slug === selected.slug) }
    : { frame: state.time.frame, order: step < 0 ? Infinity : -1 };
  const along = (one, other) => step * (one.frame - other.frame || one.order - other.order);
  let nearest;
  values.forEach(({ slug }, order) => {
    const course = state.parameters[slug];
    for (const { frame } of isKeyed(course) ? course.keys : []) {
      const key = { slug, frame, order };
      if (along(key, here) > 0 && !(nearest && along(key, nearest) >= 0)) {
        nearest = key;
      }
    }
  });
  return nearest && { slug: nearest.slug, frame: nearest.frame };
}
