// The page put together: one store, one pool of engines, and views that follow.

import { installApi } from './api.js';
import { createCommands } from './commands.js';
import { prepareMedia } from './media/prepare.js';
import { createPanelMode } from './panel_mode.js';
import { createLibrary } from './plates/library.js';
import { kShipped } from './plates/sources.js';
import { createCost } from './preview/cost.js';
import { createFrameCache, frameMemory } from './preview/frame_cache.js';
import { createThumbnails, loadLooks } from './preview/looks.js';
import { createPlayer } from './preview/player.js';
import { createPreview } from './preview/preview.js';
import { createPool } from './render/pool.js';
import { hashToState, stateToHash } from './share/link.js';
import { createActions } from './state/actions.js';
import { arrange } from './state/declarations.js';
import { createStore, kInitialState } from './state/store.js';
import { createTheme } from './theme.js';
import { createDropTarget } from './views/drop.js';
import { createLooks } from './views/looks.js';
import { createNotices } from './views/notices.js';
import { createParameterPanel } from './views/parameter_panel.js';
import { installShortcuts } from './views/shortcuts.js';
import { createStage } from './views/stage.js';
import { createTimeline } from './views/timeline.js';
import { createTopbar } from './views/topbar.js';
import { createViewBar } from './views/view_bar.js';

const kAddressMilliseconds = 400;

async function begin(api) {
  const theme = createTheme();
  const notices = createNotices();
  document.body.append(notices.element);
  const library = createLibrary();
  // The first plate comes while the engines compile.
  const firstPlate = library.load(kInitialState.plate).catch(() => {});
  const pool = await createPool();
  api.resolve(pool, library);

  const declarations = arrange(pool.parameters);
  const store = createStore(stateOfAddress(pool.parameters, notices));
  api.watch(store);
  const actions = createActions(store, declarations);
  const panelMode = createPanelMode({ store, notices });
  const context = { store, actions, pool, library, notices };
  const commands = createCommands({ ...context, panel: panelMode });
  commands.renderWithTool = () => panelMode.render(commands.sceneText);

  const stage = createStage(context, declarations);
  const viewBar = createViewBar({ ...context, stage });
  const topbar = createTopbar({ ...context, commands, theme, panel: panelMode });
  const panel = createParameterPanel(declarations, context);
  const timeline = createTimeline(declarations, context);
  const looksPlace = document.createElement('section');
  looksPlace.className = 'looks';
  const main = document.getElementById('page');
  main.replaceChildren(topbar.element, viewBar.element, looksPlace, stage.element, timeline.element, panel.element, notices.element);
  document.body.append(createDropTarget((files) => commands.take(files)));
  installShortcuts({ ...context, commands, stage, panel });

  const cache = createFrameCache({ maxBytes: frameMemory(), onChange: () => timeline.showCached(cache.numbers) });
  const show = (frame) => {
    stage.showFrame(frame);
    api.show(frame);
  };
  const rendering = { ...context, cache, cost: createCost(), show, fail: notices.fail };
  const preview = createPreview(rendering);
  const player = createPlayer({ ...rendering, onRate: timeline.showRate });
  const followPlate = createPlateFollower({ ...context, stage, topbar });
  const followDisabled = createDisabledFollower({ pool, show: (slugs) => panel.update(store.state, slugs) });
  const followAddress = createAddressFollower(store, pool.parameters);

  let looks;
  let thumbnailsOf;
  const thumbnails = createThumbnails({ pool, show: (look, image) => looks.showThumbnail(look, image) });
  function showLooks(source) {
    if (looks && source && thumbnailsOf !== source) {
      thumbnailsOf = source;
      thumbnails(looks.list, source, store.state.time);
    }
  }

  store.subscribe((state, previous) => {
    panel.update(state, followDisabled.latest);
    stage.update(state, previous);
    viewBar.update(state);
    topbar.update(state);
    timeline.update(state);
    if (looks && state.parameters !== previous.parameters) {
      looks.update(state);
    }
    player.refresh(state, previous);
    preview.refresh();
    followPlate(state).then(showLooks);
    followDisabled(state, previous);
    followAddress(state, previous);
  });

  store.update((state) => ({ ...state, view: { ...state.view, show: 'result' } }));
  await firstPlate;
  if (panelMode) {
    await panelMode.begin({ library, actions, readScene: commands.readScene }).catch(notices.fail);
  }
  const list = await loadLooks(pool).catch((error) => {
    notices.fail(error);
    return [];
  });
  looks = Object.assign(createLooks(list, declarations, context), { list });
  looksPlace.replaceWith(looks.element);
  looks.update(store.state);
  showLooks(await followPlate(store.state));
  requestIdleCallbackOrLater(() => fetchTheRest(library));
}

// From here on the page works without a network.
function fetchTheRest(library) {
  prepareMedia();
  for (const { name } of kShipped) {
    library.load({ kind: 'shipped', name }).catch(() => {});
  }
}

function requestIdleCallbackOrLater(act) {
  (window.requestIdleCallback ?? ((later) => setTimeout(later, 1000)))(act);
}

function stateOfAddress(parameters, notices) {
  const linked = hashToState(location.hash, parameters);
  if (!linked) {
    return kInitialState;
  }
  const { notes, ...state } = linked;
  notes.forEach(notices.note);
  return { ...kInitialState, ...state, plate: state.plate ?? kInitialState.plate };
}

/** Shows the plate of the state, and of a clip the plate of the frame; promises the source. */
function createPlateFollower({ library, stage, topbar, store }) {
  let shown;
  let shownSource;
  return async function follow(state) {
    const source = await library.load(state.plate).catch(() => undefined);
    if (!source || store.state.plate !== state.plate) {
      return undefined;
    }
    if (source !== shownSource) {
      shownSource = source;
      stage.setSize(source);
      topbar.showSource(source, state.plate);
    }
    const { show, holdPlate } = store.state.view;
    if (holdPlate || show === 'plate' || show === 'wipe') {
      const plate = await source.plateAt(store.state.time.frame).catch(() => undefined);
      if (plate && plate !== shown && source === shownSource) {
        shown = plate;
        stage.showPlate(plate);
      }
    }
    return source;
  };
}

/** Asks the effect what it greys out; of questions that come while one is under way, only the last is asked. */
function createDisabledFollower({ pool, show }) {
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

/** Keeps the look in the address, and takes up one that is pasted there. */
function createAddressFollower(store, parameters) {
  let timer;
  let written = location.hash;
  window.addEventListener('hashchange', () => {
    const linked = location.hash === written ? null : hashToState(location.hash, parameters);
    if (linked && stateToHash(store.state, parameters) !== location.hash) {
      const { plate, time } = linked;
      store.update((state) => ({ ...state, parameters: linked.parameters, time, plate: plate ?? state.plate }), { label: 'Link' });
    }
  });
  return function follow(state, previous) {
    if (state.view.playing || (state.parameters === previous.parameters && state.time === previous.time && state.plate === previous.plate && state.view.playing === previous.view.playing)) {
      return;
    }
    clearTimeout(timer);
    timer = setTimeout(() => {
      written = stateToHash(store.state, parameters);
      history.replaceState(null, '', written);
    }, kAddressMilliseconds);
  };
}

const api = installApi();
begin(api).catch((error) => {
  api.reject(error);
  const page = document.getElementById('page');
  page.replaceChildren(
    Object.assign(document.createElement('p'), {
      className: 'cannot',
      textContent: `The page could not begin: ${error.message}. It needs a browser with WebAssembly’s SIMD and exceptions, as all have had since 2023.`,
    }),
  );
});
