// Whatever was dropped on the page.

import { MediaError } from './media_error.js';
import { decodePicture } from './picture.js';
import { openVideo } from './video.js';

/**
 * Opens a file by what is in it: { kind: 'picture', plate } or { kind: 'video', video }. Throws MediaError with a
 * sentence for the visitor.
 */
export async function openMedia(file) {
  const name = file.name ?? 'the file';
  if (file.size === 0) {
    throw new MediaError(`${name} is empty, or a folder`);
  }
  if (file.type.startsWith('image/')) {
    return { kind: 'picture', plate: await decodePicture(file).catch((error) => hint(error, file)) };
  }
  try {
    return { kind: 'video', video: await openVideo(file) };
  } catch (error) {
    // Names and types may be wrong; what is in the file is not.
    const plate = file.type.startsWith('video/') ? null : await decodePicture(file).catch(onlyIfKnown);
    return plate ? { kind: 'picture', plate } : hint(error, file);
  }
}

const kOfTheTool = /\.(tiff?|exr|mov|mkv|mp4|webm|avi|mxf)$/i;

// Of what only a browser cannot read.
function hint(error, { name = '' }) {
  const canTheTool = error instanceof MediaError && kOfTheTool.test(name) && /this browser/.test(error.message);
  throw canTheTool ? new MediaError(`${error.message}; 'vintrel panel ${name}' may open it`) : error;
}

// Of a picture that is known as one, its own trouble counts.
function onlyIfKnown(error) {
  if (/too large|damaged/.test(error.message)) {
    throw error;
  }
  return null;
}
