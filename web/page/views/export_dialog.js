// A clip out: which format, which frames; progress, and a way to stop.

import { clipFormats, exportClip } from '../media/clip.js';
import { bytesText, isTooLargeForMemory, mostClipBytes } from '../media/clip_size.js';
import { canChooseFile, chooseFile } from '../media/file_choice.js';
import { openDialog } from './dialog.js';
import { h, set, setText } from './dom.js';

/**
 * `renderFrame(n, signal)` promises a full frame; `save(blob, name)` hands over a clip that has no file of its own.
 * The dialog is there at once; the formats come when the browser has answered.
 */
export async function openExportDialog({ store, library, notices, renderFrame, save }) {
  const { time, plate } = store.state;
  const source = await library.load(plate);
  const size = { width: source.width, height: source.height };
  const count = time.last - time.first + 1;
  let controller;

  const formats = h('div', { class: 'choices', role: 'radiogroup', 'aria-label': 'Format' }, h('p', { class: 'muted' }, 'Asking the browser what it can write…'));
  const progress = h('progress', { max: count, value: 0, 'aria-label': 'Frames done' });
  const words = h('p', { class: 'muted', role: 'status' }, `${count} frames at ${time.fps} frames a second, ${size.width} × ${size.height}`);
  const trouble = h('p', { class: 'trouble', role: 'alert' });
  const warning = h('p', { class: 'warning', hidden: true },
    'This browser cannot write a file while it renders: the clip lies in memory until it is done. Fewer frames are safer.');
  const start = h('button', { type: 'button', class: 'button primary', disabled: true, onclick: run }, 'Export');
  const stop = h('button', { type: 'button', class: 'button', onclick: () => (controller ? controller.abort() : dialog.close()) }, 'Cancel');
  const dialog = openDialog({
    title: 'Export a clip', className: 'small', onClose: () => controller?.abort(),
    content: [formats, words, warning, progress, trouble, h('div', { class: 'dialog-buttons' }, stop, start)],
  });
  progress.hidden = true;

  const known = await clipFormats({ ...size, fps: time.fps }).catch((error) => {
    setText(trouble, error.message);
    return undefined;
  });
  if (!known) {
    formats.replaceChildren();
    return;
  }
  const chosen = known.find(({ available }) => available)?.id;
  formats.replaceChildren(
    ...known.map(({ id, label, available, reason, note }) => {
      const most = `up to about ${bytesText(mostClipBytes(id, size, count))}, less with less snow`;
      return h('label', { class: 'choice' },
        h('input', { type: 'radio', name: 'format', value: id, checked: id === chosen, disabled: !available, onchange: warn }),
        h('span', {}, label, h('span', { class: 'muted' }, reason || [most, note].filter(Boolean).join('; '))));
    }),
  );
  start.disabled = chosen === undefined;
  if (chosen) {
    warn();
    start.focus();
  } else {
    setText(trouble, 'This browser cannot write a clip. Save single frames as PNG, or copy the command line for the tool.');
  }

  function chosenFormat() {
    return formats.querySelector('input:checked').value;
  }

  function warn() {
    warning.hidden = canChooseFile() || !isTooLargeForMemory(mostClipBytes(chosenFormat(), size, count));
  }

  async function run() {
    const format = chosenFormat();
    const name = `snow.${format}`;
    setText(trouble, '');
    try {
      const file = canChooseFile() ? await chooseFile(name) : undefined;
      if (file !== null && dialog.open) {
        showRunning(true);
        await write(format, file, name);
        dialog.close();
      }
    } catch (error) {
      const isStopped = error.name === 'AbortError';
      setText(words, isStopped ? 'Stopped; nothing was written.' : '');
      setText(trouble, isStopped ? '' : error.message);
    }
    controller = undefined;
    showRunning(false);
  }

  async function write(format, file, name) {
    const state = store.state;
    const began = performance.now();
    controller = new AbortController();
    const { signal } = controller;
    const blob = await exportClip({
      ...size, format, file, signal, fps: state.time.fps,
      frames: Array.from({ length: count }, (_, i) => time.first + i),
      renderFrame: (frame) => renderFrame(state, frame, signal),
      onProgress: ({ done }) => {
        set(progress, { value: done });
        const left = ((performance.now() - began) / done) * (count - done);
        setText(words, `Frame ${done} of ${count}, ${Math.ceil(left / 1000)} s left`);
      },
    });
    controller = undefined;
    if (blob) {
      save(blob, name);
    }
    const written = blob ?? (await file.getFile());
    notices.note(`${file?.name ?? name} is written, ${bytesText(written.size)}`);
  }

  function showRunning(isRunning) {
    progress.hidden = !isRunning;
    set(progress, { value: 0 });
    start.disabled = isRunning;
    (isRunning ? stop : start).focus(); // from the one that is disabled, or of no use any more
    known.forEach(({ available }, i) => {
      formats.querySelectorAll('input')[i].disabled = isRunning || !available;
    });
  }
}
