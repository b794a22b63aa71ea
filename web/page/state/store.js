// The page's one owner of state: immutable snapshots, undo and redo.
//
// A snapshot is a plain frozen object; whoever wants to change something gives a recipe, which makes the next snapshot
// from the present one. What is only looked at (`view`, the frame under the playhead) is not a step that one undoes:
// it stays as it is when a step is taken back.

const kMaxSteps = 500;

/** The state of a page that has just been opened. Values are as in web/engine/engine.js. */
export const kInitialState = freezeDeeply({
  plate: { kind: 'shipped', name: 'street' },
  parameters: {},
  time: { frame: 0, first: 0, last: 119, fps: '24', shutter: 180, loop: true },
  view: {},
});

/**
 * Makes a store.
 *
 *   store.state                            the present snapshot, frozen all through
 *   store.update(recipe, {label, merge})   recipe(state) returns the next state (the same one: nothing happens). Steps
 *                                          that follow each other with the same `merge` text become one, so that a drag
 *                                          is undone as a whole; `label` is what the step is called ("Flakes").
 *   store.settle()                         ends a merge: the next update starts a step of its own
 *   store.undo(), store.redo()             return the label of the step, or undefined when there is none
 *   store.undoLabel, store.redoLabel       label of the step that would be taken, or undefined
 *   store.subscribe(listener)              listener(state, previous) after each change; returns how to leave
 */
export function createStore(initial = kInitialState) {
  let state = freezeDeeply(initial);
  let past = [];
  let future = [];
  let openMerge;
  const listeners = new Set();

  function show(next) {
    const previous = state;
    state = freezeDeeply(next);
    for (const listener of [...listeners]) {
      listener(state, previous);
    }
  }

  function move(from, to) {
    openMerge = undefined;
    const step = from.at(-1);
    if (!step) {
      return undefined;
    }
    from.pop();
    to.push({ label: step.label, state });
    show(keepWhatIsLookedAt(step.state, state));
    return step.label;
  }

  return {
    get state() {
      return state;
    },
    get undoLabel() {
      return past.at(-1)?.label;
    },
    get redoLabel() {
      return future.at(-1)?.label;
    },
    update(recipe, { label = 'Change', merge } = {}) {
      const next = recipe(state);
      if (next === state) {
        return;
      }
      if (isStep(state, next)) {
        if (merge === undefined || merge !== openMerge) {
          past = [...past, { label, state }].slice(-kMaxSteps);
        }
        future = [];
        openMerge = merge;
      }
      show(next);
    },
    settle() {
      openMerge = undefined;
    },
    undo: () => move(past, future),
    redo: () => move(future, past),
    subscribe(listener) {
      listeners.add(listener);
      return () => listeners.delete(listener);
    },
  };
}

function isStep(before, after) {
  return (
    before.plate !== after.plate ||
    before.parameters !== after.parameters ||
    Object.keys(after.time).some((name) => name !== 'frame' && before.time[name] !== after.time[name])
  );
}

function keepWhatIsLookedAt(restored, present) {
  const { first, last } = restored.time;
  const frame = Math.min(Math.max(present.time.frame, first), last);
  return { ...restored, view: present.view, time: { ...restored.time, frame } };
}

function freezeDeeply(value) {
  if (typeof value === 'object' && value !== null && !Object.isFrozen(value)) {
    Object.freeze(value);
    Object.values(value).forEach(freezeDeeply);
  }
  return value;
}
