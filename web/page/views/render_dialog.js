// A render by the tool: where it goes, which frames; its progress, and a way to stop it.

import { framesText } from '../share/scene.js';
import { confirmDialog, fileField, openDialog } from './dialog.js';
import { h, set, setText } from './dom.js';

const kStoppedCode = 130; // as shells count an interrupt
const kNothingWritten = 'Stopped: nothing was written.';

/** `start({ output, frames, replace })` promises { events, stop() }, as PanelClient.startRender does. */
export function openRenderDialog({ store, start, isConflict }) {
  const { time } = store.state;
  const output = fileField({ value: 'snow.mp4' });
  const frames = h('input', { class: 'field', value: framesText(time), spellcheck: 'false' });
  const progress = h('progress', { value: 0, 'aria-label': 'Frames done', hidden: true });
  const words = h('p', { class: 'muted', role: 'status' }, 'A video (.mp4, .mov, .mkv), or pictures such as snow.####.png');
  const trouble = h('p', { class: 'trouble', role: 'alert' });
  const submit = h('button', { class: 'button primary', type: 'submit' }, 'Render');
  const cancel = h('button', { class: 'button', type: 'button', onclick: () => (isRunning ? stop() : dialog.close()) }, 'Close');
  const form = h('form', { class: 'form', onsubmit: (event) => {
    event.preventDefault();
    run(false);
  } },
    h('label', {}, h('span', {}, 'Output'), output),
    h('label', {}, h('span', {}, 'Frames'), frames),
    words, progress, trouble,
    h('div', { class: 'dialog-buttons' }, cancel, submit));
  let render;
  let isRunning = false;
  let isUnwanted = false; // stopped before the tool had answered
  // A render goes on without its dialog; whoever closes it wants it to end.
  const dialog = openDialog({ title: 'Render with the tool', className: 'small', content: form, onClose: () => isRunning && stop() });
  output.select();

  async function stop() {
    setText(words, 'Stopping…');
    isUnwanted = true;
    if (!render) {
      return;
    }
    await render.stop().catch((error) => setText(trouble, error.message));
  }

  function show(nowRunning) {
    isRunning = nowRunning;
    set(submit, { disabled: isRunning });
    set(output, { disabled: isRunning });
    set(frames, { disabled: isRunning });
    set(progress, { hidden: !isRunning });
    setText(cancel, isRunning ? 'Stop' : 'Close');
    if (isRunning) {
      cancel.focus(); // what had the focus is disabled
    }
  }

  async function run(replace) {
    setText(trouble, '');
    isUnwanted = false;
    show(true);
    try {
      render = await start({ output: output.value.trim(), frames: frames.value.trim(), replace });
      if (isUnwanted) {
        await stop();
      }
      await follow(render.events);
    } catch (error) {
      const isGivenUp = isUnwanted && !render;
      if (isConflict(error) && !replace && !isGivenUp && await confirmDialog({ title: 'Replace files?', text: error.message, act: 'Replace' })) {
        return run(true);
      }
      setText(trouble, isGivenUp ? '' : error.message);
      setText(words, isGivenUp ? kNothingWritten : '');
    }
    render = undefined;
    show(false);
    return undefined;
  }

  async function follow(events) {
    const errors = [];
    let end;
    for await (const event of events) {
      if (event.event === 'frame') {
        set(progress, { max: event.total, value: event.done });
        setText(words, `Frame ${event.frame} ${event.status}: ${event.done} of ${event.total}`);
      } else if (event.event === 'error') {
        errors.push(event.message);
      } else if (event.event === 'end') {
        end = event;
        break; // the connection may stay open for a while, and there is nothing left to stop
      }
    }
    setText(words, end ? endText(end) : '');
    const isWell = end?.code === 0 || end?.code === kStoppedCode;
    if (errors.length === 0 && !isWell) {
      errors.push(end ? `The tool ended with code ${end.code}.` : 'The tool’s report broke off.');
    }
    setText(trouble, errors.join('\n'));
  }

  function endText({ code, written, left }) {
    switch (code) {
      case 0:
        return `Done: ${framesOf(written)} in ${output.value.trim()}.`;
      case kStoppedCode: // so early that the tool has not counted, there is nothing to count
        return written === undefined ? kNothingWritten : `Stopped: ${framesOf(written)} written, ${left} left.`;
      default:
        return '';
    }
  }
}

const framesOf = (count) => (count === 1 ? '1 frame' : `${count} frames`);
