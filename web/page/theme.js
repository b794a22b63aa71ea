// Light or dark: as the system has it, or as the visitor chose on this machine.

import { readPreferences, writePreferences } from './state/preferences.js';

/** Applies the choice at once. `chosen()` is 'auto', 'light' or 'dark'; `choose(id)` keeps it. */
export function createTheme() {
  let chosen = readPreferences().theme ?? 'auto';
  const apply = () => {
    document.documentElement.dataset.theme = chosen;
  };
  apply();
  return {
    chosen: () => chosen,
    choose(id) {
      chosen = id;
      apply();
      writePreferences({ ...readPreferences(), theme: id });
    },
  };
}
