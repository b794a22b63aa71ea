// What goes wrong between the page and the tool.

/** The message is the tool's own, or says that it does not answer. */
export class PanelError extends Error {
  name = 'PanelError';
}

/** A file is there already: ask, and come again with `replace`. */
export class PanelConflict extends PanelError {
  name = 'PanelConflict';
}
