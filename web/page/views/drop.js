// Files that are dropped on the page or pasted into it.

import { h } from './dom.js';

/** `take(files)` gets them. Returns the element that shows while something is dragged over the page. */
export function createDropTarget(take) {
  const element = h('div', { class: 'drop', hidden: true, 'aria-hidden': 'true' },
    h('p', {}, 'Drop a picture, a video or a scene'), h('p', { class: 'muted' }, 'It stays on this machine.'));
  let depth = 0;
  const hasFiles = (event) => event.dataTransfer?.types.includes('Files');

  window.addEventListener('dragenter', (event) => {
    if (hasFiles(event)) {
      depth += 1;
      element.hidden = false;
    }
  });
  window.addEventListener('dragleave', () => {
    depth = Math.max(0, depth - 1);
    element.hidden = depth === 0;
  });
  window.addEventListener('dragover', (event) => {
    if (hasFiles(event)) {
      event.preventDefault();
      event.dataTransfer.dropEffect = 'copy';
    }
  });
  window.addEventListener('drop', (event) => {
    depth = 0;
    element.hidden = true;
    if (hasFiles(event)) {
      event.preventDefault();
      take([...event.dataTransfer.files]);
    }
  });
  window.addEventListener('paste', (event) => {
    const files = [...(event.clipboardData?.files ?? [])];
    if (files.length > 0) {
      event.preventDefault();
      take(files);
    }
  });
  return element;
}
