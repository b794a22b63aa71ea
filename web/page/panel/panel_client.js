// The page's side of `vintrel panel`: what the tool on this machine serves and does.

import { PanelError, PanelConflict } from './panel_error.js';
import { eventsOf } from './event_stream.js';

const kAliveSeconds = 10;

/** Whether the page was opened by the tool, and is to ask it. */
export function isPanel(location) {
  return new URLSearchParams(location.search).has('panel');
}

/** Every request rejects with PanelError, with the tool's words. */
export class PanelClient {
  #base;

  /** `base` is the address of the page's folder, with the token in it. */
  constructor(base = new URL('.', document.baseURI)) {
    this.#base = base;
  }

  /** { version, input, scene, folder } as the tool was started with; input and scene may be null. */
  async panel() {
    return (await this.#ask('GET', 'api/panel')).json();
  }

  /** One frame of the input: { width, height, data }, straight RGBA of 8 bits. */
  async frame(number) {
    const response = await this.#ask('GET', `api/frame/${number}`);
    const side = (name) => Number(response.headers.get(`X-Vintrel-${name}`));
    const [width, height] = [side('Width'), side('Height')];
    const data = new Uint8ClampedArray(await response.arrayBuffer());
    if (!(width > 0) || data.length !== width * height * 4) {
      throw new PanelError(`frame ${number} came as ${data.length} bytes, which is not ${width} × ${height}`);
    }
    return { width, height, data };
  }

  /** Writes a scene file and promises its path. PanelConflict when there is one and `replace` does not allow it. */
  async saveScene(text, file, { replace = false } = {}) {
    const query = new URLSearchParams({ file, replace: replace ? '1' : '0' });
    return (await (await this.#ask('PUT', `api/scene?${query}`, { body: text })).json()).path;
  }

  /**
   * Starts a render of the tool: { events, stop() }. `scene` is a scene's text, `output` a name as after `-o`,
   * `frames` a list as after `--frames`. `events` is an async iterable of the tool's progress, each { event, ... },
   * that ends with "end"; stop() ends the render as Ctrl-C does. PanelConflict when files would be replaced unasked.
   */
  async startRender({ scene, output, frames, replace = false }) {
    const body = JSON.stringify({ scene, output, frames, replace });
    const { id } = await (await this.#ask('POST', 'api/renders', { body, type: 'application/json' })).json();
    const path = `api/renders/${encodeURIComponent(id)}`;
    return {
      events: withPanelErrors(eventsOf(() => this.#ask('GET', `${path}/events`))),
      stop: async () => {
        await this.#ask('DELETE', path);
      },
    };
  }

  /** Tells the tool every few seconds that the page is there; `onLost(error)` when it answers no longer. */
  keepAlive(onLost = () => {}) {
    const tell = () => this.#ask('POST', 'api/alive').catch(onLost);
    setInterval(tell, kAliveSeconds * 1000);
    tell();
  }

  async #ask(method, path, { body, type } = {}) {
    const headers = type ? { 'Content-Type': type } : {};
    let response;
    try {
      response = await fetch(new URL(path, this.#base), { method, body, headers, cache: 'no-store' });
    } catch (error) {
      throw noAnswer(error);
    }
    if (response.ok) {
      return response;
    }
    const { error } = await response.json().catch(() => ({}));
    const words = error ?? `the tool answered ${response.status} to ${method} ${path}`;
    throw response.status === 409 ? new PanelConflict(words) : new PanelError(words);
  }
}

// The events, with PanelError also where the tool ends in the middle of its answer.
async function* withPanelErrors(events) {
  try {
    yield* events;
  } catch (error) {
    throw error instanceof PanelError ? error : noAnswer(error);
  }
}

function noAnswer(cause) {
  return new PanelError("the tool does not answer; is 'vintrel panel' still running?", { cause });
}
