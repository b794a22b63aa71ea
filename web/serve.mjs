// Serves a folder on a loopback port until Ctrl-C: node serve.mjs FOLDER [--open]. For one's own machine: nothing
// of it is meant for a network.

import { spawn } from 'node:child_process';
import { createReadStream, statSync } from 'node:fs';
import { createServer } from 'node:http';
import { extname, join, resolve, sep } from 'node:path';

const types = {
  '.css': 'text/css',
  '.html': 'text/html; charset=utf-8',
  '.js': 'text/javascript',
  '.json': 'application/json',
  '.mjs': 'text/javascript',
  '.png': 'image/png',
  '.svg': 'image/svg+xml',
  '.toml': 'application/toml',
  '.wasm': 'application/wasm',
};

const [folder, ...options] = process.argv.slice(2);
if (!folder || !statSync(folder, { throwIfNoEntry: false })?.isDirectory()) {
  console.error(folder ? `there is no folder ${folder}` : 'usage: node serve.mjs FOLDER [--open]');
  process.exit(2);
}
const root = resolve(folder);

function fileAt(url) {
  const path = join(root, decodeURIComponent(new URL(url, 'http://localhost').pathname));
  const file = path.endsWith(sep) ? join(path, 'index.html') : path;
  return file.startsWith(root + sep) && statSync(file, { throwIfNoEntry: false })?.isFile() ? file : null;
}

const server = createServer((request, response) => {
  let file = null;
  try {
    file = fileAt(request.url);
  } catch {
    // A broken address: there is no such file either.
  }
  if (file === null || request.method !== 'GET') {
    response.writeHead(404).end();
    return;
  }
  response.writeHead(200, {
    'Content-Type': types[extname(file)] ?? 'application/octet-stream',
    'Cache-Control': 'no-store',
  });
  createReadStream(file).pipe(response);
});

server.listen(0, '127.0.0.1', () => {
  const address = `http://127.0.0.1:${server.address().port}/`;
  console.log(`${address} until Ctrl-C`);
  if (options.includes('--open')) {
    openInBrowser(address);
  }
});

// Where there is no browser or no screen, xdg-open fails after a while.
function openInBrowser(address) {
  const tell = () => console.log('no browser could be started here: open the address yourself');
  spawn('xdg-open', [address], { detached: true, stdio: 'ignore' })
    .on('error', tell)
    .on('exit', (code) => code !== 0 && tell())
    .unref();
}
