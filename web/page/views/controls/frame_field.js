// A field for the number of a frame.

import { createTextField } from './text_field.js';

/**
 * As createTextField; `fits(number)` says whether it may be that frame, and `rule` what is asked of it. What is wrong
 * goes to the notices: the field is too small for a sentence.
 */
export function createFrameField({ label, slug, rule, fits, change, notices }) {
  return createTextField({
    slug, label, className: 'number',
    shown: String,
    read: async (text) => {
      const number = Number(text || NaN);
      if (!Number.isInteger(number) || Math.abs(number) > 0x7fffffff || !fits(number)) {
        throw new Error(`'${text}' cannot be the ${label.toLowerCase()}: ${rule}`);
      }
      return number;
    },
    step: (number, direction, { shiftKey }) => {
      const next = number + direction * (shiftKey ? 10 : 1);
      return fits(next) ? next : number;
    },
    change,
    complain: (text) => text && notices.fail(text),
  });
}
