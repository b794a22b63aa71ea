// A cache with a bound in bytes: what was not asked for the longest goes first.

export class ByteCache {
  #entries = new Map(); // in the order of their last use
  #bytes = 0;
  #mostBytes;

  constructor(mostBytes) {
    this.#mostBytes = mostBytes;
  }

  get(key) {
    const entry = this.#entries.get(key);
    if (entry) {
      this.#entries.delete(key);
      this.#entries.set(key, entry);
    }
    return entry?.value;
  }

  has(key) {
    return this.#entries.has(key);
  }

  /** Keeps `value`, at the cost of older ones; one that is larger than the whole cache is the only one in it. */
  set(key, value, bytes) {
    this.delete(key);
    this.#entries.set(key, { value, bytes });
    this.#bytes += bytes;
    for (const [oldest] of this.#entries) {
      if (this.#bytes <= this.#mostBytes || oldest === key) {
        break;
      }
      this.delete(oldest);
    }
  }

  delete(key) {
    this.#bytes -= this.#entries.get(key)?.bytes ?? 0;
    this.#entries.delete(key);
  }

  clear() {
    this.#entries.clear();
    this.#bytes = 0;
  }
}
