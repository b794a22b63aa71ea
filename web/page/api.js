// window.vintrel, for scripts and tests: frames of the shipped plates, by the engine that draws the page's.
//
//   await vintrel.ready
//   vintrel.parameters                                   what the effect declares
//   await vintrel.render({ plate, frame, fps, parameters })
//       `plate` is a shipped plate's name ('street'); `parameters` are values by slug, or courses with keys.
//       Gives { width, height, data }: straight RGBA of 8 bits at full size.
//   vintrel.state                                        the page's present state
//   vintrel.shown                                        the picture on the stage: { width, height, data, frame,
//                                                        reduction, state }, undefined before the first

import { renderOn } from './preview/shot.js';

/**
 * Installs it; call `resolve(pool, library)` when the page can render, `reject(error)` when it never will, `watch(store)`
 * when it has a state, and `show(frame)` with each frame that is shown.
 */
export function installApi() {
  const watched = { store: undefined, shown: undefined };
  let settle;
  const parts = new Promise((resolve, reject) => {
    settle = {
      resolve: (pool, library) => resolve({ pool, library }),
      reject,
      watch(store) {
        watched.store = store;
      },
      show({ image, frame, reduction }) {
        const { width, height, data } = image;
        watched.shown = { width, height, data, frame, reduction, state: watched.store.state };
      },
    };
  });
  const vintrel = {
    ready: parts.then(({ pool }) => {
      vintrel.parameters = pool.parameters;
    }),
    parameters: undefined,
    async render({ plate = 'street', frame = 0, fps = '24', shutter = 180, parameters = {} } = {}) {
      const { pool, library } = await parts;
      const source = await library.load({ kind: 'shipped', name: plate.replace(/\.png$/, '') });
      const request = { source, parameters, fps: String(fps), shutter, reduction: 1 };
      const { width, height, data } = await renderOn(pool, request, frame, { priority: 1 });
      return { width, height, data };
    },
    get state() {
      return watched.store?.state;
    },
    get shown() {
      return watched.shown;
    },
  };
  vintrel.ready.catch(() => {}); // the page says it, too
  window.vintrel = vintrel;
  return settle;
}
