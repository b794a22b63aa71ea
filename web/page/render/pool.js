// Engines in Web Workers, and which of them renders what, when. The page's own thread only passes messages on.

import { compileModule, plateId } from '../engine/module.js';
import { EngineWorker } from './engine_worker.js';

const defaultSize = () => Math.max(1, (navigator.hardwareConcurrency ?? 2) - 1);

class Pool {
  #renderers;
  #clerk; // for what must not wait until a frame is done
  #waiting = []; // oldest first

  constructor(renderers, clerk, { version, parameters }) {
    this.#renderers = renderers;
    this.#clerk = clerk;
    this.version = version;
    this.parameters = parameters;
  }

  get size() {
    return this.#renderers.length;
  }

  /**
   * As Engine.render. Frames of higher priority come first, and among equals the one asked for first. Rejects with
   * an AbortError when `signal` is aborted before the frame began; one that is being rendered comes to its end.
   */
  render({ signal, priority = 0, ...request }) {
    return new Promise((resolve, reject) => {
      const job = { request, priority, resolve, reject };
      const giveUp = () => {
        const at = this.#waiting.indexOf(job);
        if (at >= 0) {
          this.#waiting.splice(at, 1);
          reject(abortError());
        }
      };
      if (signal?.aborted) {
        reject(abortError());
        return;
      }
      signal?.addEventListener('abort', giveUp, { once: true });
      job.begin = () => signal?.removeEventListener('abort', giveUp);
      this.#waiting.push(job);
      this.#dispatch();
    });
  }

  readScene(text, name) {
    return this.#clerk.ask('readScene', text, name);
  }

  writeScene(scene) {
    return this.#clerk.ask('writeScene', scene);
  }

  disabled(parameters, frame) {
    return this.#clerk.ask('disabled', parameters, frame);
  }

  parse(slug, text) {
    return this.#clerk.ask('parse', slug, text);
  }

  /** Ends the workers. What is under way or waiting is rejected. */
  close() {
    for (const job of this.#waiting.splice(0)) {
      job.reject(abortError());
    }
    for (const worker of [...this.#renderers, this.#clerk]) {
      worker.close(abortError());
    }
  }

  #dispatch() {
    while (this.#waiting.length > 0) {
      const job = this.#nextJob();
      const worker = this.#workerFor(job.request);
      if (!worker) {
        return;
      }
      this.#waiting.splice(this.#waiting.indexOf(job), 1);
      job.begin();
      worker
        .render(job.request)
        .then(job.resolve, (error) => this.#refuse(job, worker, error))
        .finally(() => this.#dispatch());
    }
  }

  // What was asked of a worker that has failed since, another does.
  #refuse(job, worker, error) {
    if (worker.hasFailed && this.#renderers.some((other) => !other.hasFailed)) {
      this.#waiting.push(job);
    } else {
      job.reject(error);
    }
  }

  #nextJob() {
    return this.#waiting.reduce((best, job) => (job.priority > best.priority ? job : best));
  }

  // Whoever rendered the frame before goes on from its sums; whoever has the plate need not be sent it.
  #workerFor(request) {
    const worth = (worker) =>
      (worker.lastFrame === request.frame - 1 ? 1 : 0) + (worker.plates.has(plateId(request.plate)) ? 2 : 0);
    // One that has failed answers at once, that it has: only when there is no other.
    const alive = this.#renderers.filter((worker) => !worker.hasFailed);
    return (alive.length > 0 ? alive : this.#renderers)
      .filter((worker) => !worker.isBusy)
      .reduce((best, worker) => (best && worth(best) >= worth(worker) ? best : worker), null);
  }
}

const abortError = () => new DOMException('the frame is no longer wanted', 'AbortError');

/** Starts `size` engines: as many as the machine has processors less one, and one at least. */
export async function createPool({ size = defaultSize() } = {}) {
  const compiled = await compileModule();
  const clerk = new EngineWorker(compiled);
  const renderers = Array.from({ length: size }, () => new EngineWorker(compiled));
  return new Pool(renderers, clerk, await clerk.ask('describe'));
}
