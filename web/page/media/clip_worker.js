// Clips being written, off the page's thread.

import { clipOf, encodableOf } from './clip_writer.js';
import { answerCalls } from './worker_calls.js';

const clips = new Map(); // by number
let lastClip = 0;

function taken(number) {
  const clip = clips.get(number);
  clips.delete(number);
  return clip;
}

answerCalls({
  encodable: encodableOf,
  async begin(plan) {
    clips.set(++lastClip, await clipOf(plan));
    return lastClip;
  },
  add: ({ clip, frame }) => clips.get(clip).add(frame),
  finish: (number) => taken(number).finish(),
  cancel: (number) => taken(number)?.cancel(),
});
