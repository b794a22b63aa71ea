// The page as a visitor uses it, by its controls alone; the tool says what its frames are to be.

import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import test from 'node:test';
import { promisify } from 'node:util';

import { bytesFrom, privateFile, startBrowser } from './support/browser.mjs';
import { downloaded, drop, enter, frameOnPage, isInAddress } from './support/hands.mjs';
import { pngsOfAllKinds } from './support/pictures.mjs';
import { differenceOf, kSources, pixelsOfFile, renderedByTool, temporaryFolder } from './support/tool.mjs';

const kPlate = pngsOfAllKinds()['every value under every alpha'].bytes;
const kStreet = join(kSources, 'examples/street.png');

let browser;
test.before(async () => {
  browser = await startBrowser();
});
test.after(() => browser.close());

/** A loaded page whose problems fail the test in the end. */
async function openPage(context, options) {
  const { page, problems } = await browser.open(options);
  await page.getByRole('button', { name: 'Turning wind' }).waitFor();
  context.after(async () => {
    await page.context().close();
    assert.deepEqual(problems, []);
  });
  return page;
}

test('each control changes the frame as the tool does with the same value', async (context) => {
  const folder = temporaryFolder(context);
  writeFileSync(join(folder, 'plate.png'), kPlate);
  const page = await openPage(context, { path: '#v=1&at=60' });
  await drop(page, 'plate.png', kPlate);
  await page.getByRole('button', { name: 'Picture' }).getByText('plate.png').waitFor();
  const closed = page.locator('.group-head[aria-expanded=false]');
  while ((await closed.count()) > 0) {
    await closed.first().click();
  }
  const words = ['plate.png', '--frames', '60'];
  let before = await frameOnPage(page, folder);
  assert.equal(differenceOf(before, await renderedByTool(folder, words)), '');
  const declarations = await page.evaluate(() => window.vintrel.parameters);
  // Without the original under it, parts of the effect are greyed out; so switches come last.
  const isSwitch = ({ type }) => (type === 'checkbox' ? 1 : 0);
  const controls = declarations.filter(({ type }) => !type.startsWith('group'));
  for (const declaration of controls.sort((one, other) => isSwitch(one) - isSwitch(other))) {
    const value = await operate(page, declaration);
    words.push('--set', `${declaration.slug}=${value}`);
    await isInAddress(page, `&${declaration.slug}=`);
    const after = await frameOnPage(page, folder);
    assert.equal(differenceOf(after, await renderedByTool(folder, words)), '', words.join(' '));
    assert.notEqual(differenceOf(after, before), '', `${declaration.slug} changes nothing`);
    before = after;
  }
});

/** Gives a parameter another value by its control, and says which. */
async function operate(page, { slug, type, default: usual, choices, sliderMin, sliderMax, decimals }) {
  const row = page.locator(`[data-slug="${slug}"]`);
  switch (type) {
    case 'checkbox':
      await row.getByRole('switch').click();
      return usual ? 'off' : 'on';
    case 'popup': {
      const other = choices[usual % choices.length];
      await row.getByRole('radio', { name: other }).click();
      return other;
    }
    case 'color':
      await enter(row.getByLabel('as text'), '#3fa0ff');
      return '#3fa0ff';
    case 'point':
      await enter(row.getByLabel('across'), '30.5');
      await isInAddress(page, `&${slug}=`);
      await enter(row.getByLabel('down'), '70');
      await isInAddress(page, `&${slug}=30.5;70`);
      return '30.5,70';
    default: {
      const value = (sliderMin + (sliderMax - sliderMin) * 0.7).toFixed(decimals);
      await enter(row.getByRole('textbox'), value);
      return value;
    }
  }
}

test('the keyboard alone sets a look, adds keys, plays and exports', async (context) => {
  const folder = temporaryFolder(context);
  const page = await openPage(context, { path: '#v=1&plate=window&at=0&time=0-7' });
  const press = (...keys) => keys.reduce((done, key) => done.then(() => page.keyboard.press(key)), Promise.resolve());
  const tabTo = async (selector) => {
    for (let step = 0; step < 60; ++step) {
      await press('Tab');
      if (await page.evaluate((wanted) => document.activeElement.matches(wanted), selector)) {
        return;
      }
    }
    assert.fail(`Tab does not come to ${selector}`);
  };

  await tabTo('[data-look=default]');
  await press('ArrowDown', 'ArrowDown', 'ArrowDown', 'ArrowDown', 'Enter');
  assert.equal(await page.locator('.look[aria-pressed=true]').count(), 1);
  assert.notEqual(await page.locator('.look[aria-pressed=true]').getAttribute('data-look'), 'default');
  await press('/');
  await page.keyboard.type('size');
  await tabTo('[data-slug=size] .diamond');
  await press('Enter', 'End');
  await tabTo('[data-slug=size] input');
  await page.keyboard.type('9.5');
  await press('Enter');
  await isInAddress(page, ',7:9.5');
  const hash = await page.evaluate(() => location.hash);
  assert.match(hash, /&size=0:[\d.]+(:\w)?,7:9.5/);

  await press('Shift+Tab', ' '); // from the field, which would take the blank, to the slider
  await page.getByRole('button', { name: 'Pause', exact: true }).waitFor();
  await page.waitForFunction(() => !['0', '7'].includes(document.querySelector('[aria-label=Frame]').value));
  await press(' ');
  await page.getByRole('button', { name: 'Play', exact: true }).waitFor();

  await page.evaluate(() => (window.saveIntoFile = true));
  await press('e');
  await page.locator('dialog button:focus').getByText('Export').waitFor();
  await press('Enter');
  await page.getByRole('status').getByText(/snow.mp4 is written, \d/).waitFor();
  const clip = join(folder, 'snow.mp4');
  writeFileSync(clip, (await bytesFrom(page, privateFile, 'snow.mp4')).data);
  const probe = [
    '-v',
    'error',
    '-count_frames',
    '-show_entries',
    'stream=width,height,nb_read_frames',
    '-of',
    'csv=p=0',
    clip,
  ];
  const { stdout } = await promisify(execFile)('ffprobe', probe);
  assert.equal(stdout.trim(), '1920,1080,8');
});

test('a link and a scene carry a look to another page and to the tool', async (context) => {
  const folder = temporaryFolder(context);
  const look = '&fps=30000/1001&shutter=300&flakes=30000&size=0:2:s,90:9&color=aabbcc&offset=0:20;20,90:70;80';
  const page = await openPage(context, { path: `#v=1&plate=street&at=50${look}` });
  const seen = await frameOnPage(page, folder);

  await page.context().grantPermissions(['clipboard-read', 'clipboard-write']);
  const copied = async (act) => {
    await act();
    await page.getByRole('status').getByText('copied').first().waitFor();
    return page.evaluate(() => navigator.clipboard.readText());
  };
  const link = await copied(() => page.getByRole('button', { name: 'Link' }).click());
  const other = await openPage(context, { path: new URL(link).hash });
  assert.equal(differenceOf(await frameOnPage(other, folder), seen), '', link);
  assert.ok(link.endsWith(`#v=1&plate=street&at=50${look}`), link);

  const scene = await downloaded(page, folder, () => page.keyboard.press('Control+s'));
  const words = ['--scene', scene, '-i', kStreet, '--frames', '50'];
  assert.equal(differenceOf(await renderedByTool(folder, words), seen), '');
  const third = await openPage(context);
  await drop(third, 'look.toml', readFileSync(scene));
  await isInAddress(third, '&size=0:2:s,90:9');
  await enter(third.getByRole('textbox', { name: 'Frame', exact: true }), '50');
  await isInAddress(third, 'at=50');
  assert.equal(differenceOf(await frameOnPage(third, folder), seen), '', 'the scene, opened again');

  const { line } = await page.evaluate(async () => {
    const [{ commandOf }, { hashToState }] = await Promise.all([
      import('/share/command.js'),
      import('/share/link.js'),
    ]);
    const state = hashToState(location.hash, window.vintrel.parameters);
    return commandOf(state, window.vintrel.parameters);
  });
  assert.ok(line.startsWith('vintrel render street.png -o snow.png --frames 50 '), line);
  const command = line.replace('vintrel render street.png -o snow.png', '"$0" render "$1" -o by-line.png --quiet');
  await promisify(execFile)('sh', ['-c', command, process.env.VINTREL_TOOL, kStreet], { cwd: folder });
  assert.equal(differenceOf(await pixelsOfFile(join(folder, 'by-line.png')), seen), '', line);
});

// They fit into a scene, but not with an ease for each, as the page keeps them.
const kManyKeys = Array.from({ length: 60000 }, (_, frame) => `[${frame}, 1]`).join();

test('what cannot be opened costs nothing, and steps are taken back', async (context) => {
  const page = await openPage(context, { path: '#v=1&plate=street&at=3&size=5' });
  const name = page.locator('.plate-name');
  const broken = [
    ['notes.txt', 'dear diary', /^notes.txt is not a picture or a video/i],
    ['broken.toml', '[parameters]\nsise = 3\n', /broken.toml:2:1: .*sise.*did you mean 'size'/i],
    ['empty.toml', '\n', /empty.toml is empty/],
    ['long.toml', `[parameters]\nwind = { keys = [${kManyKeys}] }`, /long.toml: .*longer than 1048576 bytes/],
    ['cut.png', kPlate.subarray(0, 60), /cut.png is damaged/i],
  ];
  const before = await page.evaluate(() => JSON.stringify(window.vintrel.state));
  for (const [file, bytes, words] of broken) {
    await drop(page, file, bytes);
    await page.getByRole('alert').getByText(words).waitFor();
    assert.equal(await name.textContent(), 'street.png');
    assert.equal(await page.evaluate(() => JSON.stringify(window.vintrel.state)), before);
  }
  await drop(page, 'plate.png', kPlate);
  await name.getByText('plate.png').waitFor();
  await enter(page.getByLabel('Size, as a number'), '7');
  await isInAddress(page, 'size=7');
  for (const [keys, plate, size] of [
    ['Control+z', 'plate.png', '5'],
    ['Control+z', 'street.png', '5'],
    ['Control+Shift+z', 'plate.png', '5'],
    ['Control+Shift+z', 'plate.png', '7'],
  ]) {
    await page.keyboard.press(keys);
    await name.getByText(plate).waitFor();
    await isInAddress(page, `size=${size}`);
  }
});

test('scripts get the frames that the tool renders', async (context) => {
  const folder = temporaryFolder(context);
  const page = await openPage(context);
  const frame = await bytesFrom(page, async () => {
    await window.vintrel.ready;
    const size = {
      keys: [
        { frame: 0, value: 2, ease: 'smooth' },
        { frame: 20, value: 9 },
      ],
    };
    const shot = {
      plate: 'window',
      frame: 12,
      fps: '25',
      parameters: { size, 'transfer-mode': 1, color: [255, 0, 128] },
    };
    const { width, height, data } = await window.vintrel.render(shot);
    const reader = new FileReader();
    reader.readAsDataURL(new Blob([data]));
    await new Promise((done) => reader.addEventListener('load', done));
    return { width, height, data: reader.result.slice(reader.result.indexOf(',') + 1) };
  });
  const look = ['--key', 'size@0=2:smooth,20=9', '--set', 'transfer-mode=composite', '--set', 'color=255,0,128'];
  const words = [join(kSources, 'examples/window.png'), '--frames', '12', '--fps', '25', ...look];
  assert.equal(differenceOf(frame, await renderedByTool(folder, words)), '');
});

test('nothing leaves the page, which goes on without a network', async (context) => {
  const folder = temporaryFolder(context);
  const { page, problems } = await browser.open();
  context.after(() => page.context().close());
  await page.getByRole('button', { name: 'Turning wind' }).waitFor();
  const isRefused = await page.evaluate(() =>
    fetch('https://example.com/').then(
      () => false,
      () => true,
    ),
  );
  assert.ok(isRefused);
  assert.match(problems.join('\n'), /Content Security Policy/);

  for (const file of ['clip_worker.js', 'video_worker.js']) {
    const isIt = (worker) => worker.url().endsWith(file);
    const worker = page.workers().find(isIt) ?? (await page.waitForEvent('worker', isIt));
    while (!(await worker.evaluate(() => self.onmessage !== null))) {} // it has loaded all of its modules then
  }
  await page.context().setOffline(true);
  problems.length = 0;
  await drop(page, 'plate.png', kPlate);
  await page.locator('.plate-name').getByText('plate.png').waitFor();
  await page.getByRole('button', { name: 'Blizzard' }).click();
  writeFileSync(join(folder, 'plate.png'), kPlate);
  assert.equal(
    differenceOf(
      await frameOnPage(page, folder),
      await renderedByTool(folder, ['plate.png', '--preset', 'blizzard']),
    ),
    '',
  );
  await enter(page.getByRole('textbox', { name: 'Last frame' }), '3');
  await page.keyboard.press('Tab');
  await page.getByRole('button', { name: 'Export' }).click();
  await page.getByRole('menuitem', { name: 'Clip…' }).click();
  await downloaded(page, folder, () => page.getByRole('dialog').getByRole('button', { name: 'Export' }).click());
  assert.deepEqual(problems, []);
});

test('whatever takes the focus has a name, and nothing sticks out, from 390 to 2560 pixels', async (context) => {
  for (const [width, height] of [
    [390, 844],
    [900, 700],
    [1440, 900],
    [2560, 1440],
  ]) {
    const page = await openPage(context, { viewport: { width, height } });
    const session = await page.context().newCDPSession(page);
    const { nodes } = await session.send('Accessibility.getFullAXTree');
    const takesFocus = ({ properties = [] }) =>
      properties.some(({ name, value }) => name === 'focusable' && value.value);
    const controls = nodes.filter((node) => !node.ignored && node.role.value !== 'RootWebArea' && takesFocus(node));
    const nameless = controls.filter(({ name }) => !name?.value);
    assert.deepEqual(nameless, []);
    assert.ok(controls.length > 30, `${controls.length} controls`);
    const tooNarrow = await page.evaluate(() =>
      [...document.querySelectorAll('html, .topbar, .view-bar, .transport')]
        .filter(({ scrollWidth, clientWidth }) => scrollWidth > clientWidth)
        .map(({ className }) => className),
    );
    assert.deepEqual(tooNarrow, [], `${width} wide`);
  }
});
