// The overview: whether memory is short, what stands out, and where the memory is.

const mostFindings = 12;

function showOverview() {
  show('#overview .body', element('div', { class: 'cards' }, stateCard(), findingsCard()));
  show('#memory', memoryBar(), element('div', { class: 'cards' }, swapCard(), sharingCard(), poolsCard()),
    sources());
}

function stateCard() {
  const state = host.host.figure('GlobalMemoryRecord.memState', 0);
  const name = state.value < host.states.count ? host.states.name(state.value) : 'unknown';
  const free = host.host.figure(whole('free'), 0);
  const total = host.host.figure(whole('total'), 0);
  const minimum = host.host.figure('GlobalMemoryRecord.minFree', 0);
  return element('div', { class: 'card state' },
    element('p', { class: `verdict ${stateClass(state.value)}`, title: originText(state) },
      element('strong', {}, name), ' ', verdict(state.value)),
    element('p', {}, figureElement(free), ' of ', figureElement(total), ` free (${percentText(free.value / total.value)}), minimum `,
      figureElement(minimum)),
    stateTable(state.value));
}

function stateClass(state) {
  return state >= 3 ? 'bad' : state === 2 ? 'warning' : state < 2 ? 'good' : 'unknown';
}

function verdict(state) {
  const words = ['Memory is not short', 'Memory is not short', 'Memory is becoming short', 'Memory is short', 'Memory is very short'];
  return words[state] ?? 'The host does not report whether memory is short';
}

// A state is entered from its two neighbours. The host starts in the first one, which counts as an entry.
function entriesOf(state) {
  const count = (row, field) => host.states.value(`StateTransitionsRecord.${field}`, row);
  const fromAbove = state === 0 ? 1 : count(state - 1, 'toLowerCount');
  const fromBelow = state + 1 < host.states.count ? count(state + 1, 'toHigherCount') : 0;
  return fromAbove === undefined || fromBelow === undefined ? undefined : fromAbove + fromBelow;
}

function stateTable(current) {
  const states = host.states.rows();
  const mark = (state) => state === current && 'current';
  const title = 'computed from StateTransitionsRecord, see the sources';
  const row = element('tr', {}, rowHeader('entered'),
    states.map((state) => element('td', { class: mark(state), title }, countText(entriesOf(state)))));
  return scrolling('Memory states', table('Memory states, from most to least free memory, and how often each was entered since boot',
    [{ text: 'state' }, ...states.map((state) => ({ text: host.states.name(state) }))], [row]));
}

function findingsCard() {
  const found = findings();
  const items = found.slice(0, mostFindings).map(findingItem);
  const more = found.length - items.length;
  return element('div', { class: 'card findings' }, element('h3', {}, 'What stands out'),
    items.length > 0 ? element('ul', { class: 'findings' }, items) : element('p', {}, 'Nothing does.'),
    more > 0 && element('p', {}, `And ${countText(more)} more.`),
    element('details', {}, element('summary', {}, 'What is looked for'),
      element('ul', {}, rules.map((rule) => element('li', {}, rule.what)))));
}

function findingItem({ level, text, open, row }) {
  const words = { bad: 'Critical', warning: 'Warning', note: 'Note' };
  const link = row === undefined ? { href: open } : { href: groupLink(row) };
  return element('li', { class: level }, element('span', { class: 'level' }, words[level]), ' ', element('a', link, text));
}

// Returns the parts of the host's memory, in KB. If they do not add up to the total, the last part is the rest.
function memoryParts() {
  const value = (field) => host.host.value(whole(field), 0);
  const machines = sumOfKnown(host.machines.map((row) => host.groups.value(stats('consumed'), row))) ?? 0;
  const others = value('otherConsumed');
  const isSplit = others !== undefined && machines > 0 && machines <= others;
  const parts = [
    isSplit && { name: 'Virtual machines', style: 'machines', kb: machines, key: stats('consumed'), family: 'groups',
      how: 'sum over all virtual machines' },
    { name: isSplit ? 'Other groups, processes, file cache' : 'Groups, processes, file cache', style: 'others',
      kb: isSplit ? others - machines : others, key: whole('otherConsumed'), how: isSplit ? 'less the virtual machines' : '' },
    { name: 'Kernel\'s clients', style: 'clients', kb: value('hvcClientConsumed'), key: whole('hvcClientConsumed') },
    { name: 'Kernel data and heap', style: 'kernel', kb: value('dataAndHeap'), key: whole('dataAndHeap') },
    { name: 'Kernel code', style: 'code', kb: value('kernelCode'), key: whole('kernelCode') },
    { name: 'Page-allocator metadata', style: 'metadata', kb: value('buddyOvhd'), key: whole('buddyOvhd') },
    { name: 'Discarded', style: 'discarded', kb: value('discarded'), key: whole('discarded') },
    { name: 'Free', style: 'free', kb: value('free'), key: whole('free') },
  ].filter(Boolean);
  const rest = (value('total') ?? 0) - sum(parts.map((part) => part.kb));
  const how = 'the total less all other parts';
  if (rest > 0) parts.push({ name: 'Not named by a figure', style: 'rest', kb: rest, key: whole('total'), how });
  return parts;
}

function memoryBar() {
  if (!host.host.hasRecord('ComprehensiveRecord', 0)) return emptyText('The host\'s memory could not be read.');
  const parts = memoryParts();
  const total = host.host.value(whole('total'), 0);
  const all = sum(parts.map((part) => part.kb));
  const bars = parts.map((part) => barPart(part.style, (part.kb ?? 0) / all, `${part.name}: ${amountText(part.kb)}`));
  const rows = parts.map((part) => element('tr', {},
    rowHeader(element('span', { class: `swatch ${part.style}` }), part.name),
    rightCell(partElement(part)), rightCell(percentText(part.kb / total)),
    element('td', { class: 'origin' }, `${part.key}${part.how ? ` (${part.how})` : ''}`)));
  const sumRow = element('tr', { class: 'total' }, rowHeader('Sum'),
    rightCell(element('span', { title: `${countText(all)} KB` }, amountText(all))),
    rightCell(percentText(all / total)),
    element('td', { class: 'origin' }, all > total ? 'more than the total: some figures overlap' : 'the total of the host'));
  return element('div', {}, element('div', { class: 'bar tall', role: 'img', 'aria-label': 'The parts of all memory, as in the table' }, bars),
    scrolling('Where the memory is', table('The parts of all memory', [{ text: 'part' }, { text: 'amount', right: true },
      { text: 'share', right: true }, { text: 'source, in KB' }], [...rows, sumRow])));
}

function partElement(part) {
  if (part.family || part.how) return element('span', { title: `${countText(part.kb)} KB` }, amountText(part.kb));
  return figureElement(host.host.figure(part.key, 0));
}

// Returns a card with a row for each [what, element].
function factsCard(title, facts, ...more) {
  const rows = facts.filter(Boolean).flatMap(([what, fact]) => [element('dt', {}, what), element('dd', {}, fact)]);
  return element('div', { class: 'card' }, element('h3', {}, title), element('dl', {}, rows), more);
}

function sumElement(values, title) {
  const kb = sumOfKnown(values);
  return element('span', { class: kb === undefined ? 'na' : kb === 0 ? 'zero' : 'figure', title }, amountText(kb));
}

function swapCard() {
  const groups = host.groups;
  const machines = host.machines;
  const processes = groups.rows().filter((row) => !isMachine(row) && groups.hasRecord('UwMemoryStatsRecord', row));
  const one = machines.find((row) => groups.hasRecord('VmSwapInfoRecord', row));
  const traffic = (field) => one !== undefined && figureElement(groups.figure(swapInfo(field), one));
  return factsCard('Swap and compression', [
    ['swapped, machines', sumElement(machines.map((row) => swappedFigure(row)?.value), `sum of ${swapInfo('swapped')}`)],
    ['swapped, processes', sumElement(processes.map((row) => swappedFigure(row)?.value), `sum of ${world('swapped')}`)],
    one !== undefined && ['ever swapped out', traffic('gblSwapOut')],
    one !== undefined && ['ever swapped in', traffic('gblSwapIn')],
    ['compressed, machines', sumElement(machines.map((row) => groups.value(vmm('zipped'), row)), `sum of ${vmm('zipped')}`)],
    ['saved by compression', sumElement(machines.map((row) => groups.value(vmm('zipSaved'), row)), `sum of ${vmm('zipSaved')}`)],
  ]);
}

function sharingCard() {
  if (!host.host.hasRecord('PShareStatsRecord', 0)) return null;
  const figure = (field) => figureElement(host.host.figure(`PShareStatsRecord.${field}`, 0));
  return factsCard('Page sharing', [
    ['shared copy-on-write', figure('cow')], ['backed by', figure('used')], ['saved', figure('reclaimed')],
    ['zeros', figure('zero')], ['candidates', figure('hintsActive')],
  ]);
}

function poolsCard() {
  const used = (row) => host.pools.value('LPoolStatsRecord.nrLPages', row);
  const rows = host.pools.rows().filter((row) => host.pools.hasRecord('LPoolStatsRecord', row) && used(row) > 0);
  if (rows.length === 0) return factsCard('Huge-page pools', [['pools with pages', 'none']]);
  const body = rows.map((row) => element('tr', {}, rowHeader(host.pools.name(row)),
    rightCell(String(host.pools.of('id', row))),
    element('td', { class: 'right', title: originText(host.pools.figure('LPoolStatsRecord.nrLPages', row)) }, amountText(used(row) * 2048)),
    element('td', { class: 'right', title: originText(host.pools.figure('LPoolStatsRecord.nrFreeSPages', row)) },
      amountText(host.pools.value('LPoolStatsRecord.nrFreeSPages', row) * 4))));
  const columns = [{ text: 'pool' }, { text: 'node', right: true }, { text: 'size', right: true }, { text: 'free', right: true }];
  return element('div', { class: 'card' }, element('h3', {}, 'Huge-page pools'),
    scrolling('Huge-page pools', table('Pools of large pages', columns, body)));
}
