// The page: a list of opened files, the picture on show in a canvas that holds
// exactly the bitmap's pixels, and what can be done with it. Every decode runs
// in a worker over the viewer's own core.
'use strict';

const $ = (id) => document.getElementById(id);
const canvas = $('picture');
const context = canvas.getContext('2d');

// A decode takes milliseconds; a worker that has not answered by then is
// stuck and is replaced.
const ANSWER_LIMIT_MS = 10000;

const state = {
  files: [],      // the list the chooser or a drop gave
  index: -1,      // the place in it of the last file opened
  shown: null,    // the picture on show: {name, bitmap, width, height, kind}
  source: null,   // its file's name and bytes, to set up a new worker
  limit: 0,       // the largest file any format needs
  ready: null,    // settles once the worker has told the limit
  playing: false,
  showTimer: 0,
  cycling: null,  // while the colour cycles play: {start, frame, request}
};

// ---- The worker -----------------------------------------------------------

let worker = null;
let nextId = 1;
const waiting = new Map();
let queue = Promise.resolve();

// The worker starts from a blob, so that the page's policy binds it too (a
// worker loaded from the site would carry only the policy of its own
// response, which a plain static server gives none).
function startWorker() {
  const site = new URL('.', location.href).href;
  const boot = `self.site = ${JSON.stringify(site)}; importScripts(self.site + 'worker.js');`;
  const url = URL.createObjectURL(new Blob([boot], { type: 'text/javascript' }));
  worker = new Worker(url);
  URL.revokeObjectURL(url);
  worker.onmessage = ({ data }) => {
    const entry = waiting.get(data.id);
    if (!entry) return;
    waiting.delete(data.id);
    clearTimeout(entry.timer);
    entry.resolve(data);
  };
}

function replaceWorker() {
  worker.terminate();
  for (const entry of waiting.values()) {
    clearTimeout(entry.timer);
    entry.reject(new Error('the decoder was stopped'));
  }
  waiting.clear();
  startWorker();
  // The new worker's arrays start fresh: give it the picture on show again,
  // so that an inversion works on that picture.
  if (state.source) send({ op: 'open', ...state.source, bytes: state.source.bytes.slice(0) }).catch(() => {});
}

function send(message) {
  return new Promise((resolve, reject) => {
    const id = nextId++;
    const timer = setTimeout(() => {
      waiting.delete(id);
      reject(new Error(`no answer after ${ANSWER_LIMIT_MS / 1000} seconds`));
      replaceWorker();
    }, ANSWER_LIMIT_MS);
    waiting.set(id, { resolve, reject, timer });
    worker.postMessage({ ...message, id }, message.bytes ? [message.bytes] : []);
  });
}

// One request at a time, in the order asked.
function ask(message) {
  const answer = queue.then(() => send(message));
  queue = answer.catch(() => {});
  return answer;
}

// ---- Showing ---------------------------------------------------------------

function show(name, picture) {
  stopCycles();
  canvas.width = picture.width;
  canvas.height = picture.height;
  context.putImageData(new ImageData(new Uint8ClampedArray(picture.rgba), picture.width, picture.height), 0, 0);
  state.shown = {
    name, bitmap: picture.bitmap, rgba: picture.rgba, width: picture.width, height: picture.height, kind: picture.kind,
    cycles: picture.cycles,
  };
  canvas.hidden = false;
  $('welcome').hidden = true;
  layout();
  updateControls();
}

// The largest whole zoom, in device pixels, at which the picture fits; a
// medium-resolution picture stands at double height, as on the desktop. A
// screen too small for even one device pixel a picture pixel gets the
// largest size that fits.
function layout() {
  const shown = state.shown;
  if (!shown) return;
  const ratio = window.devicePixelRatio || 1;
  const width = shown.width;
  const height = shown.kind === 2 ? 2 * shown.height : shown.height;
  const box = $('stage').getBoundingClientRect();
  const fit = Math.min((box.width * ratio) / width, (box.height * ratio) / height);
  const zoom = fit >= 1 ? Math.floor(fit) : fit;
  canvas.style.width = `${(width * zoom) / ratio}px`;
  canvas.style.height = `${(height * zoom) / ratio}px`;
}

function message(id, text) {
  $(id).textContent = text;
}

function failed(name, reason) {
  message('error', `${name}: ${reason}`);
  return false;
}

// Opens one file; true when its picture is on show. A failure leaves the
// picture on show and says why in #error.
async function openFile(file) {
  message('status', '');
  await state.ready;
  if (file.size > state.limit) {
    return failed(file.name, `the file is ${file.size} bytes long; no picture format needs more than ${state.limit}.`);
  }
  let reply;
  try {
    const bytes = await file.arrayBuffer();
    reply = await ask({ op: 'open', name: file.name, capitals: file.name.toUpperCase(), bytes: bytes.slice(0) });
    if (reply.ok) state.source = { name: file.name, capitals: file.name.toUpperCase(), bytes };
  } catch (error) {
    return failed(file.name, error.message);
  }
  if (!reply.ok) return failed(file.name, reply.text);
  show(file.name, reply.picture);
  message('caption', reply.text);
  message('error', '');
  return true;
}

async function openAt(index) {
  if (index < 0 || index >= state.files.length) return false;
  state.index = index;
  updateControls();
  return openFile(state.files[index]);
}

function openList(files) {
  if (files.length === 0) return;
  stopShow();
  state.files = Array.from(files);
  openAt(0);
}

// ---- Colour cycles ---------------------------------------------------------
// Only the palette moves: each frame paints the same palette indices in its
// own colours. The frame on show is chosen by the clock, so a slow display
// skips frames instead of slowing the cycle; stopping paints the decoded
// pixels back, so every command works on the exact picture.

const TICKS_PER_SECOND = 60;

function paintFrame(frame) {
  const { cycles, width, height } = state.shown;
  const entries = cycles.palettes.byteLength / 4 / cycles.ticks.length;
  const colours = new Uint32Array(cycles.palettes, frame * entries * 4, entries);
  const indices = new Uint8Array(cycles.indices);
  const image = context.createImageData(width, height);
  const pixels = new Uint32Array(image.data.buffer);
  for (let i = 0; i < pixels.length; i++) pixels[i] = colours[indices[i]];
  context.putImageData(image, 0, 0);
}

function frameAt(ms) {
  const { ticks } = state.shown.cycles;
  const period = ticks.reduce((a, b) => a + b, 0);
  let tick = Math.floor((ms * TICKS_PER_SECOND) / 1000) % period;
  let frame = 0;
  while (tick >= ticks[frame]) tick -= ticks[frame++];
  return frame;
}

function cycleStep(now) {
  const cycling = state.cycling;
  const frame = frameAt(now - cycling.start);
  if (frame !== cycling.frame) paintFrame((cycling.frame = frame));
  cycling.request = requestAnimationFrame(cycleStep);
}

function startCycles() {
  if (!state.shown || !state.shown.cycles || state.cycling) return;
  state.cycling = { start: performance.now(), frame: 0, request: requestAnimationFrame(cycleStep) };
  updateControls();
}

function stopCycles() {
  if (!state.cycling) return;
  cancelAnimationFrame(state.cycling.request);
  state.cycling = null;
  const { rgba, width, height } = state.shown;
  context.putImageData(new ImageData(new Uint8ClampedArray(rgba), width, height), 0, 0);
  updateControls();
}

// ---- The slide show --------------------------------------------------------

function delayMs() {
  const seconds = Number($('delay').value);
  return Number.isFinite(seconds) && seconds > 0 ? seconds * 1000 : 0;
}

function scheduleNext() {
  state.showTimer = setTimeout(async () => {
    let next = state.index + 1;
    if (next >= state.files.length) {
      if (!$('repeat').checked) return stopShow();
      next = 0;
    }
    // A file that cannot be shown ends the show, its message on the page.
    if (!(await openAt(next))) return stopShow();
    if (state.playing) scheduleNext();
  }, delayMs());
}

function startShow() {
  if (state.files.length === 0) return;
  stopCycles();
  state.playing = true;
  updateControls();
  scheduleNext();
}

function stopShow() {
  clearTimeout(state.showTimer);
  state.playing = false;
  updateControls();
}

function step(index) {
  stopShow();
  stopCycles();
  openAt(Math.max(0, Math.min(index, state.files.length - 1)));
}

// ---- Output ----------------------------------------------------------------

function download(blob, name) {
  const url = URL.createObjectURL(blob);
  const link = document.createElement('a');
  link.href = url;
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(url), 60000);
}

function pngBlob() {
  return new Promise((resolve, reject) =>
    canvas.toBlob((blob) => (blob ? resolve(blob) : reject(new Error('no PNG'))), 'image/png'));
}

function saveBmp() {
  stopCycles();
  if (state.shown) download(new Blob([state.shown.bitmap], { type: 'image/bmp' }), `${state.shown.name}.bmp`);
}

async function savePng() {
  stopCycles();
  if (state.shown) download(await pngBlob(), `${state.shown.name}.png`);
}

async function copy() {
  stopCycles();
  if (!state.shown) return;
  try {
    await navigator.clipboard.write([new ClipboardItem({ 'image/png': pngBlob() })]);
    message('status', 'Copied to the clipboard.');
  } catch (error) {
    message('status', `The browser did not take the picture onto the clipboard: ${error.message}`);
  }
}

async function invert() {
  stopCycles();
  if (!state.shown) return;
  const reply = await ask({ op: 'invert' }).catch((error) => ({ ok: false, text: error.message }));
  if (!reply.ok) return message('status', reply.text);
  show(state.shown.name, reply.picture);
}

function toggleFullScreen() {
  if (document.fullscreenElement) document.exitFullscreen();
  else $('stage').requestFullscreen().catch(() => {});
}

// ---- Controls --------------------------------------------------------------

function updateControls() {
  const count = state.files.length;
  const none = !state.shown;
  $('position').textContent = count ? `${state.index + 1} / ${count}` : '';
  $('first').disabled = $('previous').disabled = state.index <= 0;
  $('next').disabled = $('last').disabled = state.index >= count - 1;
  $('slideshow').disabled = count < 2;
  $('slideshow').textContent = state.playing ? 'Stop' : 'Slide show';
  $('save-bmp').disabled = $('save-png').disabled = none;
  $('copy').disabled = none || !window.ClipboardItem || !navigator.clipboard;
  $('invert').disabled = none || (state.shown.kind !== 3 && state.shown.kind !== 4);
  $('cycle').disabled = none || !state.shown.cycles;
  $('cycle').textContent = state.cycling ? 'Stop cycles' : 'Play cycles';
  $('cycle').setAttribute('aria-pressed', String(Boolean(state.cycling)));
}

const keys = {
  ArrowLeft: () => step(state.index - 1),
  ArrowRight: () => step(state.index + 1),
  Home: () => step(0),
  End: () => step(state.files.length - 1),
  ' ': () => (state.playing ? stopShow() : startShow()),
  f: toggleFullScreen,
  F: toggleFullScreen,
  c: () => (state.cycling ? stopCycles() : startCycles()),
  C: () => (state.cycling ? stopCycles() : startCycles()),
};

function wire() {
  $('open').addEventListener('change', (event) => openList(event.target.files));
  $('first').onclick = keys.Home;
  $('previous').onclick = keys.ArrowLeft;
  $('next').onclick = keys.ArrowRight;
  $('last').onclick = keys.End;
  $('slideshow').onclick = keys[' '];
  $('save-bmp').onclick = saveBmp;
  $('save-png').onclick = savePng;
  $('copy').onclick = copy;
  $('invert').onclick = invert;
  $('cycle').onclick = keys.c;
  $('fullscreen').onclick = toggleFullScreen;

  document.addEventListener('keydown', (event) => {
    const typing = event.target instanceof HTMLInputElement && event.target.type !== 'checkbox';
    if (typing || event.ctrlKey || event.altKey || event.metaKey || !keys[event.key]) return;
    event.preventDefault();
    keys[event.key]();
  });

  // Files dropped anywhere on the page.
  const dropping = (on) => document.body.classList.toggle('dropping', on);
  document.addEventListener('dragover', (event) => {
    if (!event.dataTransfer.types.includes('Files')) return;
    event.preventDefault();
    event.dataTransfer.dropEffect = 'copy';
    dropping(true);
  });
  document.addEventListener('dragleave', (event) => {
    if (!event.relatedTarget) dropping(false);
  });
  document.addEventListener('drop', (event) => {
    event.preventDefault();
    dropping(false);
    openList(event.dataTransfer.files);
  });

  window.addEventListener('resize', layout);
  document.addEventListener('fullscreenchange', layout);
}

function start() {
  startWorker();
  wire();
  updateControls();
  state.ready = ask({ op: 'formats' }).then((formats) => {
    state.limit = formats.limit;
    $('open').accept = formats.extensions;
    $('formats').textContent = formats.extensions.split(',').map((e) => e.slice(1).toUpperCase()).join(' ');
  });
}

start();
