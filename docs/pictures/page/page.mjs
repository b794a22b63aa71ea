// Takes the pictures of the page beside this file, in the browser of the tests: node docs/pictures/page/page.mjs, at the
// top of the sources, after ./run test or ./run web.

import { fileURLToPath } from 'node:url';

import { startBrowser } from '../../../tests/web/page/support/browser.mjs';

const kKeys =
  '#v=1&plate=street&at=210&time=0-719&flakes=30000&size=4&opacity=85&influence=45&offset=38;42' +
  '&speed=0:150:s,120:500:s,330:250&wind=0:0:s,96:-400:s,210:600:s,336:200';
const kWipe = '#v=1&plate=street&at=64';

const { open, close } = await startBrowser();

/** Opens the page at `path`, lets `act` do what a visitor does, and takes a picture when the full frame is there. */
async function take(name, path, colorScheme, act) {
  const { page, problems } = await open({ path, colorScheme });
  await act((role, label) => page.getByRole(role, { name: label }).first().click());
  // Away from the buttons, so that none is lit; the looks' small pictures come after the large one.
  await page.mouse.move(560, 110);
  await page.getByRole('status').getByText('full size').waitFor();
  await page.waitForLoadState('networkidle');
  await page.waitForTimeout(5000);
  const file = fileURLToPath(new URL(`${name}.jpg`, import.meta.url));
  await page.screenshot({ path: file, type: 'jpeg', quality: 80 });
  if (problems.length > 0) {
    throw new Error(problems.join('\n'));
  }
}

try {
  await take('dark', kKeys, 'dark', async (click) => {
    await click('button', 'Extras');
    await click('button', 'Zoom into the time');
    await click('button', 'Wind at frame 210');
  });
  await take('light', kWipe, 'light', async (click) => {
    await click('button', 'Heavy snow');
    await click('radio', 'Wipe');
  });
} finally {
  await close();
}
