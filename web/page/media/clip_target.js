// Where a clip's bytes go: into memory, or into a file as they come. Runs in a worker.

import { BufferTarget, StreamTarget } from '../lib/mediabunny.min.mjs';

/**
 * `file` is the handle of a file that the visitor chose, or undefined. Returns
 *   target     for the writer of the container
 *   finish()   promises the bytes, or undefined when they are in the file
 *   cancel()   leaves a file that was there as it was, and none that was not
 */
export async function clipTargetOf(file) {
  return file ? targetInFile(file) : targetInMemory();
}

function targetInMemory() {
  const target = new BufferTarget();
  return { target, finish: async () => target.buffer, cancel: async () => {} };
}

async function targetInFile(file) {
  const stream = await file.createWritable();
  return {
    // Ending the container must not end the file: what is in it takes the place of the old one when all is well.
    target: new StreamTarget(new WritableStream({ write: (chunk) => stream.write(chunk) }), { chunked: true }),
    async finish() {
      await stream.close();
    },
    async cancel() {
      await stream.abort().catch(() => {});
      const isNew = (await file.getFile()).size === 0; // choosing a new name has made an empty file
      if (isNew) {
        await file.remove?.();
      }
    },
  };
}
