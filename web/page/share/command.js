// The command line that renders what is seen, quoted for the shell.

import { isKeyed } from '../state/course.js';
import { equalValues, hasValue } from '../state/declarations.js';
import { framesText, inputOf } from './scene.js';
import { valueText } from './value_text.js';

// A longer line is no longer read; a scene file is better then.
const kMostCharacters = 1000;
const kSceneFile = 'snow.toml';

/**
 * The tool's command for a state: { line, sceneFile }.
 *
 * `frames` is 'one', the frame under the playhead as a picture, or 'all', a clip. `sceneFile` is null, or the name of a
 * scene file that the line expects because keys would make it too long; sceneOfState in scene.js says what it holds.
 */
export function commandOf(state, declarations, { frames = 'one', input, output } = {}) {
  const { plate, parameters, time } = state;
  const file = output ?? (frames === 'one' ? 'snow.png' : 'snow.mp4');
  const picked = framesText(frames === 'one' ? { first: time.frame, last: time.frame } : time);
  const under = plate.kind === 'blank' ? ['--blank', plate.name] : [input ?? inputWord(inputOf(plate))];
  const files = [...under, '-o', file, '--frames', picked];
  const look = [];
  if (plate.kind === 'video' || plate.kind === 'panel' || String(time.fps) !== '24') {
    look.push('--fps', String(time.fps));
  }
  if (time.shutter !== 180) {
    look.push('--shutter', String(time.shutter));
  }
  for (const declaration of declarations.filter(hasValue)) {
    const course = parameters[declaration.slug];
    if (course !== undefined && !equalValues(course, declaration.default)) {
      look.push(...settingOf(declaration, course));
    }
  }
  const line = lineOf([...files, ...look]);
  return line.length <= kMostCharacters
    ? { line, sceneFile: null }
    : { line: lineOf(['--scene', kSceneFile, ...files]), sceneFile: kSceneFile };
}

/** A word of a command line of sh. */
export function quoted(word) {
  return /^[A-Za-z0-9_%+=:,.\/@-]+$/.test(word) ? word : `'${word.replaceAll("'", `'\\''`)}'`;
}

function lineOf(words) {
  return ['vintrel', 'render', ...words].map(quoted).join(' ');
}

function settingOf(declaration, course) {
  if (!isKeyed(course)) {
    return ['--set', `${declaration.slug}=${valueText(declaration, course)}`];
  }
  const keys = course.keys.map(({ frame, value, ease = 'linear' }) => {
    const leadsOn = ease === 'linear' ? '' : `:${ease}`;
    return `${frame}=${valueText(declaration, value, ';')}${leadsOn}`;
  });
  return ['--key', `${declaration.slug}@${keys.join(',')}`];
}

// A dash at the front would begin an option.
function inputWord(name) {
  return name.startsWith('-') ? `./${name}` : name;
}
