// What the effect greys out, as the state changes.

/** Asks the effect what it greys out; of questions that come while one is under way, only the last is asked. */
export function createDisabledFollower({ pool, show }) {
  let isAsking = false;
  let next;
  async function ask({ parameters, time }) {
    isAsking = true;
    const slugs = await pool.disabled(parameters, time.frame).catch(() => follow.latest);
    isAsking = false;
    if (String(slugs) !== String(follow.latest)) {
      follow.latest = slugs;
      show(slugs);
    }
    if (next) {
      const state = next;
      next = undefined;
      ask(state);
    }
  }
  function follow(state, previous) {
    const isSame = state.parameters === previous.parameters && state.time.frame === previous.time.frame;
    if (isSame && follow.isKnown) {
      return;
    }
    follow.isKnown = true;
    if (isAsking) {
      next = state;
    } else {
      ask(state);
    }
  }
  follow.latest = [];
  return follow;
}
