// The page in a real browser, and what goes wrong in it.

import { spawn } from 'node:child_process';
import { createRequire } from 'node:module';
import { join, resolve } from 'node:path';

import { kSources } from './tool.mjs';

const require = createRequire(join(kSources, 'web/package.json'));
const { chromium } = require('playwright-core');

const kSite = resolve(process.env.VINTREL_WEB ?? 'out/web');
const kBrowser = process.env.VINTREL_BROWSER ?? '/usr/bin/chromium';
const kPatience = 60_000; // for machines that are slow, or have much else to do
// Root has no sandbox; machines without a graphics card draw textures in software.
const kFlags = ['--no-sandbox', '--enable-unsafe-swiftshader'];

/** Serves the assembled page, and a browser to see it in: { address, open(options), close() }. */
export async function startBrowser() {
  const server = spawn(process.execPath, [join(kSources, 'web/serve.mjs'), kSite], {
    stdio: ['ignore', 'pipe', 'inherit'],
  });
  const address = await new Promise((found, failed) => {
    server.stdout.once('data', (line) => found(/http:\S+/.exec(line)[0]));
    server.once('exit', (code) => failed(new Error(`the server ended with ${code}`)));
  });
  const browser = await chromium.launch({ executablePath: kBrowser, args: kFlags });
  return {
    address,
    open: (options) => openPage(browser, address, options),
    async close() {
      await browser.close();
      server.kill();
    },
  };
}

/**
 * A page of its own, loaded: { page, problems }. `problems` gathers errors in the console, exceptions that nobody
 * took, and requests to anywhere but where the page comes from.
 */
export async function openPage(browser, address, { path = '', ...options } = {}) {
  const location = new URL(path, address);
  const context = await browser.newContext({ viewport: { width: 1440, height: 900 }, ...options });
  const page = await context.newPage();
  page.setDefaultTimeout(kPatience);
  const problems = [];
  page.on('console', (message) => {
    // The browser asks for the icon again whenever the address changes, network or not.
    if (message.type() === 'error' && !message.location().url.endsWith('.svg')) {
      problems.push(`${message.text()} ${message.location().url}`);
    }
  });
  page.on('pageerror', (error) => problems.push(String(error)));
  page.on('request', (request) => {
    if (!/^(blob|data):/.test(request.url()) && !request.url().startsWith(`${location.origin}/`)) {
      problems.push(`the page asked for ${request.url()}`);
    }
  });
  await page.addInitScript(answerSaveDialog);
  await page.goto(location.href);
  return { page, problems };
}

// Nobody can answer the browser's own dialog: clips go into a file of the page's private folder, or, while there is
// no `saveIntoFile`, to the downloads as in a browser that has no such dialog.
function answerSaveDialog() {
  const privateFile = async ({ suggestedName }) =>
    (await navigator.storage.getDirectory()).getFileHandle(suggestedName, { create: true });
  Object.defineProperty(window, 'showSaveFilePicker', { get: () => window.saveIntoFile && privateFile });
}

/** Bytes that a function in the page returns as base64, which crosses over faster than numbers. */
export async function bytesFrom(page, work, argument) {
  const { data, ...rest } = await page.evaluate(work, argument);
  return { ...rest, data: Buffer.from(data, 'base64') };
}

/** For bytesFrom: a file that answerSaveDialog has named. */
export async function privateFile(name) {
  const folder = await navigator.storage.getDirectory();
  const reader = new FileReader();
  reader.readAsDataURL(await (await folder.getFileHandle(name)).getFile());
  await new Promise((done) => reader.addEventListener('load', done));
  return { data: reader.result.slice(reader.result.indexOf(',') + 1) };
}
