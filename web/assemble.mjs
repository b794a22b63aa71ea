// Puts together what a web server needs: node assemble.mjs SOURCES MODULE OUT, the folder of the sources, the
// compiled module, and the folder that everything goes to.

import { cpSync, mkdirSync, readFileSync, readdirSync, rmSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';

const [sources, module, out] = process.argv.slice(2);

const filesOf = (folder, ending) =>
  readdirSync(join(sources, folder))
    .filter((name) => name.endsWith(ending))
    .sort();

function copyFiles(folder, ending, to) {
  mkdirSync(join(out, to), { recursive: true });
  for (const name of filesOf(folder, ending)) {
    cpSync(join(sources, folder, name), join(out, to, name));
  }
}

rmSync(out, { recursive: true, force: true });
cpSync(join(sources, 'web/page'), out, { recursive: true });
copyFiles('web/engine', '.js', 'engine');
cpSync(module, join(out, 'engine/vintrel.wasm'));
copyFiles('examples', '.png', 'plates');
copyFiles('presets', '.toml', 'presets');
copyFiles('web/node_modules/mediabunny/dist/bundles', 'mediabunny.min.mjs', 'lib');
// Tells node, which has no types of files, that these are modules.
writeFileSync(join(out, 'package.json'), '{ "type": "module" }\n');

const { loadEngine } = await import(pathToFileURL(join(out, 'engine/engine.js')));
const engine = await loadEngine();
const presets = filesOf('presets', '.toml').map((name) => {
  const { preset } = engine.readScene(readFileSync(join(sources, 'presets', name), 'utf8'), name);
  return { id: name.replace(/\.toml$/, ''), ...preset };
});
writeFileSync(join(out, 'presets/index.json'), `${JSON.stringify(presets, null, 2)}\n`);
