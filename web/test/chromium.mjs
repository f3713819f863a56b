// Debian's Chromium under puppeteer-core, headless, for the tests and the
// bench. As root (CI) Chromium runs only without its sandbox.
import puppeteer from 'puppeteer-core';

export function launch() {
  const root = process.getuid && process.getuid() === 0;
  return puppeteer.launch({
    executablePath: process.env.CHROMIUM || '/usr/bin/chromium',
    headless: true,
    args: [...(root ? ['--no-sandbox'] : []), '--disable-gpu', '--no-first-run', '--no-default-browser-check'],
  });
}
