// The bytes of a decoded picture, straight and exact. Runs in a worker.
//
// A 2-D canvas keeps colors multiplied by alpha, so what lies under a low alpha comes back rounded, and under none is
// lost. A WebGL texture takes pixels as they are; it is read back in strips that fit the largest texture.

/**
 * Straight RGBA of an ImageBitmap that was made `kAsItIs`: { data, flaw }. `flaw` is empty, or says what the browser
 * did to the pixels: where there is no WebGL a 2-D canvas stands in, and some browsers alter whatever pages read back.
 */
export async function pixelsOf(bitmap) {
  const gl = contextOfPixels();
  if (!gl) {
    const data = readThroughCanvas(bitmap);
    return { data, flaw: isOpaque(data) ? '' : 'without WebGL, colors under transparent pixels are rounded' };
  }
  const flaw = (await isReadBackAsItIs(gl)) ? '' : 'this browser alters the pixels that pages read, to hide its user';
  const data = await readThroughTexture(gl, bitmap);
  gl.getExtension('WEBGL_lose_context')?.loseContext();
  return { data, flaw };
}

async function isReadBackAsItIs(gl) {
  const sample = new ImageData(
    Uint8ClampedArray.from({ length: 4096 }, (_, index) => (index * 37) ^ (index >> 5)),
    32,
  );
  const bitmap = await createImageBitmap(sample, kAsItIs);
  const read = await readThroughTexture(gl, bitmap);
  bitmap.close();
  return read.every((byte, index) => byte === sample.data[index]);
}

function contextOfPixels() {
  const gl = typeof OffscreenCanvas === 'undefined' ? null : new OffscreenCanvas(1, 1).getContext('webgl2');
  return gl && !gl.isContextLost() ? gl : null;
}

async function readThroughTexture(gl, bitmap) {
  const { width, height } = bitmap;
  const side = gl.getParameter(gl.MAX_TEXTURE_SIZE);
  const data = new Uint8ClampedArray(width * height * 4);
  const texture = gl.createTexture();
  gl.bindTexture(gl.TEXTURE_2D, texture);
  gl.bindFramebuffer(gl.FRAMEBUFFER, gl.createFramebuffer());
  gl.pixelStorei(gl.UNPACK_COLORSPACE_CONVERSION_WEBGL, gl.NONE);
  gl.pixelStorei(gl.PACK_ROW_LENGTH, width);
  // Small enough that driver and browser need little memory beside the picture's own.
  const rows = Math.max(1, Math.min(side, Math.floor(kMostStripPixels / Math.min(width, side))));
  for (let top = 0; top < height; top += rows) {
    for (let left = 0; left < width; left += side) {
      const [w, h] = [Math.min(side, width - left), Math.min(rows, height - top)];
      const isWhole = w === width && h === height;
      const piece = isWhole ? bitmap : await createImageBitmap(bitmap, left, top, w, h, kAsItIs);
      gl.texImage2D(gl.TEXTURE_2D, 0, gl.RGBA8, gl.RGBA, gl.UNSIGNED_BYTE, piece);
      gl.framebufferTexture2D(gl.FRAMEBUFFER, gl.COLOR_ATTACHMENT0, gl.TEXTURE_2D, texture, 0);
      gl.readPixels(0, 0, w, h, gl.RGBA, gl.UNSIGNED_BYTE, new Uint8Array(data.buffer), (top * width + left) * 4);
      if (!isWhole) {
        piece.close();
      }
    }
  }
  const error = gl.getError();
  if (error !== gl.NO_ERROR) {
    throw new Error(`the picture's pixels could not be read back (WebGL error ${error})`);
  }
  return data;
}

const kMostStripPixels = 1 << 22;

/** How a bitmap is made of a file: not one value changed. */
export const kAsItIs = { colorSpaceConversion: 'none', premultiplyAlpha: 'none' };

function readThroughCanvas(bitmap) {
  const { width, height } = bitmap;
  const context = new OffscreenCanvas(width, height).getContext('2d', { willReadFrequently: true });
  context.drawImage(bitmap, 0, 0);
  return context.getImageData(0, 0, width, height).data;
}

/** Whether no pixel of straight RGBA lets anything through. */
export function isOpaque(data) {
  for (let at = 3; at < data.length; at += 4) {
    if (data[at] !== 255) {
      return false;
    }
  }
  return true;
}
