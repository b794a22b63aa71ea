// Where the picture stands on the stage: its zoom and what point of it is in the middle.  Pure geometry.

const kLeastZoom = 0.02;
const kMostZoom = 32;
const kMargin = 16;

/**
 * A view is { zoom, center }: `zoom` is 'fit' or screen pixels for one of the picture, `center` the point of the
 * picture, as shares of its sides, that is in the middle of the stage. Sizes are in CSS pixels, a picture's in its own.
 */
export function placeOf({ zoom = 'fit', center = [0.5, 0.5] }, picture, stage, pixelRatio) {
  const shown = picture.width * picture.pixelAspect;
  const margin = Math.min(kMargin, stage.width / 20);
  const fit = Math.min((stage.width - 2 * margin) / shown, (stage.height - 2 * margin) / picture.height);
  const scale = zoom === 'fit' ? Math.max(fit, 0.001) : zoom / pixelRatio;
  const [width, height] = [shown * scale, picture.height * scale];
  const along = (size, room, share) => (size <= room ? (room - size) / 2 : room / 2 - share * size);
  const [x, y] = zoom === 'fit' ? [0.5, 0.5] : center;
  return { left: along(width, stage.width, x), top: along(height, stage.height, y), width, height, zoom: scale * pixelRatio };
}

/** The view after zooming by `factor` with the point of the stage at (x, y) staying where it is. */
export function zoomedAt(factor, { x, y }, place, picture, stage) {
  const zoom = Math.min(Math.max(place.zoom * factor, kLeastZoom), kMostZoom);
  const by = zoom / place.zoom;
  const [width, height] = [place.width * by, place.height * by];
  const left = x - (x - place.left) * by;
  const top = y - (y - place.top) * by;
  return { zoom, center: centered((stage.width / 2 - left) / width, (stage.height / 2 - top) / height) };
}

/** The center after the picture was pushed by (dx, dy). */
export function pannedBy(dx, dy, place, stage) {
  return centered((stage.width / 2 - place.left - dx) / place.width, (stage.height / 2 - place.top - dy) / place.height);
}

// The middle of the stage always has some of the picture.
function centered(x, y) {
  const within = (share) => Math.min(Math.max(share, 0), 1);
  return [within(x), within(y)];
}
