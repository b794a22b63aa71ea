// The plate of the state, brought onto the stage.

/**
 * Shows the plate of the state, and of a clip the plate of the frame, and tells once what a source lost on its way;
 * promises the source.
 */
export function createPlateFollower({ library, stage, topbar, store, notices }) {
  const toldOf = new WeakSet();
  let shown;
  let shownSource;
  let lastTurn = 0;
  let shownTurn = 0;
  return async function follow(state) {
    const turn = ++lastTurn;
    const source = await library.load(state.plate).catch(() => undefined);
    if (!source || store.state.plate !== state.plate) {
      return undefined;
    }
    if (source !== shownSource) {
      shownSource = source;
      stage.setSize(source);
      topbar.showSource(source, state.plate);
      if (!toldOf.has(source)) {
        toldOf.add(source);
        source.notes.forEach(notices.note);
      }
    }
    const { show, holdPlate } = store.state.view;
    if (holdPlate || show === 'plate' || show === 'wipe') {
      const plate = await source.plateAt(store.state.time.frame).catch(() => undefined);
      // Frames become ready in any order; none is shown after a later one.
      if (plate && plate !== shown && source === shownSource && turn > shownTurn) {
        shown = plate;
        shownTurn = turn;
        stage.showPlate(plate);
      }
    }
    return source;
  };
}
