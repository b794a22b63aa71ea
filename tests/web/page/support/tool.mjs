// The tool, which says what is right, and pixels out of the files that it writes.

import { execFile } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { promisify } from 'node:util';

const run = promisify(execFile);

/** Of a build that the environment names; see CMakeLists.txt here. */
export const kTool = resolve(process.env.VINTREL_TOOL ?? 'build/release/cli/vintrel');
export const kSources = resolve(process.env.VINTREL_SOURCES ?? '.');

/** A folder that goes when the test `context` is over. */
export function temporaryFolder(context) {
  const folder = mkdtempSync(join(tmpdir(), 'vintrel-page-'));
  context.after(() => rmSync(folder, { recursive: true, force: true }));
  return folder;
}

/** What `vintrel render` makes of these arguments: { width, height, data }, straight RGBA of 8 bits. */
export async function renderedByTool(folder, words) {
  const output = join(folder, 'by-tool.png');
  await run(kTool, ['render', ...words, '-o', output, '--depth', '8', '--quiet'], { cwd: folder });
  return pixelsOfFile(output);
}

/** A PNG's pixels, RGBA. */
export async function pixelsOfFile(file) {
  const header = readFileSync(file).subarray(0, 24);
  const decode = ['-v', 'error', '-i', file, '-f', 'rawvideo', '-pix_fmt', 'rgba', '-'];
  const { stdout: data } = await run('ffmpeg', decode, { encoding: 'buffer', maxBuffer: 1 << 30 });
  return { width: header.readUInt32BE(16), height: header.readUInt32BE(20), data };
}

/** '' for equal pictures, else how they differ. */
export function differenceOf(one, other) {
  if (one.width !== other.width || one.height !== other.height) {
    return `${one.width} x ${one.height} is not ${other.width} x ${other.height}`;
  }
  const [a, b] = [Buffer.from(one.data), Buffer.from(other.data)];
  if (a.equals(b)) {
    return '';
  }
  const at = a.findIndex((byte, index) => byte !== b[index]);
  const [x, y] = [(at >> 2) % one.width, Math.floor((at >> 2) / one.width)];
  return `channel ${at & 3} at ${x},${y} is ${a[at]}, not ${b[at]}`;
}
