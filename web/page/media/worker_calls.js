// Function calls across to a worker: one side calls by name, the other answers.

import { MediaError } from './media_error.js';

/** How to call a worker that starts when it is first called, and stays. */
export function workerAt(url) {
  let calls;
  return () => (calls ??= new WorkerCalls(url));
}

/** The calling side, on the page's thread. */
class WorkerCalls {
  #worker;
  #waiting = new Map();
  #lastId = 0;

  constructor(url) {
    this.#worker = new Worker(url, { type: 'module' });
    this.#worker.onmessage = ({ data }) => this.#take(data);
    this.#worker.onerror = (event) =>
      this.#fail(new Error(event.message || 'a part of the page could not be loaded'));
  }

  /** What the worker's function of this name returns, or the error that it throws. `transfer` moves over. */
  call(name, argument, transfer = []) {
    return new Promise((resolve, reject) => {
      const id = ++this.#lastId;
      this.#waiting.set(id, { resolve, reject });
      this.#worker.postMessage({ id, name, argument }, transfer);
    });
  }

  #take({ id, result, error }) {
    const { resolve, reject } = this.#waiting.get(id);
    this.#waiting.delete(id);
    if (!error) {
      resolve(result);
    } else {
      reject(error.isMedia ? new MediaError(error.message) : new Error(error.message));
    }
  }

  #fail(error) {
    for (const { reject } of this.#waiting.values()) {
      reject(error);
    }
    this.#waiting.clear();
  }
}

/** The answering side, in the worker. A function may return { result, transfer } to move buffers instead of copying. */
export function answerCalls(functions) {
  self.onmessage = async ({ data: { id, name, argument } }) => {
    try {
      const answer = await functions[name](argument);
      const moves = answer?.transfer !== undefined;
      self.postMessage({ id, result: moves ? answer.result : answer }, moves ? answer.transfer : []);
    } catch (error) {
      self.postMessage({ id, error: { message: error.message, isMedia: error instanceof MediaError } });
    }
  };
}
