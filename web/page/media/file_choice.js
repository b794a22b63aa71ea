// Files that the visitor chooses to write to, where the browser has them (the File System Access API).

const kTypes = { mp4: 'video/mp4', webm: 'video/webm' };

export function canChooseFile() {
  return typeof window.showSaveFilePicker === 'function';
}

/**
 * The handle of the file that the visitor names; null when they think better of it, undefined where the browser may
 * not ask. To be called from a press.
 */
export async function chooseFile(name) {
  const ending = name.slice(name.lastIndexOf('.'));
  const types = [{ accept: { [kTypes[ending.slice(1)]]: [ending] } }];
  try {
    return await window.showSaveFilePicker({ suggestedName: name, types });
  } catch (error) {
    return error.name === 'AbortError' ? null : undefined;
  }
}
