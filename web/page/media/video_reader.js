// One video: its index, and its frames in any order. Runs in a worker.

import { ALL_FORMATS, BlobSource, EncodedPacketSink, Input, VideoSampleSink } from '../lib/mediabunny.min.mjs';
import { MediaError } from './media_error.js';
import { indexOf } from './video_index.js';

// Decoding on from the last frame is cheaper than beginning at a key picture, up to about so many frames.
const kMostAhead = 24;

/** Opens a video; `about` is what its owner needs to know. Throws MediaError, without the file's name in it. */
export async function readerOf(blob) {
  const input = new Input({ source: new BlobSource(blob), formats: ALL_FORMATS });
  if (!(await input.canRead())) {
    throw new MediaError('is not a picture or a video that this browser reads');
  }
  const track = await input.getPrimaryVideoTrack();
  if (!track) {
    const hasSound = (await input.getPrimaryAudioTrack()) !== null;
    throw new MediaError(hasSound ? 'has sound in it, and no video' : 'has no video in it that can be read; it may be cut short');
  }
  const codec = await track.getCodec();
  if (typeof VideoDecoder === 'undefined') {
    throw new MediaError('is a video, and this browser has no decoder for pages (WebCodecs)');
  }
  if (!(await track.canDecode())) {
    throw new MediaError(`holds ${codec ?? 'unknown'} video, which this browser does not decode`);
  }
  const listed = await picturesOf(track);
  const pictures = await withoutTail(track, listed);
  if (pictures.length === 0) {
    throw new MediaError(`has no pictures that can be read${listed.length > 0 ? ': it breaks off before the first' : ''}`);
  }
  const index = indexOf(pictures);
  const frames = new FrameDecoder(track, index);
  const missing = listed.length - pictures.length;
  return { about: { ...(await shapeOf(track)), ...index, codec, missing }, frames, close: () => input.dispose() };
}

// In the order of the file, which is that of decoding.
async function picturesOf(track) {
  const pictures = [];
  for await (const packet of new EncodedPacketSink(track).packets(undefined, undefined, { metadataOnly: true })) {
    if (packet.timestamp >= 0) {
      pictures.push({ time: packet.timestamp, duration: packet.duration }); // what lies before is decoded, not shown
    }
  }
  return pictures;
}

// A file that was cut short may still list all of its pictures: those before the first that is not there.
async function withoutTail(track, pictures) {
  const sink = new EncodedPacketSink(track);
  const isThere = async (at) => (await sink.getPacket(pictures[at].time).catch(() => null)) !== null;
  if (pictures.length === 0 || (await isThere(pictures.length - 1))) {
    return pictures;
  }
  let [low, high] = [0, pictures.length - 1]; // the first that is not there is between them
  while (low < high) {
    const middle = (low + high) >> 1;
    if (await isThere(middle)) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  const end = pictures.slice(low).reduce((least, { time }) => Math.min(least, time), Infinity);
  return pictures.filter(({ time }) => time < end);
}

async function shapeOf(track) {
  const [width, height] = [await track.getCodedWidth(), await track.getCodedHeight()];
  const { num, den } = await track.getPixelAspectRatio();
  const isSideways = (await track.getRotation()) % 180 !== 0;
  return isSideways
    ? { width: height, height: width, pixelAspect: den / num }
    : { width, height, pixelAspect: num / den };
}

class FrameDecoder {
  #sink;
  #index;
  #samples = null; // an iterator over what follows
  #next = 0; // the frame that it gives next, as far as it is known

  constructor(track, index) {
    this.#sink = new VideoSampleSink(track);
    this.#index = index;
  }

  /** Straight RGBA of one frame. One call at a time. */
  async pixelsAt(frame, { width, height }) {
    const time = this.#index.timeOf(frame);
    if (!this.#samples || frame < this.#next || frame > this.#next + kMostAhead) {
      await this.#samples?.return();
      this.#samples = this.#sink.samples(time);
    }
    this.#next = frame + 1;
    // Half a tick of the finest clock that containers keep.
    const kSameTime = 5e-7;
    for (;;) {
      const { value: sample, done } = await this.#samples.next();
      if (done) {
        this.#samples = null;
        throw new MediaError(`is damaged: frame ${frame} cannot be decoded`);
      }
      try {
        if (sample.timestamp >= time - kSameTime) {
          return drawn(sample, width, height);
        }
      } finally {
        sample.close();
      }
    }
  }
}

function drawn(sample, width, height) {
  const context = new OffscreenCanvas(width, height).getContext('2d', { willReadFrequently: true });
  sample.draw(context, 0, 0, width, height);
  return context.getImageData(0, 0, width, height).data;
}
