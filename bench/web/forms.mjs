// The three forms of one frame: this machine's own, the engine in node, and the page's pool in Chromium. Each has
// render(request), which gives { milliseconds, hash } and, but for Chromium, `worked`, the milliseconds of its
// processor; and close().

import { spawn } from 'node:child_process';
import { createInterface } from 'node:readline';
import { pathToFileURL } from 'node:url';
import { join } from 'node:path';

/** An opaque plate of grain, in every form the same. It is run in the browser, too, so it stands alone. */
export function grainyPlate(width, height) {
  const data = new Uint8ClampedArray(width * height * 4);
  let state = 7;
  for (let i = 0; i < data.length; i += 1) {
    state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
    data[i] = i % 4 === 3 ? 255 : state >>> 24;
  }
  return { id: 'grain', width, height, data };
}

/** FNV-1a, as in native.cpp. It is run in the browser, too. */
export function hashOf(data) {
  let hash = 2166136261;
  for (let i = 0; i < data.length; i += 1) {
    hash = Math.imul(hash ^ data[i], 16777619);
  }
  return hash >>> 0;
}

export function startNative(program, plateFile, { width, height }) {
  const child = spawn(program, [plateFile, width, height], { stdio: ['pipe', 'pipe', 'inherit'] });
  const lines = createInterface({ input: child.stdout })[Symbol.asyncIterator]();
  return {
    async render(request) {
      child.stdin.write(`${JSON.stringify(request)}\n`);
      const { done, value } = await lines.next();
      if (done) {
        throw new Error('the native form ended');
      }
      return JSON.parse(value);
    },
    close: () => child.stdin.end(),
  };
}

/** The engine on node's own thread; `engine` itself, too, for scenes. */
export async function startNode(site, plate) {
  const { loadEngine } = await import(pathToFileURL(join(site, 'engine/engine.js')));
  const engine = await loadEngine();
  return {
    engine,
    async render({ parameters, frame, reduction }) {
      const began = process.cpuUsage();
      const { data, milliseconds } = engine.render({ plate, parameters, frame, reduction });
      const { user, system } = process.cpuUsage(began);
      return { milliseconds, worked: (user + system) / 1000, hash: hashOf(data) };
    },
    close() {},
  };
}

/**
 * Pools of the page in a tab without the page. render() is what somebody at the page waits for, the way to the
 * worker and back with it; play() renders frames as playback does and gives frames a second.
 */
export async function startChromium(browser, { width, height }, sizes) {
  // Any file of the same origin that starts nothing.
  const { page } = await browser.open({ path: 'package.json' });
  const setUp = `${grainyPlate}; ${hashOf}; Object.assign(window, { grainyPlate, hashOf });`;
  await page.addScriptTag({ content: setUp });
  await page.evaluate(
    async ([w, h, poolSizes]) => {
      const { createPool } = await import('/render/pool.js');
      const pools = new Map();
      for (const size of poolSizes) {
        pools.set(size, await createPool({ size }));
      }
      window.bench = { pools, plate: window.grainyPlate(w, h) };
    },
    [width, height, sizes],
  );
  return {
    render: ({ parameters, frame, reduction }) =>
      page.evaluate(
        async (request) => {
          const { pools, plate } = window.bench;
          const start = performance.now();
          const { data } = await pools.get(1).render({ ...request, plate });
          return { milliseconds: performance.now() - start, hash: window.hashOf(data) };
        },
        { parameters, frame, reduction },
      ),
    play: (size, parameters, first, count) =>
      page.evaluate(
        async ([poolSize, look, from, frames]) => {
          const { pools, plate } = window.bench;
          const request = (index) => ({ plate, parameters: look, frame: from + index });
          const all = (length) =>
            Promise.all(Array.from({ length }, (_, index) => pools.get(poolSize).render(request(index))));
          await all(poolSize); // every worker has the plate
          const start = performance.now();
          await all(frames);
          return (frames * 1000) / (performance.now() - start);
        },
        [size, parameters, first, count],
      ),
    close: () => page.context().close(),
  };
}

/** Milliseconds from asking for the page, with nothing cached, to its first full picture. */
export async function firstPicture(browser) {
  const { page } = await browser.open({ path: 'package.json' });
  await page.addInitScript(() => {
    new MutationObserver((_, observer) => {
      if (document.querySelector('.stage .badge')?.textContent) {
        window.firstPicture = performance.now();
        observer.disconnect();
      }
    }).observe(document, { childList: true, subtree: true, characterData: true });
  });
  await page.goto(new URL('/', page.url()).href);
  await page.waitForFunction(() => window.firstPicture);
  const milliseconds = await page.evaluate(() => window.firstPicture);
  await page.context().close();
  return milliseconds;
}
