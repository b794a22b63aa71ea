// The effect, in a worker or in node: parameters, plates, frames, and the tool's words for them.

import { EngineError } from './error.js';
import { compileModule, instantiate, plateId } from './module.js';
import { parametersText, renderText } from './scene_text.js';

export { EngineError } from './error.js';

// Plates that are kept beside the one in use.
const maxPlateBytes = 256 * 1024 * 1024;

const arrayOfDepth = { 8: Uint8ClampedArray, 16: Uint16Array, 32: Float32Array };

const encoder = new TextEncoder();
const decoder = new TextDecoder();

class Engine {
  #module;
  #engine;
  #declarations;
  #parametersText = '[parameters]\n';
  #plates = new Map(); // by id, the one used last at the end: { number, bytes }

  constructor(module, isPlain) {
    this.#module = module;
    this.#engine = module.EngineOpen(isPlain ? 1 : 0);
    const { version, parameters } = this.#ask('EngineDescribe');
    this.version = version;
    this.parameters = parameters;
    this.#declarations = new Map(parameters.filter(({ slug }) => slug !== '').map((one) => [one.slug, one]));
  }

  /** Ids of the plates that need not be sent again. */
  get plates() {
    return [...this.#plates.keys()];
  }

  /**
   * One frame: { width, height, data, milliseconds }, straight RGBA. `plate.data` may be left out where `plates`
   * has its id. Throws EngineError, with the tool's words.
   */
  render({ plate, parameters = {}, frame = 0, fps = '24', shutter = 180, reduction = 1, depth = 8 }) {
    const start = performance.now();
    if (!(depth in arrayOfDepth)) {
      throw new EngineError(`depth: ${depth} is not 8, 16 or 32`);
    }
    if (!Number.isSafeInteger(frame) || Math.abs(frame) > 0x7fffffff) {
      throw new EngineError(`frame ${frame} cannot be counted; frames are whole numbers of 32 bits`);
    }
    this.#setParameters(parameters);
    const number = this.#plateNumber(plate);
    this.#putTexts(String(fps));
    const image = this.#ask(
      'EngineRender', number, frame, shutter, reduction, depth, plate.pixelAspect ?? 1);
    const data = this.#rowsOf(image, depth);
    return { width: image.width, height: image.height, data, milliseconds: performance.now() - start };
  }

  /** A scene file, read by the tool's reader: { render, parameters, preset? } with what the file says alone. */
  readScene(text, name = 'scene') {
    return this.#ask('EngineReadScene', this.#putTexts(text, name));
  }

  /** The scene file that the tool would write. */
  writeScene({ render = {}, parameters = {} }) {
    this.#putTexts(renderText(render) + parametersText(parameters, this.#declarations));
    return this.#ask('EngineWriteScene');
  }

  /** Slugs of the parameters that the effect greys out at this frame. */
  disabled(parameters, frame = 0) {
    this.#setParameters(parameters);
    return this.#ask('EngineDisabled', frame);
  }

  /** The value that a user typed. */
  parse(slug, text) {
    return this.#ask('EngineParse', this.#putTexts(slug, text));
  }

  /** For tests: how many square roots an engine with `isPlain` was asked for. */
  get rootsAsked() {
    return this.#module.EngineRootsAsked();
  }

  #setParameters(parameters) {
    const text = parametersText(parameters, this.#declarations);
    if (text === this.#parametersText) {
      return;
    }
    this.#parametersText = ''; // what stands if this is refused is not what was set before
    this.#putTexts(text);
    this.#ask('EngineSetParameters');
    this.#parametersText = text;
  }

  #plateNumber(plate) {
    const id = plateId(plate);
    const known = this.#plates.get(id);
    if (known) {
      this.#plates.delete(id);
      this.#plates.set(id, known);
      return known.number;
    }
    const { width, height, data, depth = 8 } = plate;
    const samples = width * height * 4;
    if (!plate.blank && !(data?.length === samples && data.BYTES_PER_ELEMENT * 8 === depth)) {
      throw new EngineError(
        `the plate '${id}' needs ${width} x ${height} pixels of ${depth} bits, four samples each`);
    }
    const bytes = (samples * depth) / 8;
    this.#makeRoom(bytes);
    const place = this.#ask('EngineAddPlate', width, height, depth);
    if (!plate.blank) {
      this.#putRows(place, data);
      this.#ask('EngineSealPlate', place.number);
    }
    this.#plates.set(id, { number: place.number, bytes });
    return place.number;
  }

  #makeRoom(bytes) {
    let total = bytes;
    for (const plate of this.#plates.values()) {
      total += plate.bytes;
    }
    for (const [id, plate] of this.#plates) {
      if (total <= maxPlateBytes) {
        return;
      }
      this.#module.EngineDropPlate(this.#engine, plate.number);
      this.#plates.delete(id);
      total -= plate.bytes;
    }
  }

  // Rows in the module's memory are padded; most widths need no padding.
  #putRows({ width, height, rowBytes, data: address }, data) {
    const bytes = new Uint8Array(data.buffer, data.byteOffset, data.byteLength);
    const rowSize = data.byteLength / height;
    const memory = new Uint8Array(this.#module.memory.buffer, address, rowBytes * height);
    if (rowSize === rowBytes) {
      memory.set(bytes);
      return;
    }
    for (let row = 0; row < height; row += 1) {
      memory.set(bytes.subarray(row * rowSize, (row + 1) * rowSize), row * rowBytes);
    }
  }

  #rowsOf({ width, height, rowBytes, data: address }, depth) {
    const rowSize = (width * 4 * depth) / 8;
    const memory = new Uint8Array(this.#module.memory.buffer, address, rowBytes * height);
    if (rowSize === rowBytes) {
      return new arrayOfDepth[depth](memory.slice().buffer);
    }
    const bytes = new Uint8Array(rowSize * height);
    for (let row = 0; row < height; row += 1) {
      bytes.set(memory.subarray(row * rowBytes, row * rowBytes + rowSize), row * rowSize);
    }
    return new arrayOfDepth[depth](bytes.buffer);
  }

  // Returns the size of the first in bytes.
  #putTexts(first, second = '') {
    const parts = [encoder.encode(first), encoder.encode(second)];
    const address = this.#module.EngineText(this.#engine, parts[0].length + parts[1].length) >>> 0;
    const memory = new Uint8Array(this.#module.memory.buffer);
    memory.set(parts[0], address);
    memory.set(parts[1], address + parts[0].length);
    return parts[0].length;
  }

  #ask(name, ...values) {
    const address = this.#module[name](this.#engine, ...values) >>> 0;
    const memory = new Uint8Array(this.#module.memory.buffer);
    const answer = JSON.parse(decoder.decode(memory.subarray(address, memory.indexOf(0, address))));
    if (answer?.error !== undefined) {
      throw new EngineError(answer.error.replace(/^parameters:\d+:\d+: /, ''));
    }
    return answer;
  }
}

/** `compiled` spares the compilation; `isPlain` holds the effect's fast loop back, for tests. */
export async function loadEngine({ compiled, isPlain = false } = {}) {
  return new Engine(await instantiate(compiled ?? (await compileModule())), isPlain);
}
