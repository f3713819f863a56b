// The page in Chromium: the median time from a file chosen to its picture
// drawn, over every corpus picture, and the size of the whole site.
// Usage: node bench/web_bench.mjs [SITE] [SHARED]  (build the site first:
// scripts/web build). Needs web/node_modules (scripts/deps).
import { readdirSync, readFileSync, statSync } from 'node:fs';
import { basename, dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';

import { launch } from '../web/test/chromium.mjs';
import { addressOf, serve } from '../web/server.mjs';

const root = join(dirname(fileURLToPath(import.meta.url)), '..');
const [site = join(root, 'build-web/site'), shared = join(root, '../shared')] = process.argv.slice(2);
const rows = readFileSync(join(shared, 'expected/corpus.tsv'), 'utf8').trim().split('\n').slice(1)
  .map((line) => line.split('\t')[0]);

const server = await serve(site);
const browser = await launch();
const times = [];
try {
  const page = await browser.newPage();
  await page.goto(`${addressOf(server)}/`);
  // Timed inside the page: from the chooser's change event to the first
  // frame painted after the caption names the file.
  await page.evaluate(() => {
    document.getElementById('open').addEventListener('change', () => { window.chosenAt = performance.now(); }, true);
  });
  const input = await page.$('#open');
  for (const round of [0, 1]) {
    for (const file of rows) {
      await input.uploadFile(join(shared, 'corpus', file));
      const ms = await page.waitForFunction((name) => {
        if (!document.getElementById('caption').textContent.startsWith(name.toUpperCase() + '  ')) return false;
        return new Promise((resolve) => requestAnimationFrame(() => resolve(performance.now() - window.chosenAt)));
      }, {}, basename(file));
      if (round === 1) times.push(await ms.jsonValue());  // the first round warms up
    }
  }
} finally {
  await browser.close();
  server.close();
}
times.sort((a, b) => a - b);
const median = times[Math.floor(times.length / 2)];
const bytes = readdirSync(site).reduce((sum, f) => sum + statSync(join(site, f)).size, 0);
console.log(`open to drawn: median ${median.toFixed(1)} ms over ${times.length} corpus pictures (max ${times.at(-1).toFixed(1)} ms)`);
console.log(`site: ${(bytes / 1024).toFixed(1)} KB in ${readdirSync(site).length} files`);
