// Keys that work wherever the focus is, unless a control there wants them itself.

import { kShows } from '../preview/shot.js';

/** `commands` are the page's (commands.js). */
export function installShortcuts({ store, actions, commands, stage, panel }) {
  const { setView, setTime, setFrame, goToKey } = actions;
  const time = () => store.state.time;

  const plain = {
    ' ': () => setView({ playing: !store.state.view.playing }),
    ArrowLeft: ({ shiftKey }) => setFrame(time().frame - (shiftKey ? 10 : 1)),
    ArrowRight: ({ shiftKey }) => setFrame(time().frame + (shiftKey ? 10 : 1)),
    Home: () => setFrame(time().first),
    End: () => setFrame(time().last),
    '[': () => goToKey(-1),
    ']': () => goToKey(1),
    l: () => setTime({ loop: !time().loop }),
    f: () => setView({ zoom: 'fit' }),
    o: () => setView({ zoom: 1 }),
    '+': () => stage.zoomBy(1.25),
    '=': () => stage.zoomBy(1.25),
    '-': () => stage.zoomBy(0.8),
    '/': () => panel.find(),
    e: () => commands.exportClip(),
    '?': () => commands.help(),
    p: () => setView({ holdPlate: true }),
    ...Object.fromEntries(kShows.map(({ id }, i) => [String(i + 1), () => setView({ show: id })])),
  };
  const withCommand = {
    z: ({ shiftKey }) => (shiftKey ? commands.redo() : commands.undo()),
    y: () => commands.redo(),
    o: () => commands.open(),
    s: () => commands.saveScene(),
  };

  document.addEventListener('keydown', (event) => {
    if (event.defaultPrevented || document.querySelector('dialog[open]')) {
      return;
    }
    const key = event.key.length === 1 ? event.key.toLowerCase() : event.key;
    const isCommand = (event.ctrlKey || event.metaKey) && !event.altKey;
    if (isCommand ? isTextUndo(event, key) : event.altKey || isOwn(event)) {
      return;
    }
    const act = (isCommand ? withCommand : plain)[key];
    if (act) {
      event.preventDefault();
      act(event);
    }
  });
  const letGo = () => {
    if (store.state.view.holdPlate) {
      setView({ holdPlate: false });
    }
  };
  document.addEventListener('keyup', ({ key }) => key.toLowerCase() === 'p' && letGo());
  window.addEventListener('blur', letGo);
}

// A field that is typed in has an undo of its own.
function isTextUndo({ target }, key) {
  return (key === 'z' || key === 'y') && target.matches('input[type=search]');
}

// Text is typed, lists are walked through, and Space presses the button that has the focus.
function isOwn({ target, key }) {
  if (target.matches('input:not([type=checkbox], [type=color]), select, textarea') || target.closest('[role=menu]')) {
    return true;
  }
  return key === ' ' && target.matches('button:not(.handle, .key), input');
}
