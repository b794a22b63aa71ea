// Pictures, videos and clips on their way in and out of the page, held against the tool and FFmpeg.

import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import test from 'node:test';

import { bytesFrom, startBrowser } from './support/browser.mjs';
import { pngHeader, pngsOfAllKinds, writeGrayVideo } from './support/pictures.mjs';
import { differenceOf, pixelsOfFile, renderedByTool, temporaryFolder } from './support/tool.mjs';

let browser;
let page;
test.before(async () => {
  browser = await startBrowser();
  ({ page } = await browser.open({ path: 'package.json' })); // any file of the site: its modules alone are tried
  await page.evaluate(() => {
    window.fileOf = ([name, type, base64]) =>
      new File([Uint8Array.from(atob(base64), (letter) => letter.charCodeAt(0))], name, { type });
    window.base64Of = async (blob) => {
      const reader = new FileReader();
      reader.readAsDataURL(blob);
      await new Promise((done) => reader.addEventListener('load', done));
      return reader.result.slice(reader.result.indexOf(',') + 1);
    };
  });
});
test.after(() => browser.close());

test('pictures come in as the tool reads them, and go out as they are', async (context) => {
  const folder = temporaryFolder(context);
  for (const [kind, { bytes, pixelAspect }] of Object.entries(pngsOfAllKinds())) {
    writeFileSync(join(folder, 'in.png'), bytes);
    const byTool = await renderedByTool(folder, ['in.png', '--set', 'flakes=0']);
    const { width, height, data, file, aspect } = await bytesFrom(page, throughPage, [
      'in.png',
      'image/png',
      bytes.toString('base64'),
    ]);
    assert.equal(differenceOf({ width, height, data }, byTool), '', kind);
    assert.equal(aspect, pixelAspect, kind);
    writeFileSync(join(folder, 'out.png'), Buffer.from(file, 'base64'));
    assert.equal(differenceOf(await pixelsOfFile(join(folder, 'out.png')), byTool), '', `${kind}, written`);
  }
});

async function throughPage(given) {
  const { decodePicture, encodePng } = await import('/media/picture.js');
  const { width, height, data, pixelAspect } = await decodePicture(window.fileOf(given));
  const file = await window.base64Of(await encodePng({ width, height, data }));
  return { width, height, aspect: pixelAspect, file, data: await window.base64Of(new Blob([data])) };
}

test('what cannot be opened is named, with the reason', async () => {
  const open = async (given) => {
    const { openMedia } = await import('/media/open.js');
    return openMedia(window.fileOf(given)).then(
      ({ kind }) => kind,
      (error) => `${error.name}: ${error.message}`,
    );
  };
  const files = [
    [
      'notes.txt',
      'text/plain',
      'dear diary',
      /^MediaError: notes.txt is not a picture or a video that this browser reads$/,
    ],
    ['empty.png', 'image/png', '', /^MediaError: empty.png is empty/],
    [
      'big.png',
      'image/png',
      pngHeader(20000, 10000),
      /big.png is too large: it has 20000 × 10000 pixels, at most 64 mill/,
    ],
    ['long.png', 'image/png', pngHeader(40000, 10), /long.png is too large: it is 40000 pixels long, at most 32767/],
    ['cut.png', 'image/png', pngHeader(40, 10), /cut.png is damaged/],
    ['plate.exr', '', 'v/1.', /plate.exr is not .*'vintrel panel plate.exr' may open it/],
    ['picture', '', pngsOfAllKinds().gray.bytes, /^picture$/],
  ];
  for (const [name, type, bytes, answer] of files) {
    assert.match(await page.evaluate(open, [name, type, Buffer.from(bytes).toString('base64')]), answer, name);
  }
});

test("a video's frames are found by their number, in any order", async (context) => {
  const folder = temporaryFolder(context);
  for (const [name, codec] of [
    ['clip.mp4', 'libx264'],
    ['clip.webm', 'libvpx-vp9'],
  ]) {
    writeGrayVideo(join(folder, name), codec, 40, '30000/1001');
    const base64 = readFileSync(join(folder, name)).toString('base64');
    const { about, brightness, beyond } = await page.evaluate(
      async ([file, order]) => {
        const { openVideo } = await import('/media/video.js');
        const { frameAt, close, ...about } = await openVideo(window.fileOf(file));
        const plates = await Promise.all(order.map(frameAt));
        const beyond = await frameAt(40).catch((error) => error.message);
        close();
        return { about, beyond, brightness: plates.map(({ data }) => data[4 * 64 * 128 + 256]) };
      },
      [[name, '', base64], kOrder],
    );
    const { width, height, fps, frames, notes } = about;
    assert.deepEqual(
      { width, height, fps, frames, notes },
      { width: 128, height: 96, fps: '30000/1001', frames: 40, notes: [] },
    );
    kOrder.forEach((frame, index) => {
      const wanted = 60 + 4 * frame;
      assert.ok(
        Math.abs(brightness[index] - wanted) <= 1,
        `${name}, frame ${frame}: ${brightness[index]}, not ${wanted}`,
      );
    });
    assert.equal(beyond, `${name} has no frame 40; it has 0 to 39`);
  }
});

test('of a video that breaks off, what is there can be seen', async (context) => {
  const folder = temporaryFolder(context);
  const [clip, indexFirst] = ['clip.mp4', 'first.mp4'].map((name) => join(folder, name));
  writeGrayVideo(clip, 'libx264', 40, '25');
  execFileSync('ffmpeg', ['-v', 'error', '-i', clip, '-c', 'copy', '-movflags', '+faststart', indexFirst]);
  const whole = readFileSync(indexFirst);
  const open = async (file) => {
    const { openVideo } = await import('/media/video.js');
    const video = await openVideo(window.fileOf(file)).catch((error) => ({ error: error.message }));
    const last = await video.frameAt?.(video.frames - 1);
    return { ...video, frameAt: undefined, close: undefined, brightness: last?.data[4 * 64 * 128 + 256] };
  };
  const cutAt = (share) => [['cut.mp4', '', whole.subarray(0, whole.length * share).toString('base64')]];
  const { frames, notes, brightness } = await page.evaluate(open, ...cutAt(0.7));
  assert.ok(frames > 0 && frames < 40, `${frames} frames`);
  assert.deepEqual(notes, [`cut.mp4 breaks off: the last ${40 - frames} of its pictures are missing`]);
  assert.ok(Math.abs(brightness - (60 + 4 * (frames - 1))) <= 1, `${brightness} in the last of ${frames}`);
  assert.match((await page.evaluate(open, ...cutAt(0.2))).error, /^cut.mp4 has no video in it that can be read/);
});

const kOrder = [0, 1, 2, 39, 13, 12, 11, 25, 26, 30, 0];

test('a clip holds every frame at a constant rate, over black, even in size', async (context) => {
  const folder = temporaryFolder(context);
  for (const [format, into] of [
    ['mp4', 'memory'],
    ['webm', 'memory'],
    ['mp4', 'file'],
    ['webm', 'file'],
  ]) {
    const { data, progress } = await bytesFrom(page, exportRamp, { format, into });
    const file = join(folder, `${into}.${format}`);
    writeFileSync(file, data);
    assert.deepEqual(progress, { done: 20, count: 20 });
    const shape = 'width,height,avg_frame_rate,color_range,color_space,nb_read_frames';
    const probe = ['-v', 'error', '-count_frames', '-show_entries', `stream=${shape}`, '-of', 'json', file];
    const [stream] = JSON.parse(execFileSync('ffprobe', probe)).streams;
    const { nb_read_frames: frames, ...rest } = stream;
    assert.equal(frames, '20');
    const tags = { color_range: 'tv', color_space: 'smpte170m' };
    assert.deepEqual(rest, { width: 160, height: 128, ...tags, avg_frame_rate: '24000/1001' }, format);
    const raw = execFileSync('ffmpeg', ['-v', 'error', '-i', file, '-f', 'rawvideo', '-pix_fmt', 'rgb24', '-'], {
      maxBuffer: 1 << 26,
    });
    for (let frame = 0; frame < 20; ++frame) {
      const at = (160 * 128 * frame + 160 * 64) * 3;
      const wanted = [
        [200, 10 * frame, 40],
        [100, 5 * frame, 20],
      ]; // opaque, and half transparent
      for (const [index, place] of [at + 120, at + 360].entries()) {
        const got = [...raw.subarray(place, place + 3)];
        const isNear = got.every((value, channel) => Math.abs(value - wanted[index][channel]) <= 5);
        assert.ok(isNear, `${format}, frame ${frame}: ${got} is not ${wanted[index]}`);
      }
    }
  }
  for (const [name, content] of [
    ['new', undefined],
    ['old', 'what was there'],
  ]) {
    assert.deepEqual(await page.evaluate(cancelledExport, { name, content }), { error: 'AbortError', content });
  }
});

async function exportRamp({ format, into }) {
  const { exportClip } = await import('/media/clip.js');
  const folder = await navigator.storage.getDirectory();
  const file = into === 'file' ? await folder.getFileHandle(`clip.${format}`, { create: true }) : undefined;
  const [width, height] = [161, 129];
  const renderFrame = async (frame) => {
    await new Promise((done) => setTimeout(done, (frame % 3) * 5)); // frames become ready out of order
    const data = new Uint8ClampedArray(width * height * 4);
    for (let at = 0; at < data.length; at += 4) {
      data.set([200, 10 * (frame - 100), 40, (at / 4) % width < 80 ? 255 : 128], at);
    }
    return { width, height, data };
  };
  let progress;
  const frames = Array.from({ length: 20 }, (_, index) => 100 + index);
  const onProgress = (now) => (progress = now);
  const clip = await exportClip({ renderFrame, frames, fps: '24000/1001', width, height, format, file, onProgress });
  return { data: await window.base64Of(clip ?? (await file.getFile())), progress };
}

/** An export into a file that is stopped: the error, and what is in the file then, undefined where there is none. */
async function cancelledExport({ name, content }) {
  const { exportClip } = await import('/media/clip.js');
  const folder = await navigator.storage.getDirectory();
  const file = await folder.getFileHandle(name, { create: true });
  if (content) {
    const writable = await file.createWritable();
    await writable.write(content);
    await writable.close();
  }
  const stop = new AbortController();
  const data = new Uint8ClampedArray(64 * 64 * 4);
  const job = { frames: Array(1000).keys(), fps: '24', width: 64, height: 64, format: 'webm', signal: stop.signal };
  const renderFrame = async () => ({ width: 64, height: 64, data });
  const onProgress = ({ done }) => done === 3 && stop.abort();
  const error = await exportClip({ ...job, file, renderFrame, onProgress }).then(
    () => 'it went on',
    ({ name }) => name,
  );
  const left = await folder.getFileHandle(name).then((handle) => handle.getFile(), () => undefined);
  return { error, content: await left?.text() };
}
