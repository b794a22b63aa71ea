// A color: a swatch that opens the browser's picker, and a field that takes the tool's words for colors.

import { colorFromText, colorText, titleOf } from '../../state/declarations.js';
import { h } from '../dom.js';
import { createTextField } from './text_field.js';

export function createColor(declaration, { change, drag, parse, complain }) {
  const { slug } = declaration;
  let picks = 0;
  const swatch = h('input', {
    type: 'color', class: 'swatch', 'aria-label': titleOf(declaration),
    onclick: () => {
      picks += 1;
    },
    oninput: () => {
      drag(true);
      change(colorFromText(swatch.value), { merge: `pick ${slug} ${picks}` });
    },
    onchange: () => drag(false),
    onblur: () => drag(false),
  });
  const field = createTextField({
    slug,
    label: `${titleOf(declaration)}, as text`,
    className: 'number',
    shown: colorText,
    read: (text) => parse(slug, text),
    change,
    complain,
  });
  return {
    elements: [swatch, field.element],
    update(value, isDisabled) {
      swatch.value = colorText(value);
      swatch.disabled = isDisabled;
      field.update(value, isDisabled);
    },
  };
}
