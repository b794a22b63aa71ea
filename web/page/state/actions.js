// What one can do to the state, each by its name: views call these and nothing else changes a snapshot.

import { isKeyed, keyAt, neighbouringKeyFrame, valueAt, withEase, withKey, withMovedKey, withoutKey } from './course.js';
import { equalValues, titleOf } from './declarations.js';
import { neighbouringKey } from './selection.js';
import { pannedSpan, spanOf, spanWithPlayhead, zoomedSpan } from './time_span.js';

/** `declarations` as `arrange` makes them. */
export function createActions(store, declarations) {
  const courseOf = (slug, parameters = store.state.parameters) =>
    parameters[slug] ?? declarations.bySlug.get(slug).default;

  // What has its default is left out, so that equal settings are equal objects. `key` is the frame of the key that is
  // selected afterwards; `takesPlayhead` brings the playhead there in the same step, for views that show that key alone.
  function putCourse(slug, course, { key, takesPlayhead = false, ...options } = {}) {
    const declaration = declarations.bySlug.get(slug);
    store.update(
      (state) => {
        const { [slug]: before = declaration.default, ...others } = state.parameters;
        if (equalValues(before, course)) {
          return state;
        }
        const parameters = equalValues(course, declaration.default) ? others : { ...others, [slug]: course };
        const isOfKeys = isKeyed(before) || isKeyed(course);
        const selection = key === undefined ? undefined : { slug, frame: key };
        const next = { ...state, parameters, view: isOfKeys ? { ...state.view, key: selection } : state.view };
        return takesPlayhead ? withPlayheadAt(key, next) : next;
      },
      { label: titleOf(declaration), ...options },
    );
  }

  const setView = (change) => store.update((state) => ({ ...state, view: { ...state.view, ...change } }));
  const setTime = (change, options) =>
    store.update(
      (state) => {
        const same = Object.keys(change).every((name) => state.time[name] === change[name]);
        return same ? state : { ...state, time: { ...state.time, ...change } };
      },
      { label: 'Time', ...options },
    );

  const actions = {
    courseOf,
    setView,

    /** The value at the playhead. */
    valueOf: (slug, frame = store.state.time.frame) => valueAt(courseOf(slug), frame),

    /** A parameter with keys gets one at the playhead; any other changes throughout. */
    setValue(slug, value, options) {
      const course = courseOf(slug);
      const { frame } = store.state.time;
      putCourse(slug, isKeyed(course) ? withKey(course, frame, value) : value, { ...options, key: frame });
    },

    /** Back to what the effect declares, keys and all. */
    reset(slug) {
      putCourse(slug, declarations.bySlug.get(slug).default, { label: `Reset ${titleOf(declarations.bySlug.get(slug))}` });
    },

    isSet: (slug) => slug in store.state.parameters,

    /** Every parameter at once, as a preset or a scene gives them. */
    setAllParameters(parameters, label) {
      const differing = Object.entries(parameters).filter(
        ([slug, course]) => !equalValues(course, declarations.bySlug.get(slug).default),
      );
      store.update((state) => ({ ...state, parameters: Object.fromEntries(differing) }), { label });
    },

    /** Adds a key at the playhead with the value there, or takes away the one that is there. */
    toggleKey(slug) {
      const { frame } = store.state.time;
      const course = courseOf(slug);
      if (keyAt(course, frame)) {
        actions.removeKey(slug, frame);
      } else {
        putCourse(slug, withKey(course, frame, valueAt(course, frame)), { label: 'Add key', key: frame });
      }
    },
    removeKey(slug, frame) {
      putCourse(slug, withoutKey(courseOf(slug), frame), { label: 'Remove key' });
    },
    removeAllKeys(slug) {
      putCourse(slug, actions.valueOf(slug), { label: 'Remove keys' });
    },
    /** Whether a key may be moved there: within the clip, and not onto another one, which would be lost for good. */
    canMoveKey(slug, to) {
      const { first, last } = store.state.time;
      return to >= first && to <= last && !keyAt(courseOf(slug), to);
    },
    moveKey(slug, from, to, options) {
      putCourse(slug, withMovedKey(courseOf(slug), from, to), { label: 'Move key', ...options, key: to });
    },
    setEase(slug, frame, ease) {
      putCourse(slug, withEase(courseOf(slug), frame, ease), { label: 'Ease', key: frame });
    },
    selectKey(slug, frame) {
      setView({ key: { slug, frame } });
      actions.setFrame(frame);
    },
    /** Selects the key before or after the selected one, of any parameter. */
    selectNeighbour(step) {
      const key = neighbouringKey(store.state, declarations, step);
      if (key) {
        actions.selectKey(key.slug, key.frame);
      }
    },
    /** To the nearest key before or after the playhead, of one parameter or of all. */
    goToKey(step, slug) {
      const courses = slug ? [courseOf(slug)] : Object.values(store.state.parameters);
      const frame = neighbouringKeyFrame(courses, store.state.time.frame, step);
      if (frame !== undefined) {
        actions.setFrame(frame);
      }
    },

    /** Moves the playhead; what the timeline shows follows it. */
    setFrame(frame) {
      store.update((state) => withPlayheadAt(frame, state));
    },
    /** Shows less of the clip (a factor above 1) or more of it, with `frame` staying where it is on the timeline. */
    zoomTime(factor, frame = store.state.time.frame) {
      const { time } = store.state;
      setView({ span: zoomedSpan(factor, frame, spanOf(store.state), time) });
    },
    /** Moves what is shown by so many of its own lengths. */
    panTime(lengths) {
      if (store.state.view.span) {
        setView({ span: pannedSpan(lengths, spanOf(store.state), store.state.time) });
      }
    },
    showAllTime: () => setView({ span: undefined }),
    /** First and last frame; the playhead stays between them. */
    setRange(first, last, options) {
      const frame = Math.min(Math.max(store.state.time.frame, first), last);
      setTime({ first, last, frame }, { label: 'Frames', ...options });
    },
    setTime,

    /** Another plate; a clip brings its own frames and rate. */
    setPlate(plate, time = {}) {
      store.update(
        (state) => {
          const next = { ...state.time, ...time };
          const frame = Math.min(Math.max(next.frame, next.first), next.last);
          return { ...state, plate, time: { ...next, frame } };
        },
        { label: 'Picture' },
      );
    },
  };
  return actions;
}

function withPlayheadAt(frame, state) {
  const { first, last } = state.time;
  const time = { ...state.time, frame: Math.min(Math.max(Math.round(frame), first), last) };
  if (time.frame === state.time.frame) {
    return state;
  }
  const span = spanWithPlayhead({ view: state.view, time });
  return { ...state, time, view: span === state.view.span ? state.view : { ...state.view, span } };
}
