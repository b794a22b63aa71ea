// A video of the visitor's, frame by frame.

import { ByteCache } from './byte_cache.js';
import { MediaError } from './media_error.js';
import { workerAt } from './worker_calls.js';

const kMostBytes = 384 << 20;
const kMostPixels = 40e6;

/** Where videos are decoded. */
export const videoWorker = workerAt(new URL('./video_worker.js', import.meta.url));

/**
 * Opens a video: { name, width, height, pixelAspect, fps, frames, codec, notes, frameAt(n), close() }.
 *
 * Frames count from 0 as the tool counts them; `fps` is a rate's text. `frameAt(n)` promises the plate of a frame, the
 * same object while it is in a cache of bounded size. Colors are what the browser's decoder makes of the video, in 8
 * bits. Throws MediaError when the browser cannot read it; so does frameAt.
 */
export async function openVideo(blob, name = blob.name ?? 'video') {
  const ask = (what, argument) =>
    videoWorker()
      .call(what, argument)
      .catch((error) => {
        throw error instanceof MediaError ? new MediaError(`${name} ${error.message}`) : error;
      });
  const { reader, isConstant, missing, ...about } = await ask('open', blob);
  const { width, height, pixelAspect, fps, frames } = about;
  const close = () => ask('close', reader);
  if (width * height > kMostPixels) {
    close();
    const most = `at most ${kMostPixels / 1e6} million pixels a frame`;
    throw new MediaError(`${name} is too large: ${width} × ${height}, ${most}`);
  }
  const plates = new ByteCache(kMostBytes);
  const decode = async (frame) => {
    const data = await ask('frame', { reader, frame });
    return { id: `video:${reader}:${frame}`, name, width, height, data, pixelAspect, notes: [] };
  };
  return {
    name,
    ...about,
    notes: [
      !isConstant && `the rate of ${name} varies; its mean, ${fps}, is used`,
      missing > 0 && `${name} breaks off: the last ${missing} of its pictures are missing`,
    ].filter(Boolean),
    frameAt(frame) {
      if (!(Number.isInteger(frame) && frame >= 0 && frame < frames)) {
        return Promise.reject(new MediaError(`${name} has no frame ${frame}; it has 0 to ${frames - 1}`));
      }
      if (!plates.has(frame)) {
        const plate = decode(frame);
        plate.catch(() => plates.delete(frame));
        plates.set(frame, plate, width * height * 4);
      }
      return plates.get(frame);
    },
    close() {
      plates.clear();
      close();
    },
  };
}
