// A point in percent of the picture: two fields here, and a handle on the picture (point_handle.js).

import { percentText, titleOf } from '../../state/declarations.js';
import { h } from '../dom.js';
import { createTextField } from './text_field.js';

const kSides = [
  { axis: 0, name: 'x', title: 'across' },
  { axis: 1, name: 'y', title: 'down' },
];
const kStep = 1;

export function createPoint(declaration, { change, parse, complain }) {
  const { slug } = declaration;
  let point = declaration.default;
  const withAxis = (axis, number) => point.map((part, i) => (i === axis ? number : part));
  const fields = kSides.map(({ axis, title }) =>
    createTextField({
      slug,
      label: `${titleOf(declaration)} ${title}, in percent`,
      className: 'number',
      shown: percentText,
      typed: (value) => String(Number(value.toFixed(4))),
      read: async (text) => {
        const typedPoint = withAxis(axis, text.replace(/\s*%$/, '').replace(',', '.'));
        return (await parse(slug, typedPoint.map((part) => `${part}%`).join(',')))[axis];
      },
      step: (value, direction, { shiftKey, altKey, ctrlKey }) =>
        Number((value + direction * kStep * (shiftKey ? 10 : altKey || ctrlKey ? 0.1 : 1)).toFixed(4)),
      change: (number, options) => change(withAxis(axis, number), options),
      complain,
    }),
  );
  const element = h(
    'div',
    { class: 'point spread' },
    kSides.map(({ axis, name }) => h('label', { class: 'point-side' }, h('span', {}, name), fields[axis].element)),
  );
  return {
    elements: [element],
    update(value, isDisabled) {
      point = value;
      fields.forEach((field, axis) => field.update(value[axis], isDisabled));
    },
  };
}
