// Time in numbers: play and step, the playhead, first and last frame, rate, shutter, and what playback reaches.

import { parseRate } from '../share/rate.js';
import { kMostFrames } from '../state/time_span.js';
import { createFrameField } from './controls/frame_field.js';
import { createTextField } from './controls/text_field.js';
import { h, set, setText } from './dom.js';
import { icon } from './icons.js';

const kLeastShutter = 1;
const kMostShutter = 720;
const kRates = ['24000/1001', '24', '25', '30000/1001', '30', '50', '60'];
const kQualities = [
  { id: 'auto', label: 'Auto' },
  { id: 1, label: 'Full' },
  { id: 2, label: 'Half' },
  { id: 4, label: 'Quarter' },
];

/** Returns { element, update(state), showRate(rate or undefined) }. */
export function createTransport({ store, actions, notices }) {
  const button = (name, label, act, keys) =>
    h('button', { type: 'button', class: 'icon-button', 'aria-label': label, title: keys ? `${label} (${keys})` : label, onclick: act }, icon(name));
  const time = () => store.state.time;

  const play = button('play', 'Play', () => actions.setView({ playing: !store.state.view.playing }), 'Space');
  const loop = button('loop', 'Loop', () => actions.setTime({ loop: !time().loop }), 'L');
  const rule = 'frames are whole numbers, the first before the last';
  const frame = createFrameField({
    label: 'Frame', slug: 'time frame', rule, notices,
    fits: () => true,
    change: (number) => {
      actions.setFrame(number);
      frame.update(time().frame); // beyond the clip's end it is another, and maybe the one that it was
    },
  });
  const first = createFrameField({
    label: 'First frame', slug: 'time first', rule, notices,
    fits: (number) => number <= time().last && time().last - number < kMostFrames,
    change: (number, options) => actions.setRange(number, time().last, options),
  });
  const last = createFrameField({
    label: 'Last frame', slug: 'time last', rule, notices,
    fits: (number) => number >= time().first && number - time().first < kMostFrames,
    change: (number, options) => actions.setRange(time().first, number, options),
  });

  const fps = createTextField({
    slug: 'fps', label: 'Frames a second', className: 'number rate', complain,
    shown: String,
    read: async (text) => {
      if (!parseRate(text)) {
        throw new Error(`'${text}' is not a frame rate from 0.01 to 1000; write 24, 23.976 or 24000/1001`);
      }
      return text;
    },
    change: (text) => actions.setTime({ fps: text }, { label: 'Rate' }),
  });
  set(fps.element, { list: 'rates' });
  const shutter = createTextField({
    slug: 'shutter', label: 'Shutter in degrees', className: 'number', complain,
    shown: (degrees) => `${degrees}°`, typed: String,
    read: async (text) => {
      const degrees = Number(text.replace(/°$/, '').trim() || NaN);
      if (!(degrees >= kLeastShutter && degrees <= kMostShutter)) {
        throw new Error(`the shutter is '${text}'; it is open for ${kLeastShutter} to ${kMostShutter} degrees`);
      }
      return degrees;
    },
    step: (degrees, direction, { shiftKey }) => Math.min(Math.max(degrees + direction * (shiftKey ? 45 : 5), kLeastShutter), kMostShutter),
    change: (degrees, options) => actions.setTime({ shutter: degrees }, { label: 'Shutter', ...options }),
  });
  const quality = h(
    'select',
    { class: 'field quality', 'aria-label': 'Size in playback', title: 'Size in playback', onchange: () => actions.setView({ quality: kQualities[quality.selectedIndex].id }) },
    kQualities.map(({ label }) => h('option', {}, label)),
  );
  const readout = h('output', { class: 'readout', 'aria-label': 'Frames a second in playback' });

  const element = h(
    'div',
    { class: 'transport', role: 'toolbar', 'aria-label': 'Time' },
    h('div', { class: 'transport-buttons' },
      button('first', 'To the first frame', () => actions.setFrame(time().first), 'Home'),
      button('back', 'One frame back', () => actions.setFrame(time().frame - 1), '←'),
      play,
      button('forward', 'One frame on', () => actions.setFrame(time().frame + 1), '→'),
      button('last', 'To the last frame', () => actions.setFrame(time().last), 'End'),
      loop),
    h('label', { class: 'with-unit' }, frame.element, h('span', { class: 'of' }, 'of')),
    h('span', { class: 'with-unit range' }, first.element, h('span', {}, '–'), last.element),
    h('label', { class: 'with-unit' }, fps.element, h('span', {}, 'fps')),
    h('datalist', { id: 'rates' }, kRates.map((rate) => h('option', { value: rate }))),
    h('label', { class: 'with-unit' }, shutter.element, h('span', {}, 'shutter')),
    h('label', { class: 'with-unit' }, quality, h('span', { class: 'quality-unit' }, 'playback')),
    readout,
  );

  // A field is too small for a sentence.
  function complain(text) {
    if (text) {
      notices.fail(text);
    }
  }

  return {
    element,
    update(state) {
      const { playing, quality: chosen = 'auto' } = state.view;
      play.replaceChildren(icon(playing ? 'pause' : 'play'));
      set(play, { 'aria-label': playing ? 'Pause' : 'Play', class: playing ? 'icon-button is-on' : 'icon-button' });
      set(loop, { 'aria-pressed': String(state.time.loop), class: state.time.loop ? 'icon-button is-on' : 'icon-button' });
      frame.update(state.time.frame);
      first.update(state.time.first);
      last.update(state.time.last);
      fps.update(state.time.fps);
      shutter.update(state.time.shutter);
      quality.selectedIndex = kQualities.findIndex(({ id }) => id === chosen);
    },
    showRate(rate) {
      setText(readout, rate ? `${rate.shown.toFixed(1)} fps · ${rate.ready} ready` : '');
      readout.classList.toggle('is-slow', rate !== undefined && rate.shown < rate.wanted * 0.95);
    },
  };
}
