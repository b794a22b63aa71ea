// A checkbox, as a switch; the text beside it is its label.

import { titleOf } from '../../state/declarations.js';
import { h } from '../dom.js';

export function createToggle(declaration, { change }) {
  const element = h('input', {
    type: 'checkbox', role: 'switch', class: 'toggle', 'aria-label': declaration.label || titleOf(declaration),
    onchange: () => change(element.checked ? 1 : 0, {}),
  });
  return {
    elements: [element],
    update(value, isDisabled) {
      element.checked = value !== 0;
      element.disabled = isDisabled;
    },
  };
}
