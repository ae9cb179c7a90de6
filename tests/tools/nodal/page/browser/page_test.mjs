// Tests the pages of several hosts in Chromium: every view is used, and compared with the reports of the same snapshot.
import assert from 'node:assert/strict';
import { mkdirSync, readFileSync } from 'node:fs';
import { join } from 'node:path';
import { after, before, test } from 'node:test';

import { axeSource, build, digits, exact, open, pageOf, report, sample, startBrowser, texts, withPage, work } from './browser.mjs';
import { hostileNames, ideographs, large, odd, small, troubled, wideName } from './hosts.mjs';

const screenshots = join(work, 'screenshots');
const hosts = {};
let browser;

before(async () => {
  mkdirSync(screenshots, { recursive: true });
  hosts['two-vms'] = { snapshot: sample, page: pageOf('two-vms', sample) };
  for (const [name, json] of Object.entries({ troubled: troubled(), large: large(3000), small: small(), odd: odd() })) hosts[name] = build(name, json);
  browser = await startBrowser();
});

after(() => browser?.close());

const onPage = (name, use, options) => withPage(browser, hosts[name].page, use, options);

for (const name of ['two-vms', 'troubled']) {
  test(`${name}: the overview shows comp-stats`, () => onPage(name, async (tab) => {
    const [row] = report(hosts[name].snapshot, 'comp-stats', ['total', 'free', 'minFree', 'memState', 'numHigh', 'numClear', 'numSoft', 'numHard', 'numLow']);
    assert.equal((await tab.locator('.verdict strong').textContent()), row.memState.toLowerCase());
    const amounts = tab.locator('.state p:nth-child(2) .figure');
    assert.equal(await exact(amounts.nth(0)), Number(row.free));
    assert.equal(await exact(amounts.nth(1)), Number(row.total));
    assert.equal(await exact(amounts.nth(2)), Number(row.minFree));
    const entered = await texts(tab.locator('.state td'));
    assert.deepEqual(entered.map(Number), ['numHigh', 'numClear', 'numSoft', 'numHard', 'numLow'].map((key) => Number(row[key])));
  }));

  test(`${name}: the parts of memory add up to the total`, () => onPage(name, async (tab) => {
    const [{ total }] = report(hosts[name].snapshot, 'comp-stats', ['total']);
    const parts = tab.locator('#memory tbody tr:not(.total) td:nth-child(2) span');
    const kb = await parts.evaluateAll((all) => all.map((each) => Number(/[\d,]+/.exec(each.title)[0].replaceAll(',', ''))));
    assert.equal(kb.reduce((a, b) => a + b, 0), Number(total));
    const widths = await tab.locator('.bar.tall .part').evaluateAll((all) => all.map((each) => each.getBoundingClientRect().width));
    const bar = (await tab.locator('.bar.tall').boundingBox()).width;
    assert.ok(Math.abs(widths.reduce((a, b) => a + b, 0) - bar) < 2, `${widths} do not fill ${bar}`);
  }));

  test(`${name}: the machines are those of vm-stats`, () => onPage(name, async (tab) => {
    const columns = ['memSize', 'mapped', 'shared', 'zipped', 'swapped', 'ballooned', 'ovhd'];
    const rows = report(hosts[name].snapshot, 'vm-stats', ['name', ...columns]);
    for (const row of rows.filter((each) => each.name !== 'Total')) {
      const cells = tab.locator('#machine-table tbody tr', { has: tab.locator(`bdi:text-is("${row.name}")`) }).locator('td span[title]');
      for (const [i, column] of columns.entries()) assert.equal(await exact(cells.nth(i)), Number(row[column]), `${row.name}: ${column}`);
    }
    const guests = report(hosts[name].snapshot, 'guest-stats', ['name', 'memTotal', 'memNeeded']).filter((row) => row.name !== 'Total');
    for (const row of guests) {
      const cells = tab.locator('#machine-table tbody tr', { has: tab.locator(`bdi:text-is("${row.name}")`) }).locator('td span');
      const shown = (await texts(cells)).slice(-2);
      for (const [i, key] of ['memTotal', 'memNeeded'].entries()) assert.equal(shown[i] === 'n/a', row[key] === '-1', `${row.name}: ${key}`);
    }
  }));

  test(`${name}: the nodes are those of buddy-stats`, () => onPage(name, async (tab) => {
    const sizes = ['4KB', '2MB', '4MB'].map((size) => `${size}free`);
    const rows = report(hosts[name].snapshot, 'buddy-stats', ['name', ...sizes]).filter((row) => row.name && row.name !== 'Total');
    const headers = await texts(tab.locator('#nodes thead').first().locator('th'));
    const shown = await tab.locator('#nodes .scrolling').first().locator('tbody tr').evaluateAll((all) => all.map((row) => [...row.cells].map((cell) => cell.textContent)));
    for (const size of sizes) {
      const column = headers.indexOf(size.replace('free', '').replace(/(\d+)/, '$1 '));
      const ofHost = shown.filter(([name]) => name.startsWith('node ')).reduce((all, cells) => all + digits(cells[column]), 0);
      assert.equal(ofHost, rows.reduce((all, row) => all + Number(row[size]), 0), size);
    }
  }));

  test(`${name}: the heaps are those of heap-stats`, () => onPage(name, async (tab) => {
    const rows = report(hosts[name].snapshot, 'heap-stats', ['name', 'size', 'used', 'pctFreeOfCur']).filter((row) => row.name !== 'Total');
    for (const row of rows) {
      const cells = tab.locator('#heaps .scrolling').first().locator('tbody tr', { has: tab.locator(`bdi:text-is("${row.name}")`) }).locator('td.right');
      assert.equal(await exact(cells.nth(0).locator('span')), Number(row.size));
      assert.equal(await exact(cells.nth(1)), Number(row.used));
      assert.equal(digits(await cells.nth(2).textContent()), Number(row.pctFreeOfCur));
    }
  }));

  test(`${name}: the panel shows each group as group-stats does`, () => onPage(name, async (tab) => {
    const columns = ['consumed', 'max', 'min', 'eMin'];
    for (const row of report(hosts[name].snapshot, 'group-stats', ['gid', 'name', ...columns])) {
      await tab.evaluate((id) => (location.hash = `#group-${id}`), row.gid);
      await tab.locator('#panel .kind', { hasText: new RegExp(`ID ${row.gid}(,|$)`) }).waitFor();
      assert.equal(await tab.locator('#panel h3').textContent(), row.name);
      const figures = tab.locator('#panel > dl').first().locator('dd span');
      for (const [i, column] of ['consumed', 'max', 'min', 'eMin'].entries()) {
        const figure = figures.nth(i);
        if (row[column] === '-1') assert.match(await figure.textContent(), /unlimited|n\/a/);
        else assert.equal(await exact(figure), Number(row[column]), `${row.name}: ${column}`);
      }
    }
  }));
}

test('what stands out on a troubled host is told first', () => onPage('troubled', async (tab) => {
  const found = (await texts(tab.locator('ul.findings li'))).join('\n');
  for (const what of [/ledger lacks .*swapped.*ballooned/, /batch\.service consumes 99 %/, /Node 1 is fragmented/, /heap dentry/]) assert.match(found, what);
  assert.equal(await tab.locator('ul.findings li').count(), 4);
  const box = await tab.locator('ul.findings').boundingBox();
  assert.ok(box.y + box.height < 900, 'the findings are on the first screen');
  await tab.locator('ul.findings a', { hasText: 'batch' }).click();
  assert.equal(await tab.locator('#panel h3').textContent(), 'batch.service');
  await tab.locator('ul.findings a', { hasText: 'ledger' }).click();
  assert.equal(await tab.locator('tr:target th').textContent(), 'ledger');
  assert.ok(await tab.locator('tr:target').isVisible());
}));

test('the icicle is used by mouse', () => onPage('troubled', async (tab) => {
  const box = (name) => tab.getByRole('treeitem', { name });
  const width = async (name) => (await box(name).boundingBox()).width;
  const ratio = (await width(/^machine\.slice/)) / (await width(/^system\.slice/));
  assert.ok(Math.abs(ratio - 26 / 7) < 0.05, `the widths have the ratio ${ratio}`);
  await box(/^system\.slice/).click();
  assert.equal(await box(/^machine\.slice/).count(), 0);
  assert.equal(await tab.locator('#panel h3').textContent(), 'system.slice');
  await tab.locator('#path button', { hasText: 'host' }).click();
  assert.equal(await box(/^machine\.slice/).count(), 1);
  await tab.getByRole('radio', { name: 'Swap' }).check();
  assert.match((await texts(tab.locator('#icicle .box .name'))).join(), /ledger/);
  assert.doesNotMatch((await texts(tab.locator('#icicle .box .name'))).join(), /cache-01/);
  await tab.getByRole('radio', { name: 'Consumption' }).check();
  await tab.goBack();
  assert.equal(await tab.locator('#panel h3').textContent(), 'system.slice');
}));

test('the icicle is used by keyboard', () => onPage('troubled', async (tab) => {
  const focused = () => tab.evaluate(() => document.activeElement.getAttribute('aria-label'));
  await tab.locator('#icicle [tabindex="0"]').focus();
  assert.match(await focused(), /^host /);
  await tab.keyboard.press('ArrowDown');
  assert.match(await focused(), /^machine\.slice/);
  await tab.keyboard.press('ArrowRight');
  assert.match(await focused(), /^kernel /);
  await tab.keyboard.press('End');
  assert.match(await focused(), /^system\.slice/);
  await tab.keyboard.press('Enter');
  assert.equal(await tab.locator('#panel h3').textContent(), 'system.slice');
  assert.match(await focused(), /^system\.slice/);
  await tab.keyboard.press('ArrowDown');
  assert.match(await focused(), /^batch\.service .*99 % of its limit of 4\.00 GB/);
  await tab.keyboard.press('ArrowUp');
  await tab.keyboard.press('Escape');
  assert.equal(await tab.locator('#panel h3').textContent(), 'host');
  await tab.keyboard.press('Home');
  assert.match(await focused(), /^host /);
}));

test('search marks groups and leads to them', () => onPage('large', async (tab) => {
  await tab.getByLabel('Find a group').fill('worker-777');
  assert.match(await tab.locator('#matches').textContent(), /^1 group found/);
  await tab.locator('#matches button').click();
  assert.equal(await tab.locator('#panel h3').textContent(), 'worker-777');
  assert.match(await tab.locator('#icicle .selected').getAttribute('aria-label'), /^worker-777 .*process/);
  await tab.getByLabel('Find a group').fill('service-1');
  assert.ok((await tab.locator('#icicle .match').count()) > 0);
  await tab.getByLabel('Find a group').fill('nothing of this name');
  assert.match(await tab.locator('#matches').textContent(), /^0 groups found/);
}));

test('every one of 3,000 groups can be reached by opening boxes', () => onPage('large', async (tab) => {
  await tab.getByRole('treeitem', { name: /^flat\.slice/ }).click();
  const runs = tab.locator('#icicle .run:not([aria-level="1"])');
  for (let step = 0; step < 6 && (await runs.count()) > 0; ++step) await runs.last().click({ position: { x: 1, y: 10 } });
  assert.equal(await runs.count(), 0);
  assert.ok((await tab.getByRole('treeitem', { name: /^worker-/ }).count()) > 3);
}));

test('the machines are sorted by mouse and keyboard', () => onPage('troubled', async (tab) => {
  const names = () => texts(tab.locator('#machine-table tbody th'));
  assert.deepEqual(await names(), ['ledger', 'web-01', 'cache-01']);
  await tab.getByRole('button', { name: 'mapped' }).click();
  assert.deepEqual(await names(), ['ledger', 'cache-01', 'web-01']);
  await tab.getByRole('button', { name: 'machine', exact: true }).focus();
  await tab.keyboard.press('Enter');
  assert.deepEqual(await names(), ['cache-01', 'ledger', 'web-01']);
  assert.equal(await tab.locator('#machine-table [aria-sort="ascending"]').textContent(), 'machine');
  await tab.keyboard.press('Enter');
  assert.deepEqual(await names(), ['web-01', 'ledger', 'cache-01']);
}));

test('every figure tells its record, field and unit', () => onPage('two-vms', async (tab) => {
  const untold = await tab.locator('.figure, .zero, .na, .unlimited').evaluateAll((all) => all.filter((each) => !each.title && !each.closest('td[title], footer, .backing')).map((each) => each.outerHTML));
  assert.deepEqual(untold, []);
  for (const id of ['memory', 'groups', 'machines', 'nodes', 'heaps']) {
    const rows = tab.locator(`#${id} > .body > .sources tbody tr, #${id} > .sources tbody tr`);
    assert.ok((await rows.count()) > 0, id);
    for (const row of await rows.evaluateAll((all) => all.map((each) => [...each.cells].map((cell) => cell.textContent)))) {
      assert.match(row[0], /^\w+Record\.\S+$/);
      assert.match(row[3], /^\//);
    }
  }
  await tab.evaluate(() => (location.hash = '#group-10'));
  await tab.locator('#panel summary').click();
  assert.match(await tab.locator('#panel details').textContent(), /VmmMemoryStatsRecord of \/sched\/memClients\/1001\/kestrel\/vmm/);
  assert.match(await tab.locator('#panel details').textContent(), /VmSwapInfoRecord of \/sched\/memClients\/1002\/swapInfo/);
}));

test('what is not available differs from zero and from unlimited', () => onPage('small', async (tab) => {
  await tab.evaluate(() => (location.hash = '#group-7'));
  await tab.locator('#panel h3', { hasText: 'only.slice' }).waitFor();
  assert.equal(await tab.locator('#panel dd').first().textContent(), 'n/a');
  assert.equal(await tab.locator('#panel dd .na').first().textContent(), 'n/a');
  assert.equal(await tab.locator('#panel dd .zero').first().textContent(), '0 KB');
  assert.equal(await tab.locator('#icicle .box-unknown').count(), 1);
  assert.match(await tab.locator('#machines').textContent(), /No virtual machine/);
  assert.match(await tab.locator('#heaps').textContent(), /no list of heaps/);
}));

test('names are only text', () => onPage('odd', async (tab) => {
  assert.equal(await tab.locator('h1').textContent(), 'Memory of <b>odd</b>');
  assert.equal(await tab.locator('script').count(), 2);
  assert.equal(await tab.locator('img, b, main svg').count(), 0);
  const members = await texts(tab.locator('#panel .members bdi'));
  for (const name of hostileNames) assert.ok(members.includes(name), name);
  assert.deepEqual(await texts(tab.locator('#machine-table tbody th')), ['</script>', ideographs]);
  assert.ok(members.includes(wideName));
  for (const name of hostileNames) {
    await tab.getByLabel('Find a group').fill(name);
    assert.ok((await texts(tab.locator('#matches button'))).includes(name));
  }
}));

test('names are only text without scripts', () => onPage('odd', async (tab) => {
  assert.equal(await tab.locator('script').count(), 2);
  assert.equal(await tab.locator('img, b').count(), 0);
  const groups = await texts(tab.locator('#groups tbody th'));
  for (const name of [...hostileNames, wideName, ideographs]) assert.ok(groups.includes(name), name);
}, { javaScriptEnabled: false }));

test('the page is readable without scripts', () => onPage('troubled', async (tab) => {
  assert.match(await tab.locator('.verdict').textContent(), /Memory state: clear\. 16\.0 GB of 64\.0 GB are free/);
  assert.ok((await tab.locator('.static-icicle rect').count()) > 8);
  assert.match(await tab.locator('#machines table').textContent(), /ledger16\.0 GB9\.00 GB0 KB3\.00 GB512 MB2\.50 GB12\.0 GB/);
  assert.match(await tab.locator('#nodes table').textContent(), /memmap-01-hi18\.3\d GB0 KB0 KB/);
  assert.match(await tab.locator('#heaps table').textContent(), /dentry3\.90 GB/);
  await tab.screenshot({ path: join(screenshots, 'without-script.png'), fullPage: true });
}, { javaScriptEnabled: false }));

test('the policy stops scripts and styles of others', async () => {
  const tab = await open(browser, hosts['two-vms'].page);
  const html = readFileSync(hosts['two-vms'].page, 'utf8');
  const policy = /Content-Security-Policy" content="([^"]*)"/.exec(html)[1];
  assert.doesNotMatch(policy, /unsafe/);
  const ran = await tab.evaluate(() => {
    const script = document.createElement('script');
    try { script.textContent = 'window.ran = true'; document.body.append(script); } catch { return false; }
    return Boolean(window.ran);
  });
  assert.equal(ran, false);
  assert.equal(await tab.evaluate(() => { try { document.body.innerHTML = 'x'; return 'set'; } catch { return 'refused'; } }), 'refused');
  await tab.close();
});

test('printing opens the sources', () => onPage('two-vms', async (tab) => {
  const pdf = await tab.pdf({ format: 'A4' });
  assert.ok(pdf.length > 20000);
  await tab.evaluate(() => dispatchEvent(new Event('beforeprint')));
  assert.equal(await tab.locator('details.sources:not([open])').count(), 0);
  await tab.evaluate(() => dispatchEvent(new Event('afterprint')));
  assert.ok((await tab.locator('details.sources:not([open])').count()) > 0);
}));

const looks = [
  ['two-vms', 1280, 'light'], ['two-vms', 1280, 'dark'], ['two-vms', 390, 'light'], ['troubled', 1280, 'light'],
  ['large', 1280, 'light'], ['large', 390, 'dark'], ['small', 1280, 'dark'], ['odd', 1280, 'light'], ['odd', 390, 'dark'],
];
for (const [name, width, colorScheme] of looks) {
  const title = `${name}, ${width} pixels, ${colorScheme}`;
  test(`${title}: accessible, and as wide as the screen`, () => onPage(name, async (tab) => {
    assert.equal(await tab.evaluate(() => document.documentElement.scrollWidth), width);
    await tab.screenshot({ path: join(screenshots, `${name}-${width}-${colorScheme}.png`), fullPage: true });
    await tab.locator('details').evaluateAll((all) => all.forEach((each) => (each.open = true)));
    await tab.evaluate(axeSource);
    const { violations } = await tab.evaluate(() => globalThis.axe.run());
    assert.deepEqual(violations.map(({ id, nodes }) => `${id}: ${nodes.map((node) => node.html).slice(0, 3).join(' ')}`), []);
  }, { viewport: { width, height: 900 }, colorScheme }));
}

test('3,000 groups appear fast', () => onPage('large', async (tab) => {
  const paint = await tab.evaluate(() => performance.getEntriesByName('first-contentful-paint')[0].startTime);
  const zoom = await tab.evaluate(() => {
    const start = performance.now();
    document.querySelector('#icicle .box:nth-child(2)').click();
    return performance.now() - start;
  });
  console.log(`first paint after ${Math.round(paint)} ms, zoom in ${Math.round(zoom)} ms, ${readFileSync(hosts.large.page).length} bytes`);
  assert.ok(paint < 2000);
  assert.ok(zoom < 1000);
}));
