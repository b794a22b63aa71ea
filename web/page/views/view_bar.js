// What is shown on the stage, and how large.

import { kShows } from '../preview/shot.js';
import { createSegments } from './controls/choice.js';
import { h, setText } from './dom.js';
import { menuButton } from './menu.js';

const kZooms = [0.25, 0.5, 1, 2, 4];

/** Returns { element, update(state) }. */
export function createViewBar({ actions, stage, store }) {
  const shows = createSegments({
    label: 'What is shown',
    segments: kShows.map(({ id, label }, i) => ({ id, label, title: `${label} (${i + 1})` })),
    choose: (show) => actions.setView({ show }),
  });
  const zoomName = h('span', { class: 'zoom-name' });
  const zoom = menuButton({
    label: 'Zoom', content: zoomName,
    items: () => {
      const now = store.state.view.zoom ?? 'fit';
      return [
        { label: 'Fit', hint: 'F', checked: now === 'fit', act: () => actions.setView({ zoom: 'fit' }) },
        ...kZooms.map((share) => ({
          label: `${share * 100} %`, hint: share === 1 ? 'O' : undefined, checked: now === share, act: () => actions.setView({ zoom: share }),
        })),
      ];
    },
  });
  const element = h('div', { class: 'view-bar', role: 'toolbar', 'aria-label': 'View' }, shows.element, zoom);
  return {
    element,
    update({ view }) {
      shows.update(view.holdPlate ? 'plate' : (view.show ?? 'result'));
      setText(zoomName, (view.zoom ?? 'fit') === 'fit' ? 'Fit' : stage.zoomText);
    },
  };
}
