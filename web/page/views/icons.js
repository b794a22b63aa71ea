// Line icons on a grid of 20, drawn for the page.

import { svg } from './dom.js';

const kPaths = {
  snowflake: 'M10 1.5v17M2.6 5.75l14.8 8.5M17.4 5.75L2.6 14.25M10 4.6L7.8 2.6M10 4.6l2.2-2M10 15.4l-2.2 2M10 15.4l2.2 2M5.3 7.3L2.5 8.2M5.3 7.3L4.7 4.4M14.7 12.7l2.8-.9M14.7 12.7l.6 2.9M5.3 12.7l-2.8-.9M5.3 12.7l-.6 2.9M14.7 7.3l2.8.9M14.7 7.3l.6-2.9',
  undo: 'M4 8h8.5a4 4 0 0 1 0 8H8M4 8l3.5-3.5M4 8l3.5 3.5',
  redo: 'M16 8H7.5a4 4 0 0 0 0 8H12M16 8l-3.5-3.5M16 8l-3.5 3.5',
  first: 'M5 4.5v11M15 5L8 10l7 5z',
  back: 'M12.5 5L5.5 10l7 5zM15 5v10',
  forward: 'M7.5 5l7 5-7 5zM5 5v10',
  last: 'M15 4.5v11M5 5l7 5-7 5z',
  play: 'M6 4l10 6-10 6z',
  pause: 'M6 4.5h2.5v11H6zM11.5 4.5H14v11h-2.5z',
  loop: 'M4 9a4 4 0 0 1 4-4h8M16 5l-2.5-2.5M16 5l-2.5 2.5M16 11a4 4 0 0 1-4 4H4M4 15l2.5-2.5M4 15l2.5 2.5',
  triangle: 'M7 5l6 5-6 5z',
  down: 'M5.5 8l4.5 4.5L14.5 8',
  reset: 'M4.5 4v4h4M4.5 8a6 6 0 1 1-.6 4',
  close: 'M5 5l10 10M15 5L5 15',
  trash: 'M4.5 6h11M8 6V4.5h4V6M6 6l.7 9.5h6.6L14 6',
  menu: 'M4 6h12M4 10h12M4 14h12',
  check: 'M4.5 10.5l3.5 3.5 7.5-8',
  previous: 'M12.5 5L7.5 10l5 5',
  next: 'M7.5 5l5 5-5 5',
  plus: 'M10 4.5v11M4.5 10h11',
  minus: 'M4.5 10h11',
  fit: 'M3.5 4.5v11M16.5 4.5v11M6.5 10h7M8.5 7.5L6 10l2.5 2.5M11.5 7.5L14 10l-2.5 2.5',
};
const kFilled = new Set(['play', 'pause', 'first', 'back', 'forward', 'last', 'triangle']);

export function icon(name) {
  return svg(
    'svg',
    { class: kFilled.has(name) ? 'icon filled' : 'icon', viewBox: '0 0 20 20', 'aria-hidden': 'true', focusable: 'false' },
    svg('path', { d: kPaths[name] }),
  );
}
