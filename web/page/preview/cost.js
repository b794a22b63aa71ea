// How far a picture must be reduced to come in time, from what the last ones cost.

const kReductions = [1, 2, 4];
// What a frame costs at a reduction, as a share of the full one: pixels shrink with the square, flakes stay as many.
const kShare = { 1: 1, 2: 0.45, 4: 0.25 };
const kRemembered = 5;
// A finer picture must promise to be well within the time: going back and forth is worse than either.
const kFinerShare = 0.6;

/** Remembers the last measured costs: `note` them, ask for the `reductionFor` so many milliseconds. */
export function createCost() {
  let costs = []; // in milliseconds of a full frame

  const median = () => [...costs].sort((a, b) => a - b)[costs.length >> 1];

  return {
    note(reduction, milliseconds) {
      costs = [...costs, milliseconds / kShare[reduction]].slice(-kRemembered);
    },
    /** The least reduction that should keep within the time; none while nothing is known. `present` is the one in use. */
    reductionFor(milliseconds, present = 1) {
      if (costs.length === 0) {
        return 1;
      }
      const full = median();
      const fits = (reduction) => full * kShare[reduction] <= milliseconds * (reduction < present ? kFinerShare : 1);
      return kReductions.find(fits) ?? 4;
    },
  };
}
