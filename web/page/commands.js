// What the menus and the keyboard ask of the page as a whole: files in and out, links, commands, undo.

import { encodePng } from './media/picture.js';
import { renderOn, requestFor, seenParameters } from './preview/shot.js';
import { commandOf } from './share/command.js';
import { kMostCharacters, stateToHash } from './share/link.js';
import { sceneOfState, stateOfScene } from './share/scene.js';
import { kShipped } from './plates/sources.js';
import { openDialog } from './views/dialog.js';
import { h } from './views/dom.js';
import { openExportDialog } from './views/export_dialog.js';
import { openHelp } from './views/help.js';

const kAccepted = 'image/*,video/*,.toml,.mov,.mkv';
// Far more than the reader of scenes takes; the rest of a huge file need not come into memory to be refused.
const kMostSceneBytes = 4 << 20;

/** `panel` is what panel_mode.js made, or undefined where the page stands alone. */
export function createCommands({ store, actions, pool, library, notices, panel }) {
  const declarations = pool.parameters;
  const seen = () => ({ ...store.state, parameters: seenParameters(store.state) });

  async function attempt(act) {
    try {
      await act();
    } catch (error) {
      notices.fail(error);
    }
  }

  async function renderFrame(state, frame, signal) {
    const source = await library.load(state.plate);
    return renderOn(pool, requestFor(state, source, 1), frame, { signal, priority: 1 });
  }

  async function readScene(text, name) {
    if (text.trim() === '') {
      throw new Error(`${name} is empty`); // to the reader a scene without any settings
    }
    const read = stateOfScene(await pool.readScene(text, name), declarations, kShipped.map((plate) => plate.name));
    // What the engine cannot take must not replace what is set.
    await pool.disabled(read.parameters, read.time.first ?? 0).catch((error) => {
      throw new Error(`${name}: ${error.message}`);
    });
    store.update(
      (state) => {
        const time = { ...state.time, ...read.time };
        const frame = Math.min(Math.max(time.frame, time.first), time.last);
        return { ...state, plate: read.plate ?? state.plate, parameters: read.parameters, time: { ...time, frame } };
      },
      { label: `Scene ${name}` },
    );
    read.notes.forEach(notices.note);
  }

  let lastOpening = 0;

  async function openFile(file) {
    if (/\.toml$/i.test(file.name)) {
      await readScene(await file.slice(0, kMostSceneBytes).text(), file.name);
      return;
    }
    const opening = ++lastOpening;
    const plate = await library.open(file);
    const source = await library.load(plate);
    // One that took long does not take the place of one that was asked for later.
    if (opening === lastOpening) {
      actions.setPlate(plate, source.frames && { ...source.frames, frame: source.frames.first, fps: source.fps });
    }
  }

  async function copy(text, what) {
    try {
      await navigator.clipboard.writeText(text);
      notices.note(`${what} copied`);
    } catch {
      // No clipboard without a secure origin: the visitor copies by hand.
      const field = h('textarea', { class: 'field copy-field', readonly: true, rows: 4, 'aria-label': what }, text);
      openDialog({ title: `Copy: ${what.toLowerCase()}`, content: field });
      field.select();
    }
  }

  const sceneText = (names) => pool.writeScene(sceneOfState(seen(), names));

  const commands = {
    readScene: (text, name) => attempt(() => readScene(text, name)),
    sceneText,
    take(files) {
      return attempt(async () => {
        for (const file of files.slice(0, 1)) {
          await openFile(file);
        }
        if (files.length > 1) {
          notices.note(`${files[0].name} is open; one file at a time`);
        }
      });
    },
    open() {
      const input = h('input', { type: 'file', accept: kAccepted });
      input.addEventListener('change', () => commands.take([...input.files]));
      input.click();
    },
    saveScene() {
      return attempt(async () => {
        if (panel) {
          await panel.saveScene(sceneText);
        } else {
          save(new Blob([await sceneText()], { type: 'application/toml' }), 'snow.toml');
        }
      });
    },
    copyLink() {
      const hash = stateToHash(store.state, declarations);
      if (hash.length > kMostCharacters) {
        notices.fail('there are too many keys for a link; save the scene, which holds them all');
        return undefined;
      }
      const { kind, name } = store.state.plate;
      if (kind !== 'shipped' && kind !== 'blank') {
        notices.note(`the link carries the look, not ${name}: pictures stay on this machine`);
      }
      return copy(new URL(hash, location.href).href, 'Link');
    },
    /** `frames` is 'one' or 'all', as commandOf takes it. */
    copyCommand: (frames) =>
      attempt(async () => {
        const { line, sceneFile } = commandOf(seen(), declarations, { frames });
        await copy(line, 'Command');
        if (sceneFile) {
          save(new Blob([await sceneText()], { type: 'application/toml' }), sceneFile);
          notices.note(`the keys are in ${sceneFile}, which was saved for the command to read`);
        }
      }),
    savePng: () =>
      attempt(async () => {
        const { state } = store;
        const { frame } = state.time;
        save(await encodePng(await renderFrame(state, frame)), `snow.${String(frame).padStart(4, '0')}.png`);
      }),
    exportClip: () => attempt(() => {
      actions.setView({ playing: false });
      return openExportDialog({ store, library, notices, renderFrame, save });
    }),
    undo() {
      announce(store.undo(), 'Undone', 'Nothing to undo');
    },
    redo() {
      announce(store.redo(), 'Redone', 'Nothing to redo');
    },
    help: () => openHelp({ version: pool.version, isPanel: panel !== undefined }),
  };

  function announce(label, done, nothing) {
    notices.whisper(label ? `${done}: ${label}` : nothing);
  }

  return commands;
}

/** Hands a file to the visitor. */
function save(blob, name) {
  const address = URL.createObjectURL(blob);
  h('a', { href: address, download: name }).click();
  setTimeout(() => URL.revokeObjectURL(address), 60_000);
}
