// What went wrong with a file, in words for its owner.

/** Thrown by all of web/page/media for what a visitor can do something about; the message is a sentence to show. */
export class MediaError extends Error {
  name = 'MediaError';
}
