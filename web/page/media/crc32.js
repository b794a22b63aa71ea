// The cyclic redundancy check that PNG and zip share: polynomial 0xedb88320, bits reflected.

const kCrcOfByte = Int32Array.from({ length: 256 }, (_, byte) => {
  let crc = byte;
  for (let bit = 0; bit < 8; ++bit) {
    crc = crc & 1 ? (crc >>> 1) ^ 0xedb88320 : crc >>> 1;
  }
  return crc;
});

/** The checksum of a PNG's chunks. */
export function crc32(bytes) {
  let crc = -1;
  for (let at = 0; at < bytes.length; ++at) {
    crc = (crc >>> 8) ^ kCrcOfByte[(crc ^ bytes[at]) & 255];
  }
  return ~crc >>> 0;
}
