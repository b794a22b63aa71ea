// Handles on the picture for the parameters that are points: dragged, or moved with the arrow keys.

import { titleOf } from '../state/declarations.js';
import { followPointer, h, set, svg } from './dom.js';

const kStep = 1;

/** Returns { element, update(state) }. A handle shows while its group is open or the point is set. */
export function createPointHandles({ store, actions }, declarations) {
  const element = h('div', { class: 'handles' });
  const points = declarations.values.filter(({ type }) => type === 'point').map(createHandle);
  let drags = 0;

  function createHandle(declaration) {
    const { slug } = declaration;
    const handle = h(
      'button',
      {
        type: 'button', class: 'handle', 'aria-label': `${titleOf(declaration)} on the picture, moved with the arrow keys`,
        title: titleOf(declaration), onpointerdown: begin, onkeydown: press, ondblclick: (event) => {
          event.stopPropagation();
          actions.reset(slug);
        },
      },
      svg('svg', { viewBox: '-16 -16 32 32', 'aria-hidden': 'true' },
        svg('path', { class: 'handle-shade', d: 'M-15 0h30M0-15v30M-8 0a8 8 0 1 0 16 0a8 8 0 1 0-16 0' }),
        svg('path', { class: 'handle-line', d: 'M-15 0h30M0-15v30M-8 0a8 8 0 1 0 16 0a8 8 0 1 0-16 0' })),
    );

    function begin(event) {
      if (event.button !== 0) {
        return;
      }
      event.preventDefault();
      event.stopPropagation();
      handle.focus();
      const merge = `drag ${slug} ${++drags}`;
      const [startX, startY] = actions.valueOf(slug);
      const { width, height } = element.getBoundingClientRect();
      const { clientX, clientY } = event;
      actions.setView({ dragging: true });
      followPointer(
        event,
        (now) => {
          const share = now.altKey || now.ctrlKey ? 0.1 : 1;
          const x = startX + ((now.clientX - clientX) / width) * 100 * share;
          const y = startY + ((now.clientY - clientY) / height) * 100 * share;
          actions.setValue(slug, [rounded(x), rounded(y)], { merge });
        },
        () => {
          actions.setView({ dragging: false });
          store.settle();
        },
      );
    }

    function press(event) {
      const by = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1] }[event.key];
      if (by) {
        event.preventDefault();
        event.stopPropagation();
        const step = kStep * (event.shiftKey ? 10 : event.altKey || event.ctrlKey ? 0.1 : 1);
        const value = actions.valueOf(slug);
        actions.setValue(slug, value.map((part, i) => rounded(part + by[i] * step)), { merge: `press ${slug}` });
      } else if (event.key === 'k' || event.key === 'r') {
        event.stopPropagation();
        (event.key === 'k' ? actions.toggleKey : actions.reset)(slug);
      }
    }

    element.append(handle);
    return { declaration, handle };
  }

  return {
    element,
    update(state) {
      for (const { declaration, handle } of points) {
        const isOpen = state.view.open?.[declaration.group] || !declaration.group;
        const [x, y] = actions.valueOf(declaration.slug);
        set(handle, { hidden: !isOpen && !(declaration.slug in state.parameters) });
        handle.style.left = `${x}%`;
        handle.style.top = `${y}%`;
      }
    },
  };
}

function rounded(percent) {
  return Math.round(percent * 100) / 100;
}
