// The table of virtual machines.

const machineTable = { sortedBy: 1, isAscending: false };  // an index of machineColumns

// The parts of the bar of a machine, by their styles.
const backings = {
  mapped: 'mapped', shared: 'shared', zipped: 'compressed', swapped: 'swapped', ballooned: 'ballooned', unbacked: 'not backed',
};

// Returns how the memory of a machine is backed: the parts of its bar, in their order. The last part is memory that
// nothing backs.
function backingOf(row) {
  const value = (field) => host.groups.value(vmm(field), row) ?? 0;
  const shared = value('shared');
  const parts = {
    mapped: Math.max(value('mapped') - shared, 0),
    shared,
    zipped: value('zipped'),
    swapped: swappedFigure(row)?.value ?? 0,
    ballooned: value('ballooned'),
  };
  parts.unbacked = Math.max(value('memSize') - sum(Object.values(parts)), 0);
  return Object.entries(parts).map(([style, kb]) => ({ style, name: backings[style], kb }));
}

const vmmColumn = (field, text = field) => ({ text, figure: (row) => host.groups.figure(vmm(field), row) });

const machineColumns = [
  { text: 'machine', value: (row) => host.groups.name(row).toLowerCase(), figure: null },
  vmmColumn('memSize', 'memory'),
  vmmColumn('mapped'),
  vmmColumn('shared'),
  vmmColumn('zipped', backings.zipped),
  { text: 'swapped', figure: (row) => swappedFigure(row) },
  vmmColumn('ballooned'),
  { text: 'overhead', figure: (row) => host.groups.figure(stats('ovhd'), row) },
  { text: 'limit', figure: limitOf },
  { text: 'guest has', figure: (row) => guestFigure('memTotal', row) },
  { text: 'guest needs', figure: (row) => guestFigure('memNeeded', row) },
];

function guestFigure(field, row) {
  return host.groups.hasRecord('GuestStatsRecord', row) ? host.groups.figure(guest(field), row) : undefined;
}

function showMachines() {
  if (host.machines.length === 0) {
    show('#machines .body', emptyText('No virtual machine runs on this host.'));
    return;
  }
  show('#machines .body', machineLegend(), element('div', { id: 'machine-table' }));
  drawMachines();
  document.querySelector('#machines .body').append(sources());
}

function machineLegend() {
  return element('ul', { class: 'legend', 'aria-label': 'Parts of a machine\'s memory' },
    Object.entries(backings).map(([style, name]) => element('li', {}, element('span', { class: `swatch ${style}` }), name)),
    element('li', {}, element('span', { class: 'swatch needs' }), 'what the guest says it needs'));
}

function sortValue(column, row) {
  if (column.value) return column.value(row);
  const figure = column.figure(row);
  if (!figure) return -2;
  return figure.isUnlimited ? Infinity : figure.value ?? -1;
}

function sortedMachines() {
  const column = machineColumns[machineTable.sortedBy];
  const direction = machineTable.isAscending ? 1 : -1;
  const compare = (a, b) => (a < b ? -direction : a > b ? direction : 0);
  return [...host.machines].sort((a, b) => compare(sortValue(column, a), sortValue(column, b)) || a - b);
}

function drawMachines() {
  const longest = Math.max(...host.machines.map((row) => sum(backingOf(row).map((part) => part.kb))), 1);
  const rows = sortedMachines().map((row) => machineRow(row, longest));
  const columns = machineColumns.map(headerOf);
  columns.splice(1, 0, { text: 'backing' });
  show('#machine-table', scrolling('Virtual machines', table('Virtual machines, and how their memory is backed', columns, rows)));
}

function headerOf(column, index) {
  const isSorted = machineTable.sortedBy === index;
  const sorted = isSorted ? (machineTable.isAscending ? 'ascending' : 'descending') : 'none';
  const button = element('button', { type: 'button', class: 'sort', onclick: () => sortMachines(index) }, column.text);
  return { button, sorted, right: column.figure !== null };
}

function sortMachines(index) {
  const isSame = machineTable.sortedBy === index;
  machineTable.isAscending = isSame ? !machineTable.isAscending : index === 0;
  machineTable.sortedBy = index;
  drawMachines();
  document.querySelectorAll('#machine-table button.sort')[index].focus();
}

function machineRow(row, longest) {
  const cells = machineColumns.slice(1).map((column) => {
    const figure = column.figure(row);
    return rightCell(figure ? figureElement(figure) : element('span', { class: 'na', title: 'has no such record' }, 'n/a'));
  });
  const name = element('a', { href: groupLink(row) }, nameElement(host.groups.name(row)));
  return element('tr', { id: `machine-${row}` }, element('th', { scope: 'row', class: 'name' }, name), element('td', { class: 'backing' }, machineBar(row, longest)), cells);
}

function machineBar(row, longest) {
  const parts = backingOf(row);
  const words = parts.filter((part) => part.kb > 0).map((part) => `${part.name} ${amountText(part.kb)}`).join(', ');
  const needed = guestFigure('memNeeded', row)?.value ?? 0;
  return element('div', { class: 'machine-bar', role: 'img', 'aria-label': words, title: words },
    element('div', { class: 'bar' }, parts.map((part) => barPart(part.style, part.kb / longest))),
    needed > 0 && element('div', { class: 'needs', style: { width: `${Math.min(needed / longest, 1) * 100}%` } }));
}
