// What the keyboard does, and where pictures go (nowhere).

import { openDialog } from './dialog.js';
import { h } from './dom.js';

const kSections = [
  ['Time', [
    ['Space', 'Play or pause'],
    ['← →', 'One frame; with Shift ten'],
    ['Home End', 'First or last frame'],
    ['[ ]', 'Previous or next key of any parameter'],
    ['L', 'Loop'],
    ['Wheel, + −', 'On the timeline: show less or more of it; F shows all'],
    ['Shift wheel', 'On the timeline: go along it, as Shift Page ↑ ↓ do'],
  ]],
  ['Picture', [
    ['P, held', 'The plate without snow'],
    ['1 2 3 4', 'Plate, wipe, snow on plate, snow alone'],
    ['F', 'Fit into the window'],
    ['O', 'One pixel to one pixel'],
    ['+ −', 'Zoom; so do wheel and pinch, a drag pushes the picture'],
  ]],
  ['Parameters', [
    ['/', 'Find a parameter'],
    ['← → ↑ ↓', 'Change by a step; with Shift ten times, with Alt or Ctrl a tenth'],
    ['Page ↑ ↓', 'Change by ten steps'],
    ['K', 'Add a key at the playhead, or remove it'],
    ['R, double click', 'Back to the default'],
    ['Wheel', 'Change the slider or number that has the focus'],
  ]],
  ['Keys in the timeline', [
    ['← →', 'Move the key; with Shift ten frames'],
    ['Alt ← →', 'Go to the key before or after'],
    ['Delete', 'Remove the key'],
  ]],
  ['The page', [
    ['Ctrl Z', 'Undo; with Shift redo'],
    ['Ctrl O', 'Open a picture, a video or a scene'],
    ['Ctrl S', 'Save the scene'],
    ['E', 'Export a clip'],
    ['?', 'This help'],
  ]],
];

export function openHelp({ version, isPanel }) {
  openDialog({
    title: 'Help',
    className: 'help',
    content: [
      h('p', {}, 'Set the look at the right, watch it in the middle, move it in time below. Type a number to go beyond a slider’s travel. ' +
        'A diamond adds a key at the playhead: hollow can have keys, half has some, full has one here.'),
      h('p', {}, isPanel
        ? 'The pictures come from the tool on this machine and go nowhere else.'
        : 'Pictures and videos that you open stay on this machine: nothing is sent anywhere, and the page works without a network once it is loaded.'),
      h('div', { class: 'help-sections' },
        kSections.map(([title, keys]) =>
          h('section', {}, h('h3', {}, title), h('dl', {}, keys.flatMap(([key, text]) => [h('dt', {}, key), h('dd', {}, text)]))))),
      h('p', { class: 'muted' }, `Vintrel ${version}. The same effect, byte for byte, as the tool’s.`),
    ],
  });
}
