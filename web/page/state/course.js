// A parameter's course over time: one value throughout, or keys with an ease from each to the next.
//
// The engine has the last word on what a frame looks like; the same interpolation stands here so that a control can
// show its value at the playhead and a curve can be drawn without asking a worker.  Nothing here changes its arguments.

/** How a key leads to the next one. */
export const kEases = ['hold', 'linear', 'smooth'];

export function isKeyed(course) {
  return typeof course === 'object' && course !== null && Array.isArray(course.keys);
}

/** Before the first key its value, after the last key its value, on a key exactly that key's value. */
export function valueAt(course, frame) {
  if (!isKeyed(course)) {
    return course;
  }
  const { keys } = course;
  const next = keys.findIndex((key) => key.frame >= frame);
  return next < 0 ? keys.at(-1).value : valueBetween(keys[next - 1], keys[next], frame);
}

/** The value at a frame after `leaving` and not after `coming`, keys that follow each other; either may be undefined. */
export function valueBetween(leaving, coming, frame) {
  if (!leaving || coming?.frame === frame) {
    return coming.value;
  }
  if (!coming || leaving.ease === 'hold') {
    return leaving.value;
  }
  const t = (frame - leaving.frame) / (coming.frame - leaving.frame);
  return mix(leaving.value, coming.value, leaving.ease === 'smooth' ? t * t * (3 - 2 * t) : t);
}

export function keyAt(course, frame) {
  return isKeyed(course) ? course.keys.find((key) => key.frame === frame) : undefined;
}

/** The course with a key of this value at the frame.  A new key leads on as the one before it does. */
export function withKey(course, frame, value, ease) {
  const keys = isKeyed(course) ? course.keys : [];
  const before = keys.findLast((key) => key.frame <= frame) ?? keys[0];
  const key = { frame, value, ease: ease ?? before?.ease ?? 'smooth' };
  return { keys: inOrder([...keys.filter((other) => other.frame !== frame), key]) };
}

/** The course without the key there; the last key that goes leaves its value behind as a constant. */
export function withoutKey(course, frame) {
  const keys = course.keys.filter((key) => key.frame !== frame);
  return keys.length > 0 ? { keys } : course.keys[0].value;
}

/** The course with the key at `from` moved to `to`, where it replaces a key that stands there. */
export function withMovedKey(course, from, to) {
  const moved = keyAt(course, from);
  if (!moved || from === to) {
    return course;
  }
  const others = course.keys.filter((key) => key !== moved && key.frame !== to);
  return { keys: inOrder([...others, { ...moved, frame: to }]) };
}

export function withEase(course, frame, ease) {
  return { keys: course.keys.map((key) => (key.frame === frame ? { ...key, ease } : key)) };
}

/** The nearest frame with a key before (step -1) or after (step 1) this one in any of the courses, or undefined. */
export function neighbouringKeyFrame(courses, frame, step) {
  const frames = courses.filter(isKeyed).flatMap((course) => course.keys.map((key) => key.frame));
  const beyond = frames.filter((other) => (step < 0 ? other < frame : other > frame));
  return beyond.length > 0 ? (step < 0 ? Math.max(...beyond) : Math.min(...beyond)) : undefined;
}

function inOrder(keys) {
  return keys.sort((a, b) => a.frame - b.frame);
}

function mix(from, to, t) {
  return Array.isArray(from) ? from.map((part, i) => mix(part, to[i], t)) : from + (to - from) * t;
}
