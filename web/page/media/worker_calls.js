// Function calls across to a worker: one side calls by name, the other answers.

import { MediaError } from './media_error.js';

/** How to call a worker that starts when it is first called, and stays; one that could not be loaded is started anew. */
export function workerAt(url) {
  let calls;
  return () => {
    if (!calls || calls.isBroken) {
      calls = new WorkerCalls(url);
    }
    return calls;
  };
}

/** The calling side, on the page's thread. */
class WorkerCalls {
  #worker;
  #waiting = new Map();
  #lastId = 0;
  #hasAnswered = false;
  isBroken = false; // it was not loaded, and never will answer

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
    this.#hasAnswered = true;
    const call = this.#waiting.get(id); // none where all were given up since
    this.#waiting.delete(id);
    if (!error) {
      call?.resolve(result);
    } else {
      call?.reject(error.isMedia ? new MediaError(error.message) : new Error(error.message));
    }
  }

  #fail(error) {
    this.isBroken = !this.#hasAnswered;
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
