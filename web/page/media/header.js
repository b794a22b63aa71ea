// What a picture's first bytes say, so that one that is too large is refused before it is decoded.

const kPngSignature = [0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a];
const kLeastAspect = 0.01;
const kMostAspect = 100;

/** So much of a file is enough for readHeader, unless a JPEG has more metadata in front. */
export const kHeaderBytes = 1 << 18;

/**
 * The header of a PNG or JPEG: { format, width, height, bits, isCmyk, pixelAspect }, pixels as they are stored; null for
 * other files. `bits` are those of a channel; `pixelAspect` is a pixel's width over its height, as the tool counts it.
 */
export function readHeader(bytes) {
  const view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
  if (kPngSignature.every((byte, index) => bytes[index] === byte)) {
    return view.byteLength >= 33 ? readPng(view) : null;
  }
  return view.byteLength >= 4 && view.getUint16(0) === 0xffd8 ? readJpeg(view) : null;
}

function readPng(view) {
  const header = {
    format: 'PNG',
    width: view.getUint32(16),
    height: view.getUint32(20),
    bits: view.getUint8(24),
    isCmyk: false,
    pixelAspect: 1,
  };
  for (let at = 8; at + 8 <= view.byteLength; at += view.getUint32(at) + 12) {
    const type = view.getUint32(at + 4);
    if (type === kIdat) {
      break;
    }
    if (type === kPhys && at + 16 <= view.byteLength) {
      // Pixels a metre: as many more down as across make a pixel that much wider.
      header.pixelAspect = plausible(view.getUint32(at + 12) / view.getUint32(at + 8));
    }
  }
  return header;
}

const kIdat = 0x49444154;
const kPhys = 0x70485973;
const kJfif = 0x4a464946;

function readJpeg(view) {
  let pixelAspect = 1;
  for (let at = 2; at + 9 <= view.byteLength; at += view.getUint16(at + 2) + 2) {
    const marker = view.getUint16(at);
    if (marker === 0xffe0 && at + 16 <= view.byteLength && view.getUint32(at + 4) === kJfif) {
      pixelAspect = plausible(view.getUint16(at + 12) / view.getUint16(at + 14));
    }
    const isFrame = marker >= 0xffc0 && marker <= 0xffcf && ![0xffc4, 0xffc8, 0xffcc].includes(marker);
    if (isFrame) {
      const [height, width] = [view.getUint16(at + 5), view.getUint16(at + 7)];
      const isCmyk = at + 10 <= view.byteLength && view.getUint8(at + 9) === 4;
      return { format: 'JPEG', width, height, bits: view.getUint8(at + 4), isCmyk, pixelAspect };
    }
    if (marker < 0xff01 || marker === 0xffda) {
      break;
    }
  }
  return null;
}

function plausible(aspect) {
  return aspect >= kLeastAspect && aspect <= kMostAspect ? aspect : 1;
}
