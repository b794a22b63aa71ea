// The page put together: one store, one pool of engines, and views that follow.

import { installApi } from './api.js';
import { createCommands } from './commands.js';
import { prepareMedia } from './media/prepare.js';
import { createPanelMode } from './panel_mode.js';
import { createPlateFollower } from './plates/follower.js';
import { createLibrary } from './plates/library.js';
import { kShipped } from './plates/sources.js';
import { createCost } from './preview/cost.js';
import { createFrameCache, frameMemory } from './preview/frame_cache.js';
import { createThumbnails, loadLooks } from './preview/looks.js';
import { createPlayer } from './preview/player.js';
import { createPreview } from './preview/preview.js';
import { createDisabledFollower } from './render/disabled.js';
import { createPool } from './render/pool.js';
import { createAddressFollower, stateOfAddress } from './share/address.js';
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
  const followAddress = createAddressFollower(context, pool.parameters);

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

const api = installApi();
begin(api).catch((error) => {
  api.reject(error);
  const page = document.getElementById('page');
  page.replaceChildren(
    Object.assign(document.createElement('p'), {
      className: 'cannot',
      textContent: `The page could not begin: ${error.message.replace(/\.$/, '')}. It needs a browser with WebAssembly’s SIMD and exceptions, as all have had since 2023.`,
    }),
  );
});
