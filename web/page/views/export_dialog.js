// A clip out: which format, which frames; progress, and a way to stop.

import { clipFormats, exportClip } from '../media/clip.js';
import { openDialog } from './dialog.js';
import { h, set, setText } from './dom.js';

/** `renderFrame(n, signal)` promises a full frame; `save(blob, name)` hands the clip to the visitor. */
export async function openExportDialog({ store, library, renderFrame, save }) {
  const { time, plate } = store.state;
  const source = await library.load(plate);
  const size = { width: source.width, height: source.height };
  const count = time.last - time.first + 1;
  let controller;

  const formats = h('div', { class: 'choices', role: 'radiogroup', 'aria-label': 'Format' }, h('p', { class: 'muted' }, 'Asking the browser what it can write…'));
  const progress = h('progress', { max: count, value: 0, 'aria-label': 'Frames done' });
  const words = h('p', { class: 'muted', role: 'status' }, `${count} frames at ${time.fps} frames a second, ${size.width} × ${size.height}`);
  const trouble = h('p', { class: 'trouble', role: 'alert' });
  const start = h('button', { type: 'button', class: 'button primary', disabled: true, onclick: run }, 'Export');
  const stop = h('button', { type: 'button', class: 'button', onclick: () => (controller ? controller.abort() : dialog.close()) }, 'Cancel');
  const dialog = openDialog({
    title: 'Export a clip', className: 'small', onClose: () => controller?.abort(),
    content: [formats, words, progress, trouble, h('div', { class: 'dialog-buttons' }, stop, start)],
  });
  progress.hidden = true;

  const known = await clipFormats({ ...size, fps: time.fps });
  const chosen = known.find(({ available }) => available)?.id;
  formats.replaceChildren(
    ...known.map(({ id, label, available, reason, note }) =>
      h('label', { class: 'choice' },
        h('input', { type: 'radio', name: 'format', value: id, checked: id === chosen, disabled: !available }),
        h('span', {}, label, (reason || note) && h('span', { class: 'muted' }, reason || note)))),
  );
  start.disabled = chosen === undefined;
  if (chosen) {
    start.focus();
  } else {
    setText(trouble, 'This browser cannot write a clip. Save single frames as PNG, or copy the command line for the tool.');
  }

  async function run() {
    const format = formats.querySelector('input:checked').value;
    const state = store.state;
    controller = new AbortController();
    const { signal } = controller;
    setText(trouble, '');
    start.disabled = true;
    for (const input of formats.querySelectorAll('input')) {
      input.disabled = true;
    }
    progress.hidden = false;
    const began = performance.now();
    try {
      const blob = await exportClip({
        ...size, format, signal, fps: state.time.fps,
        frames: Array.from({ length: count }, (_, i) => time.first + i),
        renderFrame: (frame) => renderFrame(state, frame, signal),
        onProgress: ({ done }) => {
          set(progress, { value: done });
          const left = ((performance.now() - began) / done) * (count - done);
          setText(words, `Frame ${done} of ${count}, ${Math.ceil(left / 1000)} s left`);
        },
      });
      controller = undefined;
      save(blob, `snow.${format}`);
      dialog.close();
    } catch (error) {
      controller = undefined;
      progress.hidden = true;
      setText(words, error.name === 'AbortError' ? 'Stopped; nothing was written.' : '');
      setText(trouble, error.name === 'AbortError' ? '' : error.message);
      start.disabled = false;
      known.forEach(({ available }, i) => {
        formats.querySelectorAll('input')[i].disabled = !available;
      });
    }
  }
}
