// The plates at hand, by the name that the state has for them.

import { openMedia } from '../media/open.js';
import { blankSource, shippedSource, stillSource, videoSource } from './sources.js';

/**
 * A plate in the state is { kind, name, id? }; `id` tells visitors' own files apart, which may share a name.
 *
 *   library.load(plate)   promises its source; rejects for one that is not here, such as a picture of a past visit
 *   library.open(file)    promises the plate of a visitor's file, kept for as long as the page, so that undo finds it
 *   library.add(source)   keeps a source that somebody else made and returns its plate
 */
export function createLibrary() {
  const sources = new Map();
  let lastVideo = 0;

  const keyOf = ({ kind, name, id }) => id ?? `${kind}:${name}`;

  function make(plate) {
    switch (plate.kind) {
      case 'shipped':
        return shippedSource(plate.name);
      case 'blank':
        return Promise.resolve(blankSource(plate.name));
      default:
        return Promise.reject(new Error(`${plate.name} is not open in this page any more; open it again`));
    }
  }

  function add(source) {
    const { kind, name, id, width, height } = source;
    const plate = { kind, name, id, width, height };
    sources.set(keyOf(plate), Promise.resolve(source));
    return plate;
  }

  return {
    add,
    load(plate) {
      const key = keyOf(plate);
      if (!sources.has(key)) {
        const source = make(plate);
        sources.set(key, source);
        source.catch(() => sources.delete(key));
      }
      return sources.get(key);
    },
    async open(file) {
      const media = await openMedia(file);
      return add(media.kind === 'video' ? videoSource(media.video, `video:${++lastVideo}`) : stillSource(media.plate));
    },
  };
}
