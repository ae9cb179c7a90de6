// The table of the kernel's heaps, largest first.

const shownHeaps = 20;

function showHeaps(most = shownHeaps) {
  const heaps = host.heaps;
  usedColumns.clear();
  const rows = heaps.rows().filter((row) => heaps.hasRecord('HeapStatsRecord', row));
  const size = (row) => heaps.value('HeapStatsRecord.size', row) ?? 0;
  rows.sort((a, b) => size(b) - size(a));
  if (rows.length === 0) return show('#heaps .body', emptyText(noHeaps()));
  const all = sum(rows.map(size)) / 1024;
  const shown = rows.slice(0, most).map((row) => heapRow(row, size(rows[0])));
  const columns = [{ text: 'heap' }, { text: 'size' }, { text: 'amount', right: true }, { text: 'in use', right: true }, { text: 'free', right: true },
    { text: 'object', right: true }, { text: 'failed', right: true }];
  const more = rows.length - shown.length;
  show('#heaps .body',
    element('p', {}, `${pluralText(rows.length, 'heap')} with ${amountText(all)} in all, ${percentText(all / hostTotal())} of the host's memory.`),
    grownHeaps(),
    scrolling('Kernel heaps', table('Kernel heaps by size', columns, shown)),
    more > 0 && element('button', { type: 'button', class: 'more', onclick: () => showHeaps(Infinity) }, `Show ${countText(more)} more`),
    sources());
}

const shownGrown = 8;

// Shows the heaps that grew most between the two cursors or, without a second cursor, since the start of the span.
function grownHeaps() {
  if (!time.isSpan) return null;
  const [from, to] = [time.second ?? 0, now.instant].sort((a, b) => a - b);
  const grown = changesBetween(host.heaps, 'HeapStatsRecord.size', from, to, Infinity).filter(({ change }) => change > 0);
  if (grown.length === 0) return element('p', {}, `No heap grew from ${instantText(from)} to ${instantText(to)}.`);
  return tableOfChanges('Heaps that grew most', host.heaps, 'HeapStatsRecord.size', grown.slice(0, shownGrown), from, to, 1 / 1024);
}

function noHeaps() {
  const unreadable = unreadableLists().find(([path]) => path === '/system/heaps');
  return unreadable ? `The list of heaps could not be read: ${unreadable[1]}. On a running host, only root may read it.`
    : 'The host has no list of heaps.';
}

function heapRow(row, largest) {
  const figure = (field) => host.heaps.figure(`HeapStatsRecord.${field}`, row);
  const size = figure('size').value ?? 0;
  const used = size - (figure('avail').value ?? 0);
  const cell = (content, title) => element('td', { class: 'right', title }, content);
  return element('tr', {}, rowHeader(nameElement(host.heaps.name(row))),
    element('td', { class: 'backing' }, element('div', { class: 'bar', 'aria-hidden': 'true' },
      barPart('used', used / largest), barPart('spare', (size - used) / largest))),
    cell(figureElement(figure('size'))),
    cell(amountText(used / 1024), `${countText(used)} bytes: HeapStatsRecord.size - HeapStatsRecord.avail`),
    cell(figureElement(figure('pctFreeOfCur'))), cell(figureElement(figure('avgAllocSize'))), cell(figureElement(figure('numFailAllocs'))));
}
