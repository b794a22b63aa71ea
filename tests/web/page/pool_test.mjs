// Workers that fail: ones that do not load, and an engine that is stopped halfway.

import assert from 'node:assert/strict';
import test from 'node:test';

import { startBrowser } from './support/browser.mjs';

// (module (func (export "trap") unreachable))
const kTrap = `const trap = () => new WebAssembly.Instance(new WebAssembly.Module(Uint8Array.from([
  0, 97, 115, 109, 1, 0, 0, 0, 1, 4, 1, 96, 0, 0, 3, 2, 1, 0, 7, 8, 1, 4, 116, 114, 97, 112, 0, 0, 10, 5, 1, 3, 0, 0, 11,
]))).exports.trap();\n`;

test('frames come from the workers that are left, and from a new engine after a trap', async (context) => {
  const browser = await startBrowser();
  context.after(() => browser.close());
  const { page } = await browser.open({ path: 'package.json' }); // any file of the site: its modules alone are tried
  // The first worker is for all that must not wait; the second does not load, which shows when it has been asked for
  // frames already; and frame 13 stops the engine. Scripts need not be fetched in the order of their workers.
  await page.evaluate(() => {
    let count = 0;
    window.Worker = class extends Worker {
      constructor(url, options) {
        super(`${url}?${++count}`, options);
      }
    };
  });
  let asked = 0;
  await page.route('**/render/worker.js?*', async (route) => {
    asked += 1;
    if (route.request().url().endsWith('?2')) {
      await page.waitForFunction(() => window.isAsked);
      await route.fulfill({ status: 404 });
      return;
    }
    const response = await route.fetch();
    const script = (await response.text()).replace('engine.render(', 'request.frame === 13 ? trap() : $&');
    assert.match(script, /trap/);
    await route.fulfill({ response, body: kTrap + script });
  });
  const found = await page.evaluate(async () => {
    const { createPool } = await import('/render/pool.js');
    const data = Uint8ClampedArray.from({ length: 64 * 48 * 4 }, (_, at) => (at % 4 === 3 ? 255 : at % 251));
    const plate = { id: 'ramp', width: 64, height: 48, data };
    const parameters = { size: 9, opacity: 100 };
    const render = (pool, frame) =>
      pool.render({ plate, parameters, frame }).then(
        (image) => String(image.data),
        (error) => `${error.name}: ${error.message}`,
      );
    const frames = [0, 1, 2, 13, 3, 4];
    const all = async (pool) => {
      const rendered = Promise.all(frames.map((frame) => render(pool, frame)));
      window.isAsked = true;
      await rendered;
      pool.close();
      return rendered;
    };
    const oneFails = await all(await createPool({ size: 2 }));
    const noneFails = await all(await createPool({ size: 1 }));
    return { oneFails, noneFails, isChanging: new Set(oneFails).size === frames.length };
  });
  assert.equal(asked, 5);
  assert.match(found.oneFails[3], /RuntimeError|unreachable/);
  assert.deepEqual(found.oneFails, found.noneFails);
  assert.ok(found.isChanging, 'each frame is another');
});

test('what a worker that did not load was to do, another does when it is asked again', async (context) => {
  const browser = await startBrowser();
  context.after(() => browser.close());
  const { page } = await browser.open({ path: 'package.json' });
  const ask = async () => {
    const { clipFormats } = await import('/media/clip.js');
    return clipFormats({ width: 64, height: 64 }).then((formats) => formats.length, (error) => error.message);
  };
  await page.route('**/mediabunny.min.mjs', (route) => route.abort());
  assert.match(String(await page.evaluate(ask)), /could not be loaded/);
  await page.unroute('**/mediabunny.min.mjs');
  assert.equal(await page.evaluate(ask), 2);
});
