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

const root = resolve(process.argv[2]);

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
  if (process.argv.includes('--open')) {
    spawn('xdg-open', [address], { detached: true, stdio: 'ignore' })
      .on('error', () => console.log('no xdg-open here: open the address yourself'))
      .unref();
  }
});
