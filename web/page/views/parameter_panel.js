// The panel: every parameter that the effect declares, in its order, under its groups.

import { titleOf } from '../state/declarations.js';
import { h, set } from './dom.js';
import { icon } from './icons.js';
import { createParameterRow } from './parameter_row.js';

/** Returns { element, update(state, disabled), find() }; `disabled` are the slugs greyed out. */
export function createParameterPanel(declarations, context) {
  const rows = [];
  const groups = [];
  const find = h('input', {
    type: 'search', class: 'field find', placeholder: 'Find a parameter', 'aria-label': 'Find a parameter', oninput: narrow,
    onkeydown: (event) => {
      if (event.key === 'Escape') {
        find.value = '';
        narrow();
        find.blur();
      }
    },
  });
  const list = h('div', { class: 'rows' }, declarations.tree.map(build));
  const nothing = h('p', { class: 'nothing', hidden: true }, 'No parameter has that name.');
  const element = h('section', { class: 'parameters', 'aria-label': 'Parameters' }, h('div', { class: 'find-holder' }, find), list, nothing);

  function build(entry) {
    return entry.type === 'group' ? buildGroup(entry) : buildRow(entry);
  }

  function buildRow(declaration) {
    const row = createParameterRow(declaration, context);
    rows.push({ ...row, declaration });
    return row.element;
  }

  function buildGroup(group) {
    const id = `group-${group.index}`;
    const body = h('div', { class: 'group-body', id }, group.children.map(build));
    const count = h('span', { class: 'group-count' });
    const button = h(
      'button',
      { type: 'button', class: 'group-head', 'aria-controls': id, onclick: () => turn(!isOpen(one, context.store.state)) },
      icon('triangle'), h('span', {}, titleOf(group)), count,
    );
    const one = { group, button, body, count };
    const turn = (isNowOpen) => {
      const { open = {} } = context.store.state.view;
      context.actions.setView({ open: { ...open, [group.slug]: isNowOpen } });
    };
    groups.push(one);
    return h('div', { class: 'group', role: 'group', 'aria-label': titleOf(group) }, h('h3', {}, button), body);
  }

  const isOpen = ({ group }, state) => state.view.open?.[group.slug] ?? !group.collapsed;

  // While something is looked for, groups show what is found in them, open or not.
  function narrow() {
    const wanted = find.value.trim().toLowerCase();
    const found = rows.filter(({ title, declaration }) => `${title} ${declaration.slug}`.toLowerCase().includes(wanted));
    for (const row of rows) {
      row.element.hidden = !found.includes(row);
    }
    for (const one of groups) {
      const has = one.group.children.some(({ slug }) => found.some(({ declaration }) => declaration.slug === slug));
      one.body.parentElement.hidden = !has;
      showGroup(one, context.store.state);
    }
    nothing.hidden = found.length > 0;
  }

  function showGroup(one, state) {
    const shows = find.value.trim() !== '' || isOpen(one, state);
    one.body.hidden = !shows;
    set(one.button, { 'aria-expanded': String(shows) });
    const changed = one.group.children.filter(({ slug }) => slug in state.parameters).length;
    one.count.textContent = changed > 0 ? `${changed} of ${one.group.children.length} set` : String(one.group.children.length);
  }

  return {
    element,
    update(state, disabled) {
      for (const { update, declaration } of rows) {
        update(state, disabled.includes(declaration.slug));
      }
      for (const one of groups) {
        showGroup(one, state);
      }
    },
    find() {
      find.focus();
      find.select();
    },
  };
}
