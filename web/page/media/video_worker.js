// Videos being read, off the page's thread.

import { readerOf } from './video_reader.js';
import { answerCalls } from './worker_calls.js';

const readers = new Map(); // by number: { reader, lastFrame }, the promise of the frame that was asked for last
let lastReader = 0;

answerCalls({
  async open(blob) {
    const reader = await readerOf(blob);
    readers.set(++lastReader, { reader, lastFrame: Promise.resolve() });
    const { timeOf, ...about } = reader.about;
    return { reader: lastReader, ...about };
  },
  frame({ reader: number, frame }) {
    const { reader, lastFrame } = readers.get(number);
    const pixels = lastFrame.then(() => reader.frames.pixelsAt(frame, reader.about));
    readers.get(number).lastFrame = pixels.catch(() => {});
    return pixels.then((data) => ({ result: data, transfer: [data.buffer] }));
  },
  close(number) {
    readers.get(number)?.reader.close();
    readers.delete(number);
  },
});
