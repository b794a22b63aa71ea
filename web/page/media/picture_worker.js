// Pictures in and out, off the page's thread.

import { MediaError } from './media_error.js';
import { kAsItIs, pixelsOf } from './pixels.js';
import { pngOf } from './png.js';
import { answerCalls } from './worker_calls.js';

answerCalls({
  async decode({ blob, mostPixels }) {
    const bitmap = await createImageBitmap(blob, kAsItIs);
    const { width, height } = bitmap;
    if (width * height > mostPixels) {
      throw new MediaError(`it has ${width} × ${height} pixels`);
    }
    const { data, flaw } = await pixelsOf(bitmap);
    bitmap.close();
    return { result: { width, height, data, flaw }, transfer: [data.buffer] };
  },
  encode: pngOf,
});
