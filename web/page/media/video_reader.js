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
    throw new MediaError('has no pictures in it');
  }
  const codec = await track.getCodec();
  if (typeof VideoDecoder === 'undefined') {
    throw new MediaError('is a video, and this browser has no decoder for pages (WebCodecs)');
  }
  if (!(await track.canDecode())) {
    throw new MediaError(`holds ${codec ?? 'unknown'} video, which this browser does not decode`);
  }
  const index = indexOf(await picturesOf(track));
  const frames = new FrameDecoder(track, index);
  return { about: { ...(await shapeOf(track)), ...index, codec }, frames, close: () => input.dispose() };
}

async function picturesOf(track) {
  const pictures = [];
  for await (const packet of new EncodedPacketSink(track).packets(undefined, undefined, { metadataOnly: true })) {
    if (packet.timestamp >= 0) {
      pictures.push({ time: packet.timestamp, duration: packet.duration }); // what lies before is decoded, not shown
    }
  }
  if (pictures.length === 0) {
    throw new MediaError('has no pictures in it');
  }
  return pictures;
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
