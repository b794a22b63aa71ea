// A clip being written, off the page's thread.

import { clipOf, encodableOf } from './clip_writer.js';
import { answerCalls } from './worker_calls.js';

let clip;

answerCalls({
  encodable: encodableOf,
  async begin(plan) {
    clip = await clipOf(plan);
  },
  add: (frame) => clip.add(frame),
  finish: () => clip.finish(),
});
