// The page as the tool's panel: the tool's input on the stage, scenes saved where the visitor says, renders of the tool.

import { PanelClient, isPanel } from './panel/panel_client.js';
import { PanelConflict } from './panel/panel_error.js';
import { plateSourceOf } from './panel/plate_source.js';
import { confirmDialog, fileField, openDialog } from './views/dialog.js';
import { h, setText } from './views/dom.js';
import { openRenderDialog } from './views/render_dialog.js';

/**
 * Undefined where the page was opened without the tool, else
 *   begin({ library, actions, readScene })   puts the input and the scene of the command line on the page
 *   saveScene(sceneText)                     asks for a name, and before it replaces a file
 *   render(sceneText)                        a render by the tool, with its progress and a way to stop it
 */
export function createPanelMode({ store, notices }) {
  if (!isPanel(location)) {
    return undefined;
  }
  const client = new PanelClient();
  let sceneFile = 'snow.toml';
  let input;
  let isLost = false;

  function lose(error) {
    if (!isLost) {
      isLost = true;
      notices.fail(`${error.message} What is set here stays; save the scene as a file or copy the link.`);
    }
  }

  async function begin({ library, actions, readScene }) {
    const panel = await client.panel();
    client.keepAlive(lose);
    input = panel.input;
    sceneFile = panel.scene?.path ?? sceneFile;
    if (input) {
      const source = sourceOf(plateSourceOf(client, input));
      const plate = library.add(source);
      const frames = input.isStill ? undefined : { first: input.first, last: input.last, frame: input.first };
      actions.setPlate(plate, frames && { ...frames, fps: source.fps });
    }
    if (panel.scene) {
      await readScene(panel.scene.text, panel.scene.path);
    }
  }

  async function write(text, file, replace) {
    try {
      return await client.saveScene(text, file, { replace });
    } catch (error) {
      if (!(error instanceof PanelConflict)) {
        throw error;
      }
      const isWanted = await confirmDialog({ title: 'Replace the scene?', text: error.message, act: 'Replace' });
      return isWanted ? write(text, file, true) : undefined;
    }
  }

  // With the input as the tool was given it, so that the scene renders from the same folder.
  const textOf = (sceneText, output) => sceneText({ ...(input && { input: input.path }), ...(output && { output }) });

  return {
    begin,
    async saveScene(sceneText) {
      const field = fileField({ value: sceneFile, 'aria-label': 'Scene file' });
      const trouble = h('p', { class: 'trouble', role: 'alert' });
      const form = h('form', { class: 'form', onsubmit: (event) => {
        event.preventDefault();
        saveAs(field.value.trim());
      } },
        h('label', {}, h('span', {}, 'File'), field),
        trouble,
        h('div', { class: 'dialog-buttons' }, h('button', { class: 'button primary', type: 'submit' }, 'Save')));
      let isSaving = false;
      // The dialog stays until the scene is saved, so that a name which is refused can be mended.
      const saveAs = async (file) => {
        if (isSaving) {
          return;
        }
        isSaving = true;
        setText(trouble, '');
        try {
          const path = await write(await textOf(sceneText), file, false);
          if (path) {
            sceneFile = file;
            dialog.close();
            notices.note(`the scene is in ${path}`);
          }
        } catch (error) {
          if (dialog.open) {
            setText(trouble, error.message);
          } else {
            notices.fail(error);
          }
        }
        isSaving = false;
      };
      const dialog = openDialog({ title: 'Save the scene', className: 'small', content: form });
      field.select();
    },
    render: (sceneText) =>
      openRenderDialog({
        store,
        start: async ({ output, frames, replace }) =>
          client.startRender({ scene: await textOf(sceneText, output), output, frames, replace }),
        isConflict: (error) => error instanceof PanelConflict,
      }),
  };
}

function sourceOf({ name, path, width, height, pixelAspect, fps, first, last, isStill, notes, frameAt }) {
  const frames = isStill ? undefined : { first, last };
  const within = (frame) => (isStill ? first : Math.min(Math.max(frame, first), last));
  return {
    kind: 'panel', name, path, id: 'panel', label: name, width, height, pixelAspect, fps, frames, notes,
    plateAt: (frame) => frameAt(within(frame)),
  };
}
