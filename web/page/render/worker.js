// One engine in a Web Worker. It answers messages { id, task, values } with { id, result, plates } or
// { id, error, plates }, one after the other; its first is { compiled }, the module to run.

import { EngineError, loadEngine } from '../engine/engine.js';

let compiled = null;
let engine = null;

const tasks = {
  describe: () => ({ version: engine.version, parameters: engine.parameters }),
  render: (request) => engine.render(request),
  readScene: (text, name) => engine.readScene(text, name),
  writeScene: (scene) => engine.writeScene(scene),
  disabled: (parameters, frame) => engine.disabled(parameters, frame),
  parse: (slug, text) => engine.parse(slug, text),
};

async function answer({ id, task, values }) {
  try {
    engine ??= await loadEngine({ compiled });
    const result = tasks[task](...values);
    postMessage({ id, result, plates: engine.plates }, result?.data ? [result.data.buffer] : []);
  } catch (error) {
    // Whatever the effect itself did not refuse has stopped it halfway: the next task gets a new one.
    if (!(error instanceof EngineError)) {
      engine = null;
    }
    postMessage({
      id,
      error: { isEngineError: error instanceof EngineError, message: error.message },
      plates: engine?.plates ?? [],
    });
  }
}

let last = Promise.resolve();
addEventListener('message', ({ data }) => {
  if (data.compiled) {
    compiled = data.compiled;
    return;
  }
  last = last.then(() => answer(data));
});
