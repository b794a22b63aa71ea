// JSON events from a text/event-stream, in their order.

/** An async iterable of the objects; `request` promises the response when iteration begins. Ends with the stream. */
export async function* eventsOf(request) {
  const response = await request();
  let text = '';
  for await (const piece of chunksOf(response.body.pipeThrough(new TextDecoderStream()))) {
    const blocks = (text + piece).split(/\r?\n\r?\n/);
    text = blocks.pop();
    yield* blocks
      .map(dataOf)
      .filter((data) => data !== '')
      .map(JSON.parse);
  }
}

// Not every browser iterates over streams by itself.
async function* chunksOf(stream) {
  const reader = stream.getReader();
  try {
    for (let next = await reader.read(); !next.done; next = await reader.read()) {
      yield next.value;
    }
  } finally {
    await reader.cancel().catch(() => {});
  }
}

function dataOf(block) {
  const lines = block.split(/\r?\n/).filter((line) => line.startsWith('data:'));
  return lines.map((line) => line.slice('data:'.length).trimStart()).join('\n');
}
