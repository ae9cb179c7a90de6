// Builds pages and opens them in Chromium.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { readFileSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { join } from 'node:path';

export const [work, nodal, kestrel, sample] = process.argv.slice(2);

const require = createRequire(join(work, 'package.json'));
const { chromium } = require('playwright-core');
export const axeSource = readFileSync(require.resolve('axe-core/axe.min.js'), 'utf8');

// A host from JSON as {snapshot, page}: the paths of both files.
export function build(name, json) {
  const snapshot = join(work, `${name}.nodal`);
  writeFileSync(join(work, `${name}.json`), JSON.stringify(json));
  execFileSync(nodal, ['build', join(work, `${name}.json`), '-o', snapshot]);
  return { snapshot, page: pageOf(name, snapshot) };
}

export function pageOf(name, snapshot, ...options) {
  const page = join(work, `${name}.html`);
  execFileSync(nodal, ['page', snapshot, '-o', page, ...options], { stdio: ['ignore', 'ignore', 'inherit'] });
  return page;
}

// The rows of a report in KB, as objects by column.
export function report(snapshot, name, columns, ...options) {
  const text = execFileSync(kestrel, ['-c', snapshot, '-r', name, '-q', '-s', columns.join(':'), ...options], { encoding: 'utf8' });
  const [header, ...lines] = text.trim().split('\n');
  const names = header.split(',');
  return lines.map((line) => Object.fromEntries(line.split(',').map((cell, i) => [names[i], cell])));
}

// CI machines often forbid the browser's own sandbox. The tests can do without it, because they created the pages.
export function startBrowser() {
  return chromium.launch({ executablePath: '/usr/bin/chromium', args: ['--no-sandbox'] });
}

// Opens a page and waits for its views. `troubles` collects the messages, errors, dialogs and requests of the page.
export async function open(browser, file, { hash = '', ...context } = {}) {
  const tab = await browser.newPage({ viewport: { width: 1280, height: 900 }, ...context });
  tab.troubles = [];
  tab.on('console', (message) => tab.troubles.push(message.text()));
  tab.on('pageerror', (error) => tab.troubles.push(error.message));
  tab.on('dialog', (dialog) => { tab.troubles.push(`dialog: ${dialog.message()}`); dialog.dismiss(); });
  tab.on('request', (request) => { if (!request.url().startsWith('file:')) tab.troubles.push(`request: ${request.url()}`); });
  await tab.goto(`file://${file}${hash}`);
  if (context.javaScriptEnabled !== false) await tab.waitForSelector('html.ready', { timeout: 120000 });
  return tab;
}

// Opens a page and calls `use` with it. Fails if `troubles` is not empty.
export async function withPage(browser, file, use, options) {
  const tab = await open(browser, file, options);
  try {
    await use(tab);
    assert.deepEqual(tab.troubles, []);
  } finally {
    await tab.close();
  }
}

// The number in a text with all digits, such as "7,128,064 KB".
export const digits = (text) => Number(/-?[\d,]+/.exec(text)[0].replaceAll(',', ''));
export const exact = async (locator) => digits(await locator.getAttribute('title'));
export const texts = (locator) => locator.evaluateAll((all) => all.map((each) => each.textContent));
