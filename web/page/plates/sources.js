// Where plates come from.  A source is
//
//   { kind, name, id, label, width, height, pixelAspect, frames, fps, notes, plateAt(frame) }
//
// `frames` is { first, last }, or undefined for a still; plateAt promises the engine's plate of a frame (for a still
// always the same one).  A frame outside of a clip shows its nearest.

import { decodePicture } from '../media/picture.js';

export const kShipped = [
  { name: 'street', label: 'Street at dusk' },
  { name: 'window', label: 'Window, with alpha' },
];

export async function shippedSource(name) {
  const response = await fetch(new URL(`../plates/${name}.png`, import.meta.url));
  if (!response.ok) {
    throw new Error(`the plate '${name}' could not be loaded (${response.status})`);
  }
  const plate = await decodePicture(await response.blob(), `${name}.png`);
  return { ...stillSource({ ...plate, id: `shipped:${name}` }), kind: 'shipped', name };
}

/** A transparent layer, named by its size: "1920x1080". */
export function blankSource(name) {
  const [width, height] = name.split('x').map(Number);
  const plate = { blank: true, width, height };
  return { ...stillSource({ ...plate, id: `blank:${name}`, name: 'Blank', notes: [] }), kind: 'blank', name };
}

/** `plate` as decodePicture gives it. */
export function stillSource(plate) {
  const { id, name, width, height, pixelAspect = 1, notes } = plate;
  const promised = Promise.resolve(plate);
  return { kind: 'picture', name, id, label: name, width, height, pixelAspect, notes, plateAt: () => promised };
}

/** `video` as openVideo gives it. */
export function videoSource(video, id) {
  const { name, width, height, pixelAspect, fps, frames, notes } = video;
  const within = (frame) => Math.min(Math.max(frame, 0), frames - 1);
  return {
    kind: 'video', name, id, label: name, width, height, pixelAspect, fps, notes,
    frames: { first: 0, last: frames - 1 },
    plateAt: (frame) => video.frameAt(within(frame)),
  };
}
