/** What the effect or the tool's reader refused, in the tool's words. */
export class EngineError extends Error {
  name = 'EngineError';
}
