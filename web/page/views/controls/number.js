// A number: its slider and its field.

import { fitted, numberText, stepFor, titleOf } from '../../state/declarations.js';
import { createSlider } from './slider.js';
import { createTextField } from './text_field.js';

export function createNumber(declaration, { change, drag, reset, parse, complain }) {
  const { slug } = declaration;
  const slider = createSlider(declaration, { change, drag, reset });
  const field = createTextField({
    slug,
    label: `${titleOf(declaration)}, as a number`,
    className: 'number',
    shown: (value) => numberText(declaration, value),
    typed: (value) => String(Number(value.toFixed(6))),
    read: (text) => parse(slug, text.replace(/[\s\u202f]/g, '').replace('\u2212', '-').replace(/%$/, '').replace(/^(-?\d+),(\d+)$/, '$1.$2')),
    step: (value, direction, event) => fitted(declaration, value + direction * stepFor(declaration, event)),
    change,
    complain,
  });
  field.element.inputMode = 'decimal';
  return {
    elements: [slider.element, field.element],
    update(value, isDisabled) {
      slider.update(value, isDisabled);
      field.update(value, isDisabled);
    },
  };
}
