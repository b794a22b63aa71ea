// How long a clip may be, and what part of it the timeline shows: { first, last } in frames, which need not be whole.  Pure.

/** A clip that is longer is not taken. */
export const kMostFrames = 1_000_000;

const kLeastFrames = 8;
// Where the playhead comes in when playback turns the page.
const kTurnShare = 0.05;

/** The part in sight. `view.span` is undefined while that is everything, and may be of a clip that has since changed. */
export function spanOf({ view, time }) {
  return view.span ? fitted(view.span.first, lengthOf(view.span), time) : { first: time.first, last: time.last };
}

/** `view.span` after zooming by `factor`, with `frame` staying where it is. */
export function zoomedSpan(factor, frame, span, time) {
  const length = Math.max(lengthOf(span) / factor, kLeastFrames);
  const share = (frame - span.first) / lengthOf(span);
  return length < lengthOf(time) ? fitted(frame - share * length, length, time) : undefined;
}

/** `view.span` after moving on by so many of its own lengths. */
export function pannedSpan(lengths, span, time) {
  return fitted(span.first + lengths * lengthOf(span), lengthOf(span), time);
}

/** `view.span` with the playhead in it: playback turns the page, anything else pushes it. */
export function spanWithPlayhead({ view, time }) {
  const span = spanOf({ view, time });
  const { frame } = time;
  if (!view.span || (frame >= span.first && frame <= span.last)) {
    return view.span;
  }
  const length = lengthOf(span);
  const pushed = frame < span.first ? frame : frame - length;
  return fitted(view.playing ? frame - length * kTurnShare : pushed, length, time);
}

const lengthOf = ({ first, last }) => last - first;

function fitted(first, length, time) {
  const whole = lengthOf(time);
  const kept = Math.min(Math.max(length, kLeastFrames), whole);
  const from = Math.min(Math.max(first, time.first), time.last - kept);
  return { first: from, last: from + kept };
}
