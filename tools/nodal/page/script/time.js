// The instant that the views show, and a second one to compare it with.

const time = { isSpan: false, seconds: [], second: null, timer: 0 };

function openTime({ span, instants }) {
  if (!span) return;
  Object.assign(time, { isSpan: true, span, seconds: instants.map((text) => Date.parse(text) / 1000) });
  now.instant = instants.length - 1;
}

function instantText(instant) {
  return host.data.instants[instant];
}

// Returns the time of an instant, without the date.
function clockText(instant) {
  return instantText(instant).slice(11);
}

// Returns the last instant at or before a time, or the first instant if there is none.
function instantAt(second) {
  const after = time.seconds.findIndex((each) => each > second);
  return after < 0 ? time.seconds.length - 1 : Math.max(after - 1, 0);
}

// Moves a cursor. The views follow when the cursor rests.
function moveCursor(isSecond, instant) {
  const target = Math.min(Math.max(instant, 0), time.seconds.length - 1);
  if (isSecond) time.second = target;
  else now.instant = target;
  computed.clear();
  keepInSight(time.seconds[target]);
  clearTimeout(time.timer);
  time.timer = setTimeout(showInstant, 60);
}

function removeSecondCursor() {
  time.second = null;
  showInstant();
}

// Shows all views at the instant.
function showInstant() {
  const open = [...document.querySelectorAll('details[open]')].map(detailsKey);
  computed.clear();
  findMembers();
  byId('time').textContent = instantText(now.instant);
  drawLanes();
  usedColumns.clear();
  showChanges();
  showOverview();
  showGroupsAgain();
  showMachines();
  showNodes();
  showHeaps();
  for (const each of document.querySelectorAll('details')) if (open.includes(detailsKey(each))) each.open = true;
}

function detailsKey(details) {
  return `${details.closest('[id]').id} ${details.firstChild.textContent}`;
}

// Returns the rows that changed between two instants, as {row, before, after, change}. The largest changes come first.
// Changes with a value that is not available are NaN and come last. A row that does not exist has the value 0.
function changesBetween(family, key, from, to, most) {
  const value = (row, instant) => (family.isThere(row, instant) ? family.value(key, row, instant) : 0);
  const size = ({ change }) => Math.abs(change) || 0;
  return Array.from({ length: family.count }, (_, row) => ({ row, before: value(row, from), after: value(row, to) }))
    .filter(({ row, before, after }) => before !== after && (family !== host.groups || row > 0))
    .map((each) => ({ ...each, change: each.after - each.before }))
    .sort((a, b) => size(b) - size(a)).slice(0, most);
}

const mostChanges = 12;

function showChanges() {
  const place = byId('changes');
  if (!place) return;
  if (time.second === null) return place.replaceChildren();
  const [from, to] = [now.instant, time.second].sort((a, b) => a - b);
  place.replaceChildren(element('h3', {}, `What changed from ${instantText(from)} to ${instantText(to)}`),
    hostChanges(from, to),
    changeTable('Groups that changed most', host.groups, stats('consumed'), from, to, 1),
    changeTable('Kernel heaps that changed most', host.heaps, 'HeapStatsRecord.size', from, to, 1 / 1024), sources());
}

function signedAmount(kb) {
  return isNaN(kb) ? 'n/a' : `${kb < 0 ? '−' : kb > 0 ? '+' : ''}${amountText(Math.abs(kb))}`;
}

function changeColumns(from, to) {
  const column = (instant) => ({ text: `at ${clockText(instant)}`, title: instantText(instant), right: true });
  return [{ text: 'what' }, column(from), column(to), { text: 'change', right: true }];
}

function changeRow(name, figures, change, isThere = [true, true]) {
  const known = figures.map((figure, i) => (isThere[i] ? figureElement(figure) : element('span', { class: 'na' }, 'not there')));
  return element('tr', {}, rowHeader(name), known.map((each) => rightCell(each)), rightCell(change));
}

function hostChanges(from, to) {
  const at = (key) => [from, to].map((instant) => host.host.figure(key, 0, instant));
  const free = at(whole('free'));
  const states = at('GlobalMemoryRecord.memState');
  const consumed = [from, to].map((instant) => host.groups.figure(stats('consumed'), 0, instant));
  const rows = [changeRow('free memory', free, signedAmount(differenceOf(free))),
    changeRow('consumed by groups', consumed, signedAmount(differenceOf(consumed))),
    element('tr', {}, rowHeader('memory state'),
      states.map((figure) => element('td', { class: 'right', title: originText(figure) }, stateName(figure.value))), element('td'))];
  return scrolling('The host', table('The host', changeColumns(from, to), rows));
}

function differenceOf([before, after]) {
  return after.value - before.value;
}

function stateName(state) {
  return state < host.states.count ? host.states.name(state) : 'unknown';
}

function changeTable(title, family, key, from, to, scale) {
  const changes = changesBetween(family, key, from, to, mostChanges);
  return changes.length === 0 ? emptyText(`${title}: none.`)
    : tableOfChanges(title, family, key, changes, from, to, scale);
}

function tableOfChanges(title, family, key, changes, from, to, scale) {
  const rows = changes.map(({ row, change }) => {
    const name = nameElement(family.name(row));
    const isLink = family === host.groups && family.isThere(row);
    const figures = [from, to].map((instant) => family.figure(key, row, instant));
    return changeRow(isLink ? element('a', { href: groupLink(row) }, name) : name, figures, signedAmount(change * scale),
      [from, to].map((instant) => family.isThere(row, instant)));
  });
  return scrolling(title, table(title, changeColumns(from, to), rows));
}
