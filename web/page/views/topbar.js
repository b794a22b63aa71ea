// The bar at the top: which picture, undo, scenes, link, export, and the page's own matters.

import { h, set, setText } from './dom.js';
import { icon } from './icons.js';
import { menuButton } from './menu.js';
import { kShipped } from '../plates/sources.js';

const kBlank = '1920x1080';

/** Returns { element, update(), showSource(source, plate) }. */
export function createTopbar({ store, actions, commands, theme, panel }) {
  const plateName = h('span', { class: 'plate-name' });
  const plateSize = h('span', { class: 'plate-size' });
  const own = []; // plates of the visitor's, in the order they were opened
  const plateMenu = menuButton({ label: 'Picture', content: [plateName, plateSize], className: 'plate-button', items: plateItems });

  function plateItems() {
    const now = store.state.plate;
    const choice = (plate, label, hint) => ({
      label, hint,
      checked: plate.kind === now.kind && plate.name === now.name && plate.id === (now.kind === 'shipped' || now.kind === 'blank' ? plate.id : now.id),
      act: () => actions.setPlate(plate.plate ?? plate, plate.time),
    });
    return [
      ...own.map((entry) => choice(entry, entry.name, `${entry.width} × ${entry.height}`)),
      ...(own.length > 0 ? ['line'] : []),
      ...kShipped.map(({ name, label }) => choice({ kind: 'shipped', name }, label)),
      choice({ kind: 'blank', name: kBlank }, 'Blank', kBlank.replace('x', ' × ')),
      'line',
      { label: 'Open…', hint: 'Ctrl O', act: commands.open },
    ];
  }

  const sceneMenu = menuButton({
    label: 'Scene', content: 'Scene', className: 'wide-only',
    items: sceneItems,
  });
  function sceneItems() {
    return [
      { label: 'Open scene…', hint: 'Ctrl O', act: commands.open },
      { label: 'Save scene…', hint: 'Ctrl S', act: commands.saveScene },
      'line',
      { heading: 'Command line of the tool' },
      { label: 'Copy it for this frame', act: () => commands.copyCommand('one') },
      { label: 'Copy it for the clip', act: () => commands.copyCommand('all') },
    ];
  }
  const exportMenu = menuButton({
    label: 'Export', content: 'Export', className: 'primary',
    items: () => [
      { label: 'This frame as PNG', act: commands.savePng },
      { label: 'Clip…', hint: 'E', act: commands.exportClip },
      ...(panel ? [{ label: 'Render with the tool…', act: commands.renderWithTool }] : []),
    ],
  });
  const themeItems = () => ['auto', 'light', 'dark'].map((id) => ({
    label: { auto: 'As the system', light: 'Light', dark: 'Dark' }[id], checked: theme.chosen() === id, act: () => theme.choose(id),
  }));
  const pageMenu = menuButton({
    label: 'More', content: icon('menu'), className: 'icon-only',
    items: () => [
      ...(matchMedia('(max-width: 899px)').matches
        ? [{ heading: 'Scene' }, ...sceneItems(), { label: 'Copy link', act: commands.copyLink }, 'line']
        : []),
      { heading: 'Colors of the page' },
      ...themeItems(),
      'line',
      { label: 'Help', hint: '?', act: commands.help },
    ],
  });
  const undo = h('button', { type: 'button', class: 'button square', 'aria-label': 'Undo', onclick: commands.undo }, icon('undo'));
  const redo = h('button', { type: 'button', class: 'button square', 'aria-label': 'Redo', onclick: commands.redo }, icon('redo'));

  const element = h(
    'header',
    { class: 'topbar' },
    h('h1', { class: 'brand' }, icon('snowflake'), h('span', {}, 'Vintrel')),
    plateMenu,
    h('button', { type: 'button', class: 'button wide-only', onclick: commands.open }, 'Open…'),
    h('div', { class: 'topbar-gap' }),
    h('div', { class: 'topbar-group' }, undo, redo),
    sceneMenu,
    h('button', { type: 'button', class: 'button wide-only', title: 'Copy a link to this look', onclick: commands.copyLink }, 'Link'),
    exportMenu,
    pageMenu,
  );

  return {
    element,
    update() {
      const { undoLabel, redoLabel } = store;
      set(undo, { disabled: undoLabel === undefined, title: undoLabel ? `Undo ${undoLabel} (Ctrl Z)` : 'Nothing to undo' });
      set(redo, { disabled: redoLabel === undefined, title: redoLabel ? `Redo ${redoLabel} (Ctrl Shift Z)` : 'Nothing to redo' });
    },
    /** The source of the plate that is on. */
    showSource({ kind, name, id, label, width, height, frames, fps }, plate) {
      setText(plateName, kind === 'shipped' ? `${name}.png` : label);
      setText(plateSize, `${width} × ${height}`);
      if (kind !== 'shipped' && kind !== 'blank' && !own.some((entry) => entry.id === id)) {
        own.push({ kind, name, id, width, height, plate, time: frames && { ...frames, fps } });
      }
    },
  };
}
