// The shipped looks, and their pictures on the visitor's own plate.

import { renderOn } from './shot.js';

const kThumbnailReduction = 4;
// The moment of a clip that a thumbnail shows: some seconds in, so that looks with keys are under way.
const kThumbnailFrame = 60;

/** [{ id, name, description, parameters }], the effect's own defaults first. Reads each scene with the tool's reader. */
export async function loadLooks(pool) {
  const folder = new URL('../presets/', import.meta.url);
  const list = await (await fetch(new URL('index.json', folder))).json();
  const looks = await Promise.all(
    list.map(async (look) => {
      const text = await (await fetch(new URL(`${look.id}.toml`, folder))).text();
      return { ...look, parameters: (await pool.readScene(text, `${look.id}.toml`)).parameters };
    }),
  );
  const plain = { id: '', name: 'Default', description: 'Everything as the effect declares it', parameters: {} };
  return [plain, ...looks];
}

/**
 * Renders each look on a source, one after the other and behind everything else; `show(look, image)` gets them.
 * A new call ends the one before.
 */
export function createThumbnails({ pool, show }) {
  let controller;
  return async function render(looks, source, { fps, shutter }) {
    controller?.abort();
    controller = new AbortController();
    const { signal } = controller;
    const frame = source.frames ? Math.min(source.frames.first + kThumbnailFrame, source.frames.last) : kThumbnailFrame;
    for (const look of looks) {
      const request = { source, parameters: look.parameters, fps, shutter, reduction: kThumbnailReduction };
      try {
        show(look, await renderOn(pool, request, frame, { signal, priority: 0 }));
      } catch (error) {
        if (signal.aborted) {
          return;
        }
        console.warn(`no thumbnail of ${look.name}: ${error.message}`);
      }
    }
  };
}
