// Clips out: frames rendered in any order, encoded one after the other.

import { parseRate } from '../share/rate.js';
import { MediaError } from './media_error.js';
import { workerAt } from './worker_calls.js';

const kFormats = [
  { id: 'mp4', label: 'MP4 (H.264)', codecs: ['avc'] },
  { id: 'webm', label: 'WebM (VP9 or AV1)', codecs: ['vp9', 'av1'] },
];
const kFramesAhead = 8;

/** Where clips are encoded. */
export const clipWorker = workerAt(new URL('./clip_worker.js', import.meta.url));

/**
 * What this browser can write at a size and a rate's text: [{ id, label, available, reason, note }]. `reason` says why
 * a format is not available, `note` what happens to the picture's size; both may be empty.
 */
export async function clipFormats({ width, height, fps = '24' }) {
  if (typeof VideoEncoder === 'undefined') {
    const reason = 'this browser has no encoder for pages (WebCodecs)';
    return kFormats.map(({ id, label }) => ({ id, label, available: false, reason, note: '' }));
  }
  const even = evenSize(width, height);
  const rate = parseRate(fps);
  return Promise.all(
    kFormats.map(async ({ id, label, codecs }) => {
      const codec = await clipWorker().call('encodable', { codecs, rate, ...even });
      const reason = codec ? '' : `this browser does not encode ${label} at ${even.width} × ${even.height}`;
      return { id, label, available: codec !== null, reason, note: noteOf(width, height) };
    }),
  );
}

/**
 * The Blob of a clip; undefined when it was written into `file`, the handle of a file that the visitor chose, which
 * keeps a long one out of memory. `frames` are frame numbers in their order; `renderFrame(n)` promises { width, height, data },
 * straight RGBA of 8 bits, and is called for several frames ahead; its data stays the caller's. `fps` is a rate's
 * text. `onProgress({ done, count })` is told after every frame. The clip is opaque: over black where there is no
 * plate, and even in size, so an odd picture loses its last row or column. Rejects with MediaError where the browser
 * cannot, with AbortError when `signal` says so.
 */
export async function exportClip({ renderFrame, frames, fps, width, height, format, file, signal, onProgress = () => {} }) {
  const numbers = [...frames];
  const rate = parseRate(fps);
  const known = kFormats.find(({ id }) => id === format);
  if (!known || !rate || numbers.length === 0) {
    throw new MediaError(`there is no clip of ${numbers.length} frames at ${fps} frames a second in '${format}'`);
  }
  if (typeof VideoEncoder === 'undefined') {
    throw new MediaError('this browser has no encoder for pages (WebCodecs); export a picture, or copy the command');
  }
  signal?.throwIfAborted();
  const calls = clipWorker();
  const size = evenSize(width, height);
  const codec = await calls.call('encodable', { codecs: known.codecs, rate, ...size });
  if (!codec) {
    throw new MediaError(`this browser does not encode ${known.label} at ${size.width} × ${size.height}`);
  }
  const clip = await calls.call('begin', { format, codec, rate, count: numbers.length, file, ...size });
  try {
    for await (const frame of renderedAhead(numbers, renderFrame)) {
      signal?.throwIfAborted();
      await calls.call('add', { clip, frame: frame.picture });
      onProgress({ done: frame.done, count: numbers.length });
    }
    signal?.throwIfAborted();
    return await calls.call('finish', clip);
  } finally {
    await calls.call('cancel', clip).catch(() => {}); // of one that is finished, nothing
  }
}

/** The frames in their order, while the next ones are being rendered. */
async function* renderedAhead(numbers, renderFrame) {
  const ahead = [];
  for (let begun = 0, done = 1; done <= numbers.length; ++done) {
    for (; begun < numbers.length && ahead.length < kFramesAhead; ++begun) {
      const frame = Promise.resolve(renderFrame(numbers[begun]));
      frame.catch(() => {}); // thrown when its turn comes
      ahead.push(frame);
    }
    const { width, height, data } = await ahead.shift();
    yield { picture: { width, height, data }, done };
  }
}

// Clips keep one color for two by two pixels.
function evenSize(width, height) {
  if (width < 2 || height < 2) {
    throw new MediaError(`a picture of ${width} × ${height} is too small for a clip`);
  }
  return { width: width & ~1, height: height & ~1 };
}

function noteOf(width, height) {
  const even = evenSize(width, height);
  const isEven = even.width === width && even.height === height;
  return isEven ? '' : `a clip needs an even size: ${width} × ${height} becomes ${even.width} × ${even.height}`;
}
