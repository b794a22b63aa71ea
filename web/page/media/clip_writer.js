// One clip: frames in, a file out. Runs in a worker.

import {
  canEncodeVideo,
  Mp4OutputFormat,
  Output,
  Quality,
  VideoSample,
  VideoSampleSource,
  WebMOutputFormat,
} from '../lib/mediabunny.min.mjs';
import { kBitsPerPixel } from './clip_size.js';
import { clipTargetOf } from './clip_target.js';
import { MediaError } from './media_error.js';
import { colorSpaceOf, i420Of } from './yuv.js';

// Snow is noise to an encoder: a rate that is enough for a talking head smears it, so the quality is held instead.
const kQuantizers = { avc: 20, vp9: 40, av1: 120 };
const kKeySeconds = 2;

/** The first of `codecs` that this browser encodes at this size and rate, or null. */
export async function encodableOf({ codecs, width, height, rate }) {
  for (const codec of codecs) {
    if (await canEncodeVideo(codec, { width, height, quality: qualityOf(codec, width, height, rate) })) {
      return codec;
    }
  }
  return null;
}

/**
 * Begins a clip of `count` frames at a constant rate of numerator / denominator frames a second, in `file` where there
 * is one.
 */
export async function clipOf({ format, codec, width, height, rate, count, file }) {
  let added = 0;
  let encoded = 0;
  const { target, ...destination } = await clipTargetOf(file);
  // Players want an MP4's index first: room is left for it where what is written cannot be moved.
  const container = format === 'mp4' ? new Mp4OutputFormat({ fastStart: file ? 'reserve' : 'in-memory' }) : new WebMOutputFormat();
  const output = new Output({ format: container, target });
  const source = new VideoSampleSource({
    codec,
    quality: qualityOf(codec, width, height, rate),
    keyFrameInterval: kKeySeconds,
    onEncodedPacket: () => ++encoded,
  });
  output.addVideoTrack(source, { frameRate: rate.perSecond, maximumPacketCount: count });
  await output.start();
  return {
    /** The next frame, straight RGBA; resolves when the encoder takes more. */
    async add(frame) {
      const sample = new VideoSample(i420Of(frame, width, height), {
        format: 'I420',
        colorSpace: colorSpaceOf(height),
        codedWidth: width,
        codedHeight: height,
        timestamp: (added * rate.denominator) / rate.numerator,
        duration: rate.denominator / rate.numerator,
      });
      ++added;
      try {
        await source.add(sample);
      } finally {
        sample.close();
      }
    },
    /** Ends the clip before its time. */
    async cancel() {
      await output.cancel().catch(() => {});
      await destination.cancel();
    },
    /** The whole file as a Blob; undefined when it is written. */
    async finish() {
      try {
        await output.finalize();
        if (encoded !== added) {
          throw new MediaError(`the browser's encoder kept ${encoded} of ${added} frames; try the other format`);
        }
      } catch (error) {
        await destination.cancel();
        throw error;
      }
      const buffer = await destination.finish();
      return buffer && new Blob([buffer], { type: format === 'mp4' ? 'video/mp4' : 'video/webm' });
    },
  };
}

// The bit rate counts where an encoder cannot hold a quality.
function qualityOf(codec, width, height, { perSecond }) {
  const bitrate = Math.round(width * height * perSecond * kBitsPerPixel);
  return new Quality({ quantizer: kQuantizers[codec], bitrate });
}
