// Times the page's engine in node and in Chromium beside this machine's own form, in turn on the same frames, whose
// bytes must be equal:
//   node bench/web/bench.mjs web_native OUT.json [ROUNDS]
// Other work on the machine moves the milliseconds, and less so the ratios, least the one of processor time; the load
// before and after is told with the figures.

import { mkdirSync, mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { cpus, loadavg, tmpdir } from 'node:os';
import { dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';

import { firstPicture, grainyPlate, startChromium, startNative, startNode } from './forms.mjs';

const sources = resolve(dirname(fileURLToPath(import.meta.url)), '../..');
process.env.VINTREL_SOURCES ??= sources;
process.env.VINTREL_WEB ??= join(sources, 'out/web');
const { startBrowser } = await import('../../tests/web/page/support/browser.mjs');

const [native, out, roundsText = '5'] = process.argv.slice(2);
const rounds = Number(roundsText);
if (!native || !out || !(rounds >= 1)) {
  console.error('usage: bench.mjs web_native OUT.json [ROUNDS]');
  process.exit(2);
}

const size = { width: 1920, height: 1080 };
const firstFrame = 24;
const playedFrames = 24;
const cores = cpus().length;
const poolSizes = [...new Set([1, Math.max(1, cores - 1), cores])];

// A drag changes a value with each picture, so that nothing of the frame before is of use.
const cases = [
  { name: 'default look', flakes: 10000, reduction: 1 },
  { name: '200,000 flakes', flakes: 200000, reduction: 1 },
  { name: '200,000 flakes, reduced 2', flakes: 200000, reduction: 2 },
  { name: '200,000 flakes, reduced 4', flakes: 200000, reduction: 4, goal: 50 },
];

const median = (values) => [...values].sort((a, b) => a - b)[values.length >> 1];
const failures = [];

async function timeFrames(forms) {
  const times = cases.map(() => ({ native: [], node: [], chromium: [] }));
  const worked = cases.map(() => ({ native: [], node: [], chromium: [] }));
  for (let round = -1; round < rounds; round += 1) { // the first warms up
    for (const [at, { name, flakes, reduction }] of cases.entries()) {
      const parameters = { flakes, opacity: 60 + (round % 40) };
      const request = { parameters, frame: firstFrame, reduction };
      const scene = forms.node.engine.writeScene({ parameters });
      const hashes = {};
      for (const form of Object.keys(times[at])) {
        const { milliseconds, hash, ...rest } = await forms[form].render({ ...request, scene });
        hashes[form] = hash;
        if (round >= 0) {
          times[at][form].push(milliseconds);
          worked[at][form].push(rest.worked);
        }
      }
      if (new Set(Object.values(hashes)).size !== 1) {
        failures.push(`${name}: the forms' pixels differ: ${JSON.stringify(hashes)}`);
      }
    }
  }
  return cases.map(({ name, goal }, at) => {
    const { native: own, node, chromium } = times[at];
    const ratio = (form) => median(form.map((milliseconds, round) => milliseconds / own[round]));
    return {
      name, goal, native: median(own), node: median(node), chromium: median(chromium),
      nodeRatio: ratio(node), chromiumRatio: ratio(chromium),
      nativeWorked: median(worked[at].native), nodeWorked: median(worked[at].node),
    };
  });
}

// Frames a second of the default look: one native thread, then pools of the page.
async function timePlayback(forms) {
  const rates = new Map([['native, one thread', []], ...poolSizes.map((count) => [`Chromium, workers: ${count}`, []])]);
  const scene = forms.node.engine.writeScene({ parameters: {} });
  for (let round = 0; round < rounds; round += 1) {
    let milliseconds = 0;
    for (let index = 0; index < playedFrames; index += 1) {
      milliseconds += (await forms.native.render({ scene, frame: firstFrame + index, reduction: 1 })).milliseconds;
    }
    rates.get('native, one thread').push((playedFrames * 1000) / milliseconds);
    for (const count of poolSizes) {
      rates.get(`Chromium, workers: ${count}`).push(await forms.chromium.play(count, {}, firstFrame, playedFrames));
    }
  }
  return [...rates].map(([name, all]) => ({ name, framesPerSecond: median(all) }));
}

async function timeLoading(browser) {
  const times = [];
  for (let round = 0; round < rounds; round += 1) {
    times.push(await firstPicture(browser));
  }
  return median(times);
}

function print({ frames, playback, loading, loads }) {
  const row = (name, ...values) => console.log(name.padEnd(28), values.map((value) => value.padStart(10)).join(' '));
  row('ms a frame, 8 bits', 'native', 'node', 'Chromium', 'node/nat.', 'Chr./nat.', 'nat. cpu', 'node cpu');
  for (const one of frames) {
    row(one.name, one.native.toFixed(1), one.node.toFixed(1), one.chromium.toFixed(1),
      one.nodeRatio.toFixed(2), one.chromiumRatio.toFixed(2), one.nativeWorked.toFixed(1), one.nodeWorked.toFixed(1),
      one.goal ? `goal ${one.goal} ms` : '');
  }
  row('frames/s, default look', '');
  playback.forEach(({ name, framesPerSecond }) => row(name, framesPerSecond.toFixed(1)));
  row('first picture of the page', `${loading.toFixed(0)} ms`);
  row('load, before and after', ...loads.map((load) => load.toFixed(1)));
}

const loadBefore = loadavg()[0];
const folder = mkdtempSync(join(tmpdir(), 'vintrel-bench-'));
const browser = await startBrowser();
const forms = {};
try {
  const plate = grainyPlate(size.width, size.height);
  writeFileSync(join(folder, 'plate'), plate.data);
  forms.native = startNative(native, join(folder, 'plate'), size);
  forms.node = await startNode(process.env.VINTREL_WEB, plate);
  forms.chromium = await startChromium(browser, size, poolSizes);
  const frames = await timeFrames(forms);
  const playback = await timePlayback(forms);
  await forms.chromium.close();
  const loading = await timeLoading(browser);
  const result = {
    processor: cpus()[0].model, cores, node: process.version, rounds, loads: [loadBefore, loadavg()[0]], ...size,
    frames, playback, loading,
  };
  print(result);
  mkdirSync(dirname(resolve(out)), { recursive: true });
  writeFileSync(out, `${JSON.stringify({ ...result, failures }, null, 2)}\n`);
} finally {
  forms.native?.close();
  await browser.close();
  rmSync(folder, { recursive: true });
}
failures.forEach((failure) => console.error(`bench.mjs: ${failure}`));
process.exitCode = failures.length > 0 ? 1 : 0;
