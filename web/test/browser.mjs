// The page in real Chromium: every picture of both tables opens with the
// table's caption, saves the table's exact bitmap and shows exactly its
// pixels; bad files keep the picture on show; inversion; nothing is asked of
// another origin. Usage: node browser.mjs SITE SHARED
import { createHash } from 'node:crypto';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { basename, join } from 'node:path';

import { launch } from './chromium.mjs';
import { addressOf, serve } from '../server.mjs';

const [site, shared] = process.argv.slice(2);
const failures = [];
const check = (ok, what) => ok || failures.push(what);
const sha256 = (bytes) => createHash('sha256').update(bytes).digest('hex');

function table(folder, tsv) {
  return readFileSync(join(shared, tsv), 'utf8').trim().split('\n').slice(1).map((line) => {
    const [file, , outcome, sha, kind, caption] = line.split('\t');
    return { path: join(shared, folder, file), outcome, sha, kind: Number(kind), caption };
  });
}

// The pixels of a bottom-up Windows bitmap of 1, 4 or 24 bits, top row
// first, as RGBA: what the canvas must hold.
function bitmapPixels(bmp) {
  const at = bmp.readUInt32LE(10), width = bmp.readInt32LE(18), height = bmp.readInt32LE(22);
  const bits = bmp.readUInt16LE(28), stride = Math.ceil((width * bits) / 32) * 4;
  const rgba = Buffer.alloc(width * height * 4);
  for (let y = 0; y < height; y++) {
    const row = at + (height - 1 - y) * stride;
    for (let x = 0; x < width; x++) {
      let b, g, r;
      if (bits === 24) [b, g, r] = bmp.subarray(row + 3 * x, row + 3 * x + 3);
      else {
        const index = bits === 4 ? (bmp[row + (x >> 1)] >> (x & 1 ? 0 : 4)) & 15 : (bmp[row + (x >> 3)] >> (7 - (x & 7))) & 1;
        [b, g, r] = bmp.subarray(54 + 4 * index, 57 + 4 * index);
      }
      rgba.set([r, g, b, 255], 4 * (y * width + x));
    }
  }
  return { width, height, rgba };
}

const server = await serve(site);
const origin = addressOf(server);
const browser = await launch();
const scratch = mkdtempSync(join(tmpdir(), 'velmoric-web-'));
const started = Date.now();
try {
  const page = await browser.newPage();
  await page.setViewport({ width: 1280, height: 800 });
  const requested = [];
  page.on('request', (request) => requested.push(request.url()));
  page.on('pageerror', (error) => failures.push(`page error: ${error.message}`));

  // What a save hands to the browser's download: the blob behind the link
  // it clicks. (Chromium holds back a page's downloads after the first few,
  // so the files themselves are not waited for.)
  await page.evaluateOnNewDocument(() => {
    const make = URL.createObjectURL;
    URL.createObjectURL = (blob) => { window.lastSaved = blob; return make(blob); };
  });
  const saveBmp = async () => {
    await page.evaluate(() => { window.lastSaved = null; });
    await page.click('#save-bmp');
    const bytes = await page.waitForFunction(async () =>
      window.lastSaved && Array.from(new Uint8Array(await window.lastSaved.arrayBuffer())), { timeout: 10000 });
    return Buffer.from(await bytes.jsonValue());
  };
  const shown = () => page.evaluate(async () => {
    const canvas = document.getElementById('picture');
    const pixels = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data;
    const digest = await crypto.subtle.digest('SHA-256', pixels);
    return {
      caption: document.getElementById('caption').textContent,
      error: document.getElementById('error').textContent,
      width: canvas.width, height: canvas.height,
      pixels: Array.from(new Uint8Array(digest), (b) => b.toString(16).padStart(2, '0')).join(''),
    };
  });
  const settled = (caption) => page.waitForFunction((want) => {
    const text = (id) => document.getElementById(id).textContent;
    return text('caption') === want || text('error') !== '';
  }, { timeout: 10000 }, caption).catch(() => {});
  const open = async (paths) => (await page.$('#open')).uploadFile(...paths);

  await page.goto(`${origin}/`);

  // Every row of both tables: the list is one table's files, stepped through
  // with the Right key.
  let rows = 0;
  for (const rowsOfTable of [table('corpus', 'expected/corpus.tsv'), table('synthetic', 'synthetic/EXPECTED.tsv')]) {
    for (const [i, row] of rowsOfTable.entries()) {
      const name = basename(row.path);
      const caption = `${name.toUpperCase()} ${row.caption}`;
      if (i === 0) await open(rowsOfTable.map((r) => r.path));
      else await page.keyboard.press('ArrowRight');
      await settled(caption);
      const now = await shown();
      if (now.caption !== caption || now.error) {
        check(false, `${name}: caption "${now.caption}", error "${now.error}"`);
        continue;
      }
      const bmp = await saveBmp();
      check(sha256(bmp) === row.sha, `${name}: saved bitmap differs from the table`);
      const expected = bitmapPixels(bmp);
      check(now.width === expected.width && now.height === expected.height && now.pixels === sha256(expected.rgba),
        `${name}: canvas ${now.width}x${now.height} does not hold the bitmap's pixels`);
      rows++;
    }
  }
  check(rows === 164, `${rows} rows opened, 164 expected`);

  // Bad files: each leaves the picture on show and names itself in #error.
  const bad = [
    ['SHORT.SPU', Buffer.alloc(100), 'SPU##Sorry a file error has occured.\nProbably an incorrect file type or invalid picture file.'],
    ['NOTES.TXT', Buffer.from('text'), 'TXT##Sorry a file error has occured.'],
    ['MIXED.Neo', Buffer.alloc(32128), 'Neo##Sorry a file error has occured.'],
    ['HUGE.PI1', Buffer.alloc(70000), 'no picture format needs more than 65533'],
  ];
  const before = await shown();
  for (const [name, bytes, text] of bad) {
    const path = join(scratch, name);
    writeFileSync(path, bytes);
    await open([path]);
    await page.waitForFunction((n) => document.getElementById('error').textContent.startsWith(`${n}: `),
      { timeout: 10000 }, name).catch(() => {});
    const now = await shown();
    check(now.error.startsWith(`${name}: `) && now.error.includes(text), `${name}: error "${now.error}"`);
    check(now.caption === before.caption && now.pixels === before.pixels, `${name}: the picture on show changed`);
  }
  const good = table('corpus', 'expected/corpus.tsv')[0];
  await open([good.path]);
  await settled(`${basename(good.path).toUpperCase()} ${good.caption}`);
  check((await shown()).error === '', 'a good open after a bad one leaves #error filled');

  // Inversion of both mono kinds: the complement, and back again.
  const mono = [...table('corpus', 'expected/corpus.tsv'), ...table('synthetic', 'synthetic/EXPECTED.tsv')];
  for (const kind of [3, 4]) {
    const row = mono.find((r) => r.kind === kind);
    await open([row.path]);
    await settled(`${basename(row.path).toUpperCase()} ${row.caption}`);
    const original = bitmapPixels(await saveBmp()).rgba;
    await page.click('#invert');
    const once = bitmapPixels(await saveBmp()).rgba;
    check(once.every((v, i) => (i % 4 === 3 ? v === 255 : v === 255 - original[i])), `kind ${kind}: not inverted`);
    check((await shown()).pixels === sha256(once), `kind ${kind}: the canvas does not show the inverted bitmap`);
    await page.click('#invert');
    check(sha256(await saveBmp()) === row.sha, `kind ${kind}: two inversions do not give the picture back`);
  }

  // Colour cycles: the key C plays them on the canvas alone; a save stops
  // them and writes the exact bitmap, and the canvas shows its pixels again.
  // A picture without cycles offers none.
  const corpus = table('corpus', 'expected/corpus.tsv');
  for (const [name, cycles] of [['LOGO.PC1', true], ['00471.PI1', true], ['DIEGO.NEO', false]]) {
    const row = corpus.find((r) => basename(r.path) === name);
    await open([row.path]);
    await settled(`${name} ${row.caption}`);
    const still = await shown();
    check(await page.$eval('#cycle', (b) => b.disabled) === !cycles, `${name}: #cycle offered ${!cycles}`);
    if (!cycles) continue;
    await page.keyboard.press('c');
    const moved = await page.waitForFunction(async (before) => {
      const canvas = document.getElementById('picture');
      const data = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data;
      const digest = new Uint8Array(await crypto.subtle.digest('SHA-256', data));
      return Array.from(digest, (b) => b.toString(16).padStart(2, '0')).join('') !== before;
    }, { timeout: 5000, polling: 20 }, still.pixels).catch(() => null);
    check(moved !== null, `${name}: no colour moved`);
    check(await page.$eval('#cycle', (b) => b.getAttribute('aria-pressed')) === 'true', `${name}: #cycle not pressed`);
    check(sha256(await saveBmp()) === row.sha, `${name}: a save while cycling is not the exact bitmap`);
    check((await shown()).pixels === still.pixels, `${name}: the decoded pixels are not back after a save`);
  }

  // Nothing was asked of another origin, and the page's policy forbids it.
  const foreign = requested.filter((url) => !url.startsWith(`${origin}/`) && !/^(data|blob):/.test(url));
  check(foreign.length === 0, `requests to other origins: ${foreign.join(' ')}`);
  const blocked = await page.evaluate(() => new Promise((resolve) => {
    document.addEventListener('securitypolicyviolation', (e) => resolve(e.violatedDirective), { once: true });
    fetch('http://127.0.0.2:9/').catch(() => {});
  }));
  check(blocked === 'connect-src', `a request to another origin was not refused by the policy (${blocked})`);
} finally {
  await browser.close();
  server.close();
  rmSync(scratch, { recursive: true, force: true });
}

console.log(`${((Date.now() - started) / 1000).toFixed(1)} s in Chromium`);
for (const failure of failures) console.log(`FAIL ${failure}`);
console.log(failures.length ? `${failures.length} failures` : 'all passed');
process.exit(failures.length ? 1 : 0);
