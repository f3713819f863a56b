// Runs the decoders away from the page, so that no file can hold up the
// page: the page can always stop this worker and start another. `site` is
// the address of the page's folder, set by the page.
'use strict';
importScripts(self.site + 'core.js');

const ready = VelmoricCore();

function withString(core, text, use) {
  const size = core.lengthBytesUTF8(text) + 1;
  const at = core._malloc(size);
  core.stringToUTF8(text, at, size);
  try { return use(at); } finally { core._free(at); }
}

function copyOut(core, at, size) {
  return core.HEAPU8.slice(at, at + size).buffer;
}

// The colour cycles of the picture on show, or null: the frames' palettes as
// RGBA entries one after another, their ticks, and each pixel's index.
function cyclesOf(core, width, height) {
  const frames = core._vm_frame_count();
  if (frames < 2) return null;
  return {
    ticks: Array.from(new Int32Array(core.HEAPU8.buffer, core._vm_frame_ticks(), frames)),
    palettes: copyOut(core, core._vm_frame_palettes(), core._vm_frame_palettes_size()),
    indices: copyOut(core, core._vm_indices(), width * height),
  };
}

// The picture on show now, with its bitmap and pixels as transferable copies.
function pictureOf(core) {
  const width = core._vm_width(), height = core._vm_height();
  return {
    bitmap: copyOut(core, core._vm_bitmap(), core._vm_bitmap_size()),
    rgba: copyOut(core, core._vm_rgba(), width * height * 4),
    width, height, kind: core._vm_kind(),
    cycles: cyclesOf(core, width, height),
  };
}

function answer(id, core, ok) {
  const reply = { id, ok: Boolean(ok), text: core.UTF8ToString(core._vm_text()) };
  if (!ok) return postMessage(reply);
  reply.picture = pictureOf(core);
  postMessage(reply, [reply.picture.bitmap, reply.picture.rgba]);
}

const operations = {
  formats(core, { id }) {
    postMessage({ id, ok: true, limit: core._vm_source_limit(), extensions: core.UTF8ToString(core._vm_extensions()) });
  },
  open(core, { id, name, capitals, bytes }) {
    core.HEAPU8.set(new Uint8Array(bytes), core._vm_input());
    const ok = withString(core, name, (n) => withString(core, capitals, (c) => core._vm_open(n, c, bytes.byteLength)));
    answer(id, core, ok);
  },
  invert(core, { id }) {
    answer(id, core, core._vm_invert());
  },
};

onmessage = async ({ data }) => {
  const core = await ready;
  operations[data.op](core, data);
};
