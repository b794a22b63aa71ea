// Between the page's state and a scene, as the engine's readScene and writeScene know it: { render, parameters }.

import { equalValues, hasValue } from '../state/declarations.js';
import { kMostFrames } from '../state/time_span.js';

// What a scene may ask of the tool and the page has no part in.
const kOfTheToolAlone = [
  'alpha',
  'compression',
  'codec',
  'quality',
  'sound',
  'retime',
  'proxy',
  'depth',
  'pixelAspect',
];

/** The file that the tool would be given as the input for this plate. */
export function inputOf(plate) {
  return plate.kind === 'shipped' ? `${plate.name}.png` : (plate.path ?? plate.name);
}

/** The frames from first to last in the words of `--frames`. */
export function framesText({ first, last }) {
  return first === last ? String(first) : `${first}-${last}`;
}

/** The scene that renders all frames of the state. `input` and `output` are file names; a blank plate has no input. */
export function sceneOfState({ plate, parameters, time }, { input = inputOf(plate), output = 'snow.mp4' } = {}) {
  const under = plate.kind === 'blank' ? { blank: plate.name } : { input };
  return {
    render: { ...under, output, frames: framesText(time), fps: String(time.fps), shutter: time.shutter },
    parameters,
  };
}

/**
 * What a scene says about the page's state: { plate, parameters, time, notes }. `plate` is there when the scene names
 * a blank or a shipped one (`shippedPlates` are their names), `time` holds what the scene says, `notes` are sentences
 * about what the page leaves out.
 */
export function stateOfScene({ render, parameters }, declarations, shippedPlates) {
  const notes = [];
  const time = {};
  const span = render.frames === undefined ? null : spanOf(String(render.frames), notes);
  if (span) {
    Object.assign(time, span, { frame: span.first });
  }
  if (render.fps !== undefined && render.fps !== '') {
    time.fps = String(render.fps);
  }
  if (render.shutter !== undefined) {
    time.shutter = render.shutter;
  }
  const leftOut = kOfTheToolAlone.filter((name) => render[name] !== undefined);
  if (leftOut.length > 0) {
    notes.push(`the page has no use for ${leftOut.join(', ')} in the scene's [render]`);
  }
  return {
    plate: plateOf(render, shippedPlates, notes),
    parameters: changed(parameters, declarations),
    time,
    notes,
  };
}

function plateOf({ input, blank }, shippedPlates, notes) {
  if (!input) {
    return blank ? { kind: 'blank', name: blank } : undefined;
  }
  const name = input.replace(/^.*\//, '').replace(/\.png$/, '');
  if (shippedPlates.includes(name)) {
    return { kind: 'shipped', name };
  }
  notes.push(`the scene's input is ${input}; open it to see the snow on it`);
  return undefined;
}

function changed(parameters, declarations) {
  const differs = ({ slug, default: usual }) =>
    parameters[slug] !== undefined && !equalValues(parameters[slug], usual);
  return Object.fromEntries(
    declarations
      .filter((declaration) => hasValue(declaration) && differs(declaration))
      .map(({ slug }) => [slug, parameters[slug]]),
  );
}

// The page plays every frame from the first to the last.
function spanOf(text, notes) {
  const items = text.split(',').map((item) => /^(-?\d+)(?:-(-?\d+)([xy]\d+)?)?$/.exec(item.trim()));
  if (items.includes(null)) {
    return null;
  }
  const ends = items.flatMap(([, first, last]) => [Number(first), Number(last ?? first)]);
  const [first, last] = [Math.min(...ends), Math.max(...ends)];
  if (last - first >= kMostFrames) {
    notes.push(`frames ${text} are too many to play`);
    return null;
  }
  if (items.length > 1 || items[0][3]) {
    notes.push(`the page plays all frames from ${first} to ${last}; the scene picks ${text}`);
  }
  return { first, last };
}
