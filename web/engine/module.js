// The WebAssembly module: found, compiled, given the little that it asks of a system.

const moduleUrl = new URL('./vintrel.wasm', import.meta.url);

/** Compiles the module that stands beside this file. The result may be posted to workers. */
export async function compileModule() {
  if (moduleUrl.protocol !== 'file:') {
    const response = await fetch(moduleUrl);
    if (!response.ok) {
      throw new Error(`cannot load ${moduleUrl}: ${response.status} ${response.statusText}`);
    }
    // Some servers do not know the type of these files, and compileStreaming insists on it.
    return WebAssembly.compile(await response.arrayBuffer());
  }
  const { readFile } = await import('node:fs/promises');
  return WebAssembly.compile(await readFile(moduleUrl));
}

/**
 * Runs the module's set-up and returns its exports. The effect needs no system: of the functions that its C
 * library would call, the module may write messages to standard error, and anything else is a fault.
 */
export async function instantiate(compiled) {
  let memory = null;
  const printed = [];
  const known = {
    fd_write(descriptor, vectors, count, written) {
      const view = new DataView(memory.buffer);
      let total = 0;
      for (let i = 0; i < count; i += 1) {
        const start = view.getUint32(vectors + 8 * i, true);
        const length = view.getUint32(vectors + 8 * i + 4, true);
        printed.push(new TextDecoder().decode(new Uint8Array(memory.buffer, start, length)));
        total += length;
      }
      view.setUint32(written, total, true);
      return 0;
    },
    environ_sizes_get(count, size) {
      const view = new DataView(memory.buffer);
      view.setUint32(count, 0, true);
      view.setUint32(size, 0, true);
      return 0;
    },
    environ_get: () => 0,
    proc_exit(code) {
      throw new Error(`the effect's module ended itself with code ${code}: ${printed.join('').trim()}`);
    },
    emscripten_notify_memory_growth() {},
  };
  const imports = {};
  for (const { module, name } of WebAssembly.Module.imports(compiled)) {
    imports[module] ??= {};
    imports[module][name] = known[name] ?? (() => {
      throw new Error(`the effect's module asked the system for ${name}`);
    });
  }
  const { exports } = await WebAssembly.instantiate(compiled, imports);
  memory = exports.memory;
  exports._initialize?.();
  return exports;
}

/** The name by which an engine knows a plate: a blank one by its size. */
export const plateId = (plate) => (plate.blank ? `blank ${plate.width}x${plate.height}` : String(plate.id));
