// What is to be rendered for a state: the request for a frame, and a text that tells looks apart.

/** Snow alone leaves the plate out of the frame, whatever the look says. */
const kAlone = { 'composite-with-original': 0 };

/** What one sees: the snow on its plate, the plate, both with a line between, or the snow alone. */
export const kShows = [
  { id: 'plate', label: 'Plate' },
  { id: 'wipe', label: 'Wipe' },
  { id: 'result', label: 'Snow on plate' },
  { id: 'snow', label: 'Snow alone' },
];

/** The parameters of what is seen. */
export function seenParameters({ parameters, view }) {
  return view.show === 'snow' ? { ...parameters, ...kAlone } : parameters;
}

export function requestFor(state, source, reduction) {
  const { fps, shutter } = state.time;
  return { source, parameters: seenParameters(state), fps, shutter, reduction };
}

/** Equal for requests whose frames are equal. */
export function lookText({ source, parameters, fps, shutter, reduction }) {
  return JSON.stringify([source.id, parameters, fps, shutter, reduction]);
}

/** Renders a frame of a request on the pool. */
export async function renderOn(pool, { source, ...request }, frame, options) {
  const plate = await source.plateAt(frame);
  options.signal?.throwIfAborted();
  return pool.render({ ...request, plate, frame, ...options });
}
