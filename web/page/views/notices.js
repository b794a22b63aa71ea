// Words to the visitor: notes that go away, errors that stay until they are closed.

import { h } from './dom.js';
import { icon } from './icons.js';

const kNoteMilliseconds = 6000;
const kMostNotices = 4;

/** Returns { element, note(text), fail(error or text), whisper(text) }; a whisper is for screen readers alone. */
export function createNotices() {
  // Screen readers follow regions that are there before their text.
  const element = h('div', { class: 'notices' });
  const polite = h('div', { role: 'status', 'aria-live': 'polite' });
  const urgent = h('div', { role: 'alert' });
  const quiet = h('div', { role: 'status', 'aria-live': 'polite', class: 'for-ears' });
  element.append(urgent, polite, quiet);

  function say(region, text, className) {
    const same = [...region.children].find((notice) => notice.dataset.text === text);
    same?.remove();
    const notice = h('div', { class: `notice ${className}`, 'data-text': text }, h('span', {}, text));
    notice.append(
      h('button', { type: 'button', class: 'icon-button', 'aria-label': 'Close this message', onclick: () => notice.remove() }, icon('close')),
    );
    region.append(notice);
    while (region.children.length > kMostNotices) {
      region.firstChild.remove();
    }
    return notice;
  }

  return {
    element,
    note(text) {
      const notice = say(polite, sentence(text), 'notice-note');
      setTimeout(() => notice.remove(), kNoteMilliseconds);
    },
    whisper(text) {
      quiet.textContent = text;
    },
    fail(error) {
      const text = typeof error === 'string' ? error : error.message || String(error);
      say(urgent, sentence(text), 'notice-error');
    },
  };
}

// A first word with a dot is a file's name, which stays as it is.
function sentence(text) {
  if (/^\S*\.\S/.test(text)) {
    return text;
  }
  return text.charAt(0).toUpperCase() + text.slice(1);
}
