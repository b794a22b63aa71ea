// The page's end of one worker: questions and answers, and what is known of the engine over there.

import { EngineError } from '../engine/error.js';
import { plateId } from '../engine/module.js';

export class EngineWorker {
  #worker;
  #questions = new Map(); // by id: { resolve, reject }
  #lastId = 0;
  #failure = null;

  plates = new Set(); // ids that need not be sent
  lastFrame = null;

  constructor(compiled) {
    this.#worker = new Worker(new URL('./worker.js', import.meta.url), { type: 'module' });
    this.#worker.addEventListener('message', ({ data }) => this.#take(data));
    this.#worker.addEventListener('error', (event) =>
      this.close(new Error(`the effect's worker failed: ${event.message ?? 'it could not be loaded'}`)),
    );
    this.#worker.postMessage({ compiled });
  }

  get isBusy() {
    return this.#questions.size > 0;
  }

  /** It answers no more; every question is refused with the reason. */
  get hasFailed() {
    return this.#failure !== null;
  }

  ask(task, ...values) {
    return new Promise((resolve, reject) => {
      if (this.#failure) {
        reject(this.#failure);
        return;
      }
      this.#lastId += 1;
      this.#questions.set(this.#lastId, { resolve, reject });
      try {
        this.#worker.postMessage({ id: this.#lastId, task, values });
      } catch (error) {
        this.#questions.delete(this.#lastId);
        reject(error);
      }
    });
  }

  render({ plate, ...request }) {
    const { data, ...rest } = plate;
    this.lastFrame = request.frame ?? 0;
    return this.ask('render', { ...request, plate: this.plates.has(plateId(plate)) ? rest : plate });
  }

  /** No more answers come; who waits for one gets `reason`. */
  close(reason) {
    this.#failure = reason;
    this.#worker.terminate();
    for (const { reject } of this.#questions.values()) {
      reject(reason);
    }
    this.#questions.clear();
  }

  #take({ id, result, error, plates }) {
    const question = this.#questions.get(id);
    this.#questions.delete(id);
    this.plates = new Set(plates);
    if (error) {
      question?.reject(error.isEngineError ? new EngineError(error.message) : new Error(error.message));
    } else {
      question?.resolve(result);
    }
  }
}
