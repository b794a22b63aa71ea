// What a visitor prefers on this machine and not in this look: kept by the browser where it lets us.

const kName = 'vintrel';

export function readPreferences() {
  try {
    return JSON.parse(localStorage.getItem(kName)) ?? {};
  } catch {
    return {};
  }
}

export function writePreferences(preferences) {
  try {
    localStorage.setItem(kName, JSON.stringify(preferences));
  } catch {
    // Storage is refused or full: the preference lasts as long as the page.
  }
}
