// Tests the page of a history in Chromium: the lanes and the cursors, and that all views show the reports of the moment
// under the cursor. Takes the history of the example night as its last argument.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { cpSync, mkdirSync, rmSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { after, before, test } from 'node:test';

import { axeSource, exact, nodal, open, pageOf, report, startBrowser, texts, withPage, work } from './browser.mjs';

const night = process.argv[6];
const screenshots = join(work, 'screenshots');
const minute = (text) => (Date.parse(`2026-03-14T${text}:00Z`) - Date.parse('2026-03-13T22:00:00Z')) / 60000;
let browser;
let page;

before(async () => {
  mkdirSync(screenshots, { recursive: true });
  page = pageOf('night', night);
  browser = await startBrowser();
});

after(() => browser?.close());

const onPage = (use, options) => withPage(browser, page, use, options);
const cursor = (tab) => tab.getByRole('slider', { name: 'Cursor', exact: true });
const second = (tab) => tab.getByRole('slider', { name: 'Second cursor' });
const timeOf = (tab) => tab.locator('#time').textContent();

// Moves the cursor by a click, and waits for the views.
async function clickAt(tab, text, options = {}) {
  const box = await tab.locator('#plot').boundingBox();
  await tab.locator('#plot').click({ position: { x: (minute(text) / 481) * box.width, y: 100 }, ...options });
  await settled(tab);
}

// Waits until the views have followed the cursor, and the lanes are drawn.
async function settled(tab) {
  await tab.evaluate(() => new Promise((done) => setTimeout(() => requestAnimationFrame(() => setTimeout(done)), 120)));
}

test('the page starts at the last sample', () => onPage(async (tab) => {
  assert.equal(await timeOf(tab), '2026-03-14T06:00:00Z');
  assert.match(await tab.locator('#lanes').textContent(), /481 samples from 2026-03-13T22:00:00Z to 2026-03-14T06:00:00Z, in steps of 1 min/);
  assert.deepEqual(await texts(tab.locator('#plot .head bdi')), ['memory state', 'free memory', 'consumed by groups']);
}));

for (const moment of ['03:12', '01:00']) {
  test(`at ${moment}, every view shows the reports of that moment`, () => onPage(async (tab) => {
    await clickAt(tab, moment);
    const snapshot = `${night}@2026-03-14T${moment}:00Z`;
    assert.equal(await timeOf(tab), `2026-03-14T${moment}:00Z`);
    const [host] = report(snapshot, 'comp-stats', ['free', 'memState']);
    assert.equal(await tab.locator('.verdict strong').textContent(), host.memState.toLowerCase());
    assert.equal(await exact(tab.locator('.state p:nth-child(2) .figure').first()), Number(host.free));
    assert.equal(await exact(tab.locator('#plot .head').nth(1).locator('[title]')), Number(host.free));
    for (const row of report(snapshot, 'group-stats', ['gid', 'name', 'consumed', 'max', 'min', 'eMin'])) {
      await tab.evaluate((id) => (location.hash = `#group-${id}`), row.gid);
      await tab.locator('#panel .kind', { hasText: new RegExp(`ID ${row.gid}(,|$)`) }).waitFor();
      const figures = tab.locator('#panel > dl').first().locator('dd span');
      for (const [i, column] of ['consumed', 'max', 'min', 'eMin'].entries()) {
        if (row[column] === '-1') assert.match(await figures.nth(i).textContent(), /unlimited|n\/a/);
        else assert.equal(await exact(figures.nth(i)), Number(row[column]), `${row.name}: ${column}`);
      }
    }
    const columns = ['memSize', 'mapped', 'shared', 'zipped', 'swapped', 'ballooned', 'ovhd'];
    for (const row of report(snapshot, 'vm-stats', ['name', ...columns]).filter((each) => each.name !== 'Total')) {
      const cells = tab.locator('#machine-table tbody tr', { has: tab.locator(`bdi:text-is("${row.name}")`) }).locator('td span[title]');
      for (const [i, column] of columns.entries()) assert.equal(await exact(cells.nth(i)), Number(row[column]), `${row.name}: ${column}`);
    }
    for (const row of report(snapshot, 'heap-stats', ['name', 'size', 'used']).filter((each) => each.name !== 'Total')) {
      assert.equal(await exact(tab.getByRole('group', { name: 'Kernel heaps' }).locator('tbody tr', { has: tab.locator(`bdi:text-is("${row.name}")`) }).locator('td.right span').first()), Number(row.size));
    }
  }));
}

test('the cursors are used by keyboard', () => onPage(async (tab) => {
  await cursor(tab).focus();
  await tab.keyboard.press('ArrowLeft');
  await settled(tab);
  assert.equal(await timeOf(tab), '2026-03-14T05:59:00Z');
  assert.match(await cursor(tab).getAttribute('aria-valuetext'), /^2026-03-14T05:59:00Z: memory state clear, free memory 22\.9 GB/);
  await tab.keyboard.press('Shift+PageDown');
  await settled(tab);
  assert.equal(await second(tab).getAttribute('aria-valuenow'), '469');
  assert.equal(await cursor(tab).getAttribute('aria-valuenow'), '479');
  assert.match(await tab.locator('#changes h3').textContent(), /from 2026-03-14T05:49:00Z to 2026-03-14T05:59:00Z/);
  await second(tab).focus();
  await tab.keyboard.press('Home');
  await settled(tab);
  assert.equal(await second(tab).getAttribute('aria-valuenow'), '0');
  await tab.keyboard.press('Escape');
  await settled(tab);
  assert.equal(await second(tab).count(), 0);
  assert.equal(await tab.locator('#changes').textContent(), '');
  await cursor(tab).focus();
  await tab.keyboard.press('Home');
  await settled(tab);
  assert.equal(await timeOf(tab), '2026-03-13T22:00:00Z');
  await tab.keyboard.press('ArrowLeft');
  await settled(tab);
  assert.equal(await timeOf(tab), '2026-03-13T22:00:00Z');
}));

test('two cursors show what changed', () => onPage(async (tab) => {
  await clickAt(tab, '02:30');
  await clickAt(tab, '03:12', { modifiers: ['Shift'] });
  const rows = await tab.getByRole('group', { name: 'Groups that changed most' }).locator('tbody tr').evaluateAll((all) => all.map((row) => [...row.cells].map((cell) => cell.textContent)));
  const shell = rows.find(([name]) => name === 'shell');
  assert.ok(rows.indexOf(shell) < 3, 'the group that took the memory is among the first');
  const consumed = (moment) => Number(report(`${night}@2026-03-14T${moment}:00Z`, 'group-stats', ['name', 'consumed']).find((row) => row.name === 'shell').consumed);
  const grown = (consumed('03:12') - consumed('02:30')) / 1024 / 1024;
  assert.equal(shell[3], `+${grown.toFixed(1)} GB`);
  await tab.getByRole('group', { name: 'Groups that changed most' }).getByRole('link', { name: 'shell' }).click();
  assert.equal(await tab.locator('#panel h3').textContent(), 'shell');
  await tab.getByRole('checkbox', { name: /Compare/ }).uncheck();
  await settled(tab);
  assert.equal(await tab.locator('#changes').textContent(), '');
}));

test('groups get lanes of their own', () => onPage(async (tab) => {
  await tab.getByLabel('Find a group').fill('shell');
  await tab.locator('#matches button').click();
  await tab.getByRole('button', { name: 'Add to the lanes' }).click();
  assert.deepEqual((await texts(tab.locator('#plot .head bdi'))).at(-1), 'shell');
  await tab.getByRole('button', { name: 'Remove the lane of shell' }).click();
  assert.equal(await tab.locator('#plot .head').count(), 3);
}));

test('all figures of a group have their sources', () => onPage(async (tab) => {
  await tab.getByLabel('Find a group').fill('shell');
  await tab.locator('#matches button').click();
  assert.match(await tab.locator('#panel > details').textContent(), /GroupMemoryStatsRecord of .*consumed/);
}));

test('spikes are marked and lead to their step', () => onPage(async (tab) => {
  await tab.locator('#spikes button', { hasText: 'free memory' }).first().click();
  await settled(tab);
  assert.match(await timeOf(tab), /^2026-03-14T03:/);
  const least = Math.min(...['03:12', '03:13', '03:24'].map((moment) => Number(report(`${night}@2026-03-14T${moment}:00Z`, 'comp-stats', ['free'])[0].free)));
  assert.ok((await exact(tab.locator('.state p:nth-child(2) .figure').first())) <= least);
}));

test('the lanes are zoomed and panned', () => onPage(async (tab) => {
  const shown = () => tab.locator('#cursor-1').evaluate((each) => parseFloat(each.style.left));
  const plot = tab.locator('#plot');
  const { width } = await plot.boundingBox();
  await clickAt(tab, '02:00');
  const left = await shown();
  await tab.getByRole('button', { name: 'Hour', exact: true }).click();
  await settled(tab);
  assert.ok(Math.abs((await shown()) - width / 2) < 3);
  await tab.getByRole('button', { name: 'All', exact: true }).click();
  await settled(tab);
  assert.ok(Math.abs((await shown()) - left) < 1);
  await plot.hover({ position: { x: left, y: 60 } });
  await tab.mouse.wheel(0, -600);
  await settled(tab);
  assert.ok(Math.abs((await shown()) - left) < 5, 'the wheel zooms around the pointer');
  const { x, y } = await plot.boundingBox();
  await tab.mouse.move(x + 500, y + 60);
  await tab.mouse.down();
  await tab.mouse.move(x + 400, y + 60, { steps: 4 });
  await tab.mouse.up();
  await settled(tab);
  assert.ok(Math.abs((await shown()) - (left - 100)) < 6, 'the lanes follow the pointer');
  assert.equal(await timeOf(tab), '2026-03-14T02:00:00Z');
}));

// An hour is missing.
test('gaps are gaps', async () => {
  const folder = join(work, 'night-with-gap');
  cpSync(night, folder, { recursive: true });
  rmSync(join(folder, '2026-03-14T01Z.history'));
  const tab = await open(browser, pageOf('night-with-gap', folder));
  assert.match(await tab.locator('#events').textContent(), /^1 interruption2026-03-14T00:59:00Z to 2026-03-14T02:00:00Z: no samples were taken/);
  await clickAt(tab, '01:10');
  assert.equal(await timeOf(tab), '2026-03-14T00:59:00Z');
  await tab.keyboard.press('ArrowRight');
  await settled(tab);
  assert.equal(await timeOf(tab), '2026-03-14T02:00:00Z');
  // The shares of pixels, from 0 to 1, that have the colour of the memory state, before the gap and in the gap.
  const shares = await tab.evaluate((parts) => {
    const canvas = document.querySelector('#plot canvas');
    const { data } = canvas.getContext('2d').getImageData(0, (60 * canvas.height) / canvas.clientHeight, canvas.width, 1);
    const pixels = new Uint32Array(data.buffer);
    return parts.map((bounds) => {
      const part = pixels.slice(...bounds.map((each) => each * canvas.width));
      return part.filter((each) => each === pixels[40]).length / part.length;
    });
  }, [['00:05', '00:55'], ['01:05', '01:55']].map((part) => part.map((text) => minute(text) / 481)));
  assert.ok(shares[0] > 0.9 && shares[1] === 0, `${shares}`);
  await tab.screenshot({ path: join(screenshots, 'time-gap.png') });
  assert.deepEqual(tab.troubles, []);
  await tab.close();
});

// Records a root folder with a heap that grows.
test('heaps that grew come first', async () => {
  const [root, folder] = ['growing-root', 'growing'].map((name) => join(work, name));
  for (const each of [root, folder]) rmSync(each, { recursive: true, force: true });
  mkdirSync(join(root, 'proc'), { recursive: true });
  for (const pages of [10000, 30000]) {
    const line = (name, count) => `${name} 100 100 192 21 1 : tunables 0 0 0 : slabdata ${count} ${count} 0\n`;
    writeFileSync(join(root, 'proc/slabinfo'), `slabinfo - version: 2.1\n${line('large', 50000)}${line('growing', pages)}`);
    execFileSync(nodal, ['--root', root, 'record', '-d', folder, '--every', '1', '--count', '1'], { stdio: 'ignore' });
    await new Promise((done) => setTimeout(done, 1100));
  }
  const tab = await open(browser, pageOf('growing', folder));
  const cells = await texts(tab.getByRole('group', { name: 'Heaps that grew most' }).locator('tbody tr').locator('th, td'));
  const before = Number(report(`${folder}@-1s`, 'heap-stats', ['name', 'size']).find((row) => row.name === 'growing').size);
  assert.equal(before, 10000 * 4096);
  assert.deepEqual(cells, ['growing', '39.1 MB', '117 MB', '+78.1 MB']);
  const found = () => tab.locator('.card.findings').textContent();
  assert.match(await found(), /Kernel heap growing grew from 39\.1 MB to 117 MB since /);
  await cursor(tab).press('Home');
  await settled(tab);
  assert.match(await tab.locator('#heaps').textContent(), /No heap grew/);
  assert.doesNotMatch(await found(), /growing grew/);
  assert.deepEqual(tab.troubles, []);
  await tab.close();
});

test('the page of a history is readable without scripts', () => onPage(async (tab) => {
  const rows = await tab.locator('#lanes tbody tr').evaluateAll((all) => all.map((row) => [...row.cells].map((cell) => cell.textContent)));
  const [free] = report(`${night}@2026-03-14T03:13:00Z`, 'comp-stats', ['free']);
  assert.equal(rows[1][0], 'free memory');
  assert.equal(rows[1][1], `${Math.round(free.free / 1024)} MB`);
  assert.match(rows[1][2], /^2026-03-14T03:/);
}, { javaScriptEnabled: false }));

for (const [width, colorScheme] of [[1280, 'light'], [1280, 'dark'], [390, 'light']]) {
  test(`time, ${width} pixels, ${colorScheme}: accessible, and as wide as the screen`, () => onPage(async (tab) => {
    await clickAt(tab, '03:12');
    await clickAt(tab, '02:30', { modifiers: ['Shift'] });
    assert.equal(await tab.evaluate(() => document.documentElement.scrollWidth), width);
    await tab.screenshot({ path: join(screenshots, `time-${width}-${colorScheme}.png`), fullPage: true });
    await tab.locator('details').evaluateAll((all) => all.forEach((each) => (each.open = true)));
    await tab.evaluate(axeSource);
    const { violations } = await tab.evaluate(() => globalThis.axe.run());
    assert.deepEqual(violations.map(({ id, nodes }) => `${id}: ${nodes.map((node) => node.html).slice(0, 3).join(' ')}`), []);
  }, { viewport: { width, height: 900 }, colorScheme }));
}

// Redrawing the lanes must not delay the next frame of the screen.
test('zooming and panning drop no frame', () => onPage(async (tab) => {
  const longest = await tab.evaluate(async () => {
    const plot = document.getElementById('plot');
    const times = [];
    for (let i = 0; i < 40; ++i) {
      const start = performance.now();
      plot.dispatchEvent(new WheelEvent('wheel', { deltaY: i < 20 ? -40 : 40, clientX: 300, bubbles: true, cancelable: true }));
      await new Promise((done) => requestAnimationFrame(() => { times.push(performance.now() - start); setTimeout(done); }));
    }
    return times.sort((a, b) => b - a)[2];
  });
  console.log(`zoom in ${Math.round(longest)} ms`);
  assert.ok(longest < 100);
}));
