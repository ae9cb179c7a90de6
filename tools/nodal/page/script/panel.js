// The panel beside the icicle: all figures of the selected group.

const shortList = 12;

function showPanel(row) {
  const panel = byId('panel');
  panel.replaceChildren(...[
    element('h3', {}, nameElement(host.groups.name(row))),
    element('p', { class: 'kind' }, `${kindOf(row)}, ID ${host.groups.of('id', row)}${tagText(row)}`),
    laneButton(row), largeGauge(row), factList(row), memberList(row), allFigures(row),
  ].filter(Boolean));
}

function laneButton(row) {
  if (!time.isSpan || row === 0) return null;
  const text = () => (hasLane(row) ? 'Remove from the lanes' : 'Add to the lanes');
  return element('button', { type: 'button', class: 'lane', onclick: ({ target }) => {
    toggleLane(row);
    target.textContent = text();
  } }, text());
}

function tagText(row) {
  const tag = host.groups.of('tag', row);
  return tag ? `, tag ${tag}` : '';
}

function largeGauge(row) {
  const line = gauge(row);
  const part = nearness(row);
  const text = part === undefined ? 'no limit' : `${percentText(part)} of its limit`;
  return element('div', { class: `reading box-${nearnessClass(row)}` }, line, element('p', {}, text));
}

function factList(row) {
  const swapped = swappedFigure(row);
  const facts = [
    ['consumed', host.groups.figure(stats('consumed'), row)], ['limit', limitOf(row)],
    ['reservation', host.groups.figure(allocation('min'), row)],
    ['reservation in effect', host.groups.figure(stats('eMin'), row)], swapped && ['swapped', swapped],
    ['touched', host.groups.figure(stats('touched'), row)], ['peak', host.groups.figure(stats('consumedPeak'), row)],
  ].filter(Boolean);
  return element('dl', {}, facts.flatMap(([what, figure]) => [element('dt', {}, what), element('dd', {}, figureElement(figure))]));
}

function memberList(row, most = shortList) {
  const members = orderedMembers()[row];
  if (members.length === 0) return null;
  const items = members.slice(0, most).map((each) => element('li', {},
    element('button', { type: 'button', onclick: () => reveal(each) }, nameElement(host.groups.name(each))), ' ',
    figureElement(host.groups.figure(stats('consumed'), each))));
  const more = members.length - items.length;
  const list = element('div', { class: 'members' }, element('h4', {}, pluralText(members.length, 'member')), element('ul', {}, items),
    more > 0 && element('button', { type: 'button', class: 'more', onclick: () => list.replaceWith(memberList(row, Infinity)) },
      `Show ${countText(more)} more`));
  return list;
}

function allFigures(row) {
  const records = host.groups.recordsOf(row).map((record) => recordTable(record, row));
  return element('details', { class: 'sources' }, element('summary', {}, 'All figures and their sources'), records);
}

function recordTable(record, row) {
  // A page of a span has some figures only for machines.
  const fields = record.fields.filter((field) => !field.series || field.series.hasAny(row));
  const figures = fields.map((field) => host.groups.figure(`${record.record}.${field.name}`, row));
  const reason = host.groups.reason(record, row);
  const caption = `${record.record} of ${pathOf(figures[0])}${reason ? ` could not be read: ${reason}` : ''}`;
  if (reason) return element('p', { class: 'na' }, caption);
  const rows = figures.map((figure) => element('tr', {}, rowHeader(figure.field.name),
    rightCell(figureElement(figure)), element('td', {}, digitsText(figure)),
    element('td', {}, figure.field.meaning)));
  const columns = [{ text: 'field' }, { text: 'value', right: true }, { text: 'exactly' }, { text: 'meaning' }];
  return scrolling(caption, table(caption, columns, rows));
}

function digitsText(figure) {
  return figure.value === undefined ? figureText(figure) : `${countText(figure.value)} ${figure.field.unit}`;
}
