// The page as the tool's panel: its input, scenes saved and renders started from the page are the tool's own.

import assert from 'node:assert/strict';
import { execFileSync, spawn } from 'node:child_process';
import { existsSync, readFileSync } from 'node:fs';
import { once } from 'node:events';
import { join } from 'node:path';
import test from 'node:test';

import { startBrowser } from './support/browser.mjs';
import { enter, frameOnPage, isInAddress } from './support/hands.mjs';
import { writeColorVideo } from './support/pictures.mjs';
import { differenceOf, kTool, renderedByTool, temporaryFolder } from './support/tool.mjs';

const kFrames = 600; // with two million flakes more than any machine renders before a hand has found Stop

/** A panel of the tool in a folder: { address, stop() }, as Ctrl-C does. */
async function startPanel(context, folder, words) {
  const panel = spawn(kTool, ['panel', '--no-browser', ...words], { cwd: folder });
  context.after(() => panel.kill());
  let said = '';
  const address = await new Promise((found, failed) => {
    for (const stream of [panel.stdout, panel.stderr]) {
      stream.on('data', (text) => {
        said += text;
        const [line] = /http:\/\/127\S+/.exec(said) ?? [];
        if (line) {
          found(line);
        }
      });
    }
    panel.once('exit', () => failed(new Error(said)));
  });
  const stop = async () => {
    panel.kill('SIGINT');
    await once(panel, 'exit');
  };
  return { address, stop };
}

test('an editor sets keys on a clip, saves and renders, and the tool alone makes the same', async (context) => {
  const folder = temporaryFolder(context);
  writeColorVideo(join(folder, 'clip.mkv'), kFrames);
  const panel = await startPanel(context, folder, ['clip.mkv']);
  const browser = await startBrowser();
  context.after(() => browser.close());
  const { page, problems } = await browser.open({ path: panel.address });
  await page.locator('.plate-name').getByText('clip.mkv').waitFor();
  const field = (name) => page.getByRole('textbox', { name, exact: true });
  assert.equal(await field('Last frame').inputValue(), String(kFrames - 1));

  const size = page.locator('[data-slug=size]');
  await size.locator('.diamond').click();
  for (const [frame, value] of [
    [5, '9'],
    [11, '2.5'],
  ]) {
    await enter(field('Frame'), String(frame));
    await enter(size.getByRole('textbox'), value);
    await isInAddress(page, `${frame}:${value}`);
  }
  await enter(field('Frame'), '7');
  await isInAddress(page, 'at=7');
  const eases = /size=0:3(:\w)?,5:9(:\w)?,11:2.5(:\w)?/.exec(await page.evaluate(() => location.hash)).slice(1);
  const [first, second, third] = eases.map((ease) => ({ ':s': ':smooth', ':h': ':hold' })[ease] ?? '');
  const keys = `size@0=3${first},5=9${second},11=2.5${third}`;
  const byTool = await renderedByTool(folder, ['clip.mkv', '--frames', '7', '--key', keys]);
  assert.equal(differenceOf(await frameOnPage(page, folder), byTool), '');

  const save = async () => {
    await page.keyboard.press('Control+s');
    await enter(page.getByLabel('Scene file'), 'look.toml');
  };
  await save();
  await page.getByText(/the scene is in .*look.toml/i).waitFor();
  const saved = readFileSync(join(folder, 'look.toml'), 'utf8');
  await enter(size.getByRole('textbox'), '1');
  await isInAddress(page, '7:1');
  await save();
  await page.getByRole('dialog').getByRole('button', { name: 'Cancel' }).click();
  await enter(page.getByLabel('Scene file'), 'nowhere/look.toml');
  await page.getByRole('dialog').getByText(/nowhere/).waitFor();
  await page.keyboard.press('Escape');
  assert.equal(readFileSync(join(folder, 'look.toml'), 'utf8'), saved, 'a scene that was not to be replaced');
  await page.keyboard.press('Control+z');

  execFileSync(kTool, ['render', '--scene', 'look.toml', '-o', 'alone.####.png', '--frames', '0-11', '--quiet'], { cwd: folder });
  await renderOnPage(page, 'page.####.png', '0-11');
  await page.getByText('Done: 12 frames').waitFor();
  for (let frame = 0; frame < 12; ++frame) {
    const [one, other] = ['alone', 'page'].map((name) =>
      readFileSync(join(folder, `${name}.${String(frame).padStart(4, '0')}.png`)),
    );
    assert.ok(one.equals(other), `frame ${frame}`);
  }
  await page.getByRole('dialog').getByRole('button', { name: 'Close' }).first().click();

  await enter(page.locator('[data-slug=flakes]').getByRole('textbox'), '2000000');
  await isInAddress(page, 'flakes=2000000');
  await renderOnPage(page, 'slow.####.png', '');
  await page.getByText(/^Frame \d+ written/).waitFor();
  await page.keyboard.press('Enter'); // on Stop, which has the focus
  await page.getByText(/^Stopped: /).waitFor();
  assert.ok(!existsSync(join(folder, `slow.${String(kFrames - 1).padStart(4, '0')}.png`)));
  await page.mouse.click(5, 450); // on the shade
  await page.locator('button:focus').getByText('Export').waitFor();
  const unexpected = problems.filter((problem) => !/ 40[09] /.test(problem)); // names that were refused
  assert.deepEqual(unexpected, []);

  await panel.stop();
  await save();
  await page
    .getByRole('dialog')
    .getByText(/^the tool does not answer/i)
    .waitFor();
});

async function renderOnPage(page, output, frames) {
  await page.getByRole('button', { name: 'Export' }).click();
  await page.getByRole('menuitem', { name: 'Render with the tool…' }).click();
  await page.getByLabel('Output').fill(output);
  if (frames) {
    await page.getByLabel('Frames', { exact: true }).fill(frames);
  }
  await page.getByRole('button', { name: 'Render', exact: true }).click();
}
