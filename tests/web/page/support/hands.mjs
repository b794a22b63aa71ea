// What a visitor does, step by step.

import { join } from 'node:path';

import { pixelsOfFile } from './tool.mjs';

/** Drops a file on the page. */
export async function drop(page, name, bytes) {
  const files = await page.evaluateHandle(
    ([fileName, base64]) => {
      const transfer = new DataTransfer();
      transfer.items.add(new File([Uint8Array.from(atob(base64), (letter) => letter.charCodeAt(0))], fileName));
      return transfer;
    },
    [name, Buffer.from(bytes).toString('base64')],
  );
  await page.dispatchEvent('main', 'drop', { dataTransfer: files });
}

/** The file that `act` makes the page hand to the visitor. */
export async function downloaded(page, folder, act) {
  const [download] = await Promise.all([page.waitForEvent('download'), act()]);
  const file = join(folder, download.suggestedFilename());
  await download.saveAs(file);
  return file;
}

/** The frame under the playhead at full size, as the page exports it. */
export async function frameOnPage(page, folder) {
  return pixelsOfFile(
    await downloaded(page, folder, async () => {
      await page.getByRole('button', { name: 'Export' }).click();
      await page.getByRole('menuitem', { name: 'This frame as PNG' }).click();
    }),
  );
}

/** Waits until the state in the address says `text`. */
export const isInAddress = (page, text) => page.waitForFunction((wanted) => location.hash.includes(wanted), text);

/** Types into a field and confirms. */
export async function enter(field, text) {
  await field.fill(text);
  await field.press('Enter');
}
