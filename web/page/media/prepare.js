// Everything that media needs from the network, fetched before a visitor asks for it.

import { clipWorker } from './clip.js';
import { videoWorker } from './video.js';

/** To be called once, when the page has nothing better to do: afterwards media works without a network. */
export function prepareMedia() {
  videoWorker();
  clipWorker();
}
