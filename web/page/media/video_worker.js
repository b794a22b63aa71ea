// One video, off the page's thread.

import { readerOf } from './video_reader.js';
import { answerCalls } from './worker_calls.js';

let reader;
let lastFrame = Promise.resolve();

answerCalls({
  async open(blob) {
    reader = await readerOf(blob);
    const { timeOf, ...about } = reader.about;
    return about;
  },
  frame(frame) {
    const pixels = lastFrame.then(() => reader.frames.pixelsAt(frame, reader.about));
    lastFrame = pixels.catch(() => {});
    return pixels.then((data) => ({ result: data, transfer: [data.buffer] }));
  },
});
