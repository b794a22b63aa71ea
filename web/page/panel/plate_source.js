// The frames of the tool's input as plates, kept for a while and fetched ahead.

import { ByteCache } from '../media/byte_cache.js';

const kMostBytes = 384 << 20;
const kFramesAhead = 4;

/**
 * Plates of the input that PanelClient's panel() tells of: { name, path, width, height, pixelAspect, fps, first, last,
 * isStill, notes, frameAt(n) }. `frameAt(n)` promises the plate of a frame and begins to fetch the next ones;
 * a still is the same plate at any frame and has no `fps`. Which frames there are is the tool's to say: others reject
 * with its words.
 */
export function plateSourceOf(client, input) {
  const { name, path, width, height, pixelAspect, first, last, isStill, notes } = input;
  const fps = input.fps?.replace(/\/1$/, '');
  const plates = new ByteCache(kMostBytes);

  function fetchFrame(number) {
    if (!plates.has(number)) {
      const plate = client
        .frame(number)
        .then((frame) => ({ id: `panel:${number}`, name, pixelAspect, notes, ...frame }));
      plate.catch(() => plates.delete(number));
      plates.set(number, plate, width * height * 4);
    }
    return plates.get(number);
  }

  function fetchAhead(number) {
    for (let next = number + 1; next <= Math.min(number + kFramesAhead, last); ++next) {
      fetchFrame(next).catch(() => {}); // whoever wants it hears of it
    }
  }

  return {
    ...{ name, path, width, height, pixelAspect, fps, first, last, isStill, notes },
    frameAt(number) {
      if (isStill) {
        return fetchFrame(first);
      }
      const plate = fetchFrame(number);
      // The wanted one first: it is not to wait for the others.
      plate.then(() => fetchAhead(number)).catch(() => {});
      return plate;
    },
  };
}
