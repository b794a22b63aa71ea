// Frames rendered for one look, by number, within a bound of bytes: what was rendered longest ago goes first, shown
// again or not, since what lies behind the playhead is wanted later than what was rendered ahead of it.

/** `onChange` hears of every frame that comes or goes. */
export function createFrameCache({ maxBytes, onChange = () => {} }) {
  let look;
  let bytes = 0;
  const frames = new Map();

  function drop(number) {
    bytes -= frames.get(number).data.byteLength;
    frames.delete(number);
  }

  return {
    /** Frames of another look are no use. */
    use(nextLook) {
      if (nextLook !== look) {
        look = nextLook;
        frames.clear();
        bytes = 0;
        onChange();
      }
    },
    get look() {
      return look;
    },
    get: (number) => frames.get(number),
    has: (number) => frames.has(number),
    put(ofLook, number, image) {
      if (ofLook !== look) {
        return;
      }
      if (frames.has(number)) {
        drop(number);
      }
      frames.set(number, image);
      bytes += image.data.byteLength;
      for (const oldest of frames.keys()) {
        if (bytes <= maxBytes || frames.size === 1) {
          break;
        }
        drop(oldest);
      }
      onChange();
    },
    /** How many frames of this size fit. */
    room: (byteLength) => Math.max(1, Math.floor(maxBytes / byteLength)),
    numbers: () => [...frames.keys()],
  };
}

/** A fair share of the machine's memory for frames. */
export function frameMemory() {
  const gigabytes = navigator.deviceMemory ?? 4;
  return Math.min(768, gigabytes * 96) * 2 ** 20;
}
