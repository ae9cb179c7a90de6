// The icicle chart of the groups: a tooltip names a group, a click zooms, arrow keys move.

const rowHeight = 38;
const icicle = { root: [0], measure: measures[0], selected: 0, focused: 0, matches: null, boxes: [], width: 0 };

function showGroups() {
  const search = element('input', { type: 'search', id: 'search', placeholder: 'name or ID', autocomplete: 'off',
    oninput: (event) => searchGroups(event.target.value) });
  const choices = measures.map((measure) => element('label', {},
    element('input', { type: 'radio', name: 'measure', value: measure.name, checked: measure === icicle.measure,
      onchange: () => chooseMeasure(measure) }), measure.label));
  show('#groups .body',
    element('div', { class: 'controls' },
      element('fieldset', {}, element('legend', {}, 'Width shows'), choices),
      element('label', { class: 'search' }, 'Find a group ', search)),
    element('p', { id: 'matches', role: 'status' }),
    element('nav', { id: 'path', 'aria-label': 'Path to the shown group' }),
    element('div', { class: 'split' }, element('div', { class: 'picture' },
      element('div', { id: 'icicle', role: 'tree', 'aria-label': 'Groups by memory', onkeydown: moveByKey }), legend()),
    element('section', { id: 'panel', 'aria-label': 'The selected group', tabindex: -1 })));
  drawIcicle();
  showPanel(icicle.selected);
  document.querySelector('#groups .body').append(sources());
  new ResizeObserver(([{ contentRect }]) => contentRect.width !== icicle.width && drawIcicle()).observe(byId('icicle'));
}

// Shows another instant. If the selected group does not exist at that instant, selects its nearest ancestor that does.
function showGroupsAgain() {
  const isThere = (row) => host.groups.isThere(row);
  if (!isThere(icicle.selected)) icicle.selected = ancestry(icicle.selected).findLast(isThere) ?? 0;
  icicle.root = icicle.root.filter(isThere);
  if (icicle.root.length === 0) icicle.root = host.members[icicle.selected].length > 0 ? [icicle.selected] : rootAbove([icicle.selected]);
  searchGroups(byId('search').value);
  showPanel(icicle.selected);
}

function legend() {
  const words = { none: 'no limit', far: 'below 60 % of its limit', half: '60 %', near: '80 %', at: '95 % or more', unknown: 'not available' };
  return element('ul', { class: 'legend', 'aria-label': 'Colours' },
    Object.entries(words).map(([style, text]) => element('li', {}, element('span', { class: `swatch box-${style}` }), text)),
    element('li', {}, element('span', { class: 'gauge sample' }, element('span', { class: 'fill', style: { width: '60%' } }),
      element('span', { class: 'reserved', style: { width: '30%' } })),
    'bar: as long as the limit; dark: consumed; green: reserved, tick: reservation in effect'));
}

function chooseMeasure(measure) {
  icicle.measure = measure;
  icicle.root = [0];
  drawIcicle();
}

function drawIcicle() {
  const tree = byId('icicle');
  const width = tree.clientWidth;
  icicle.width = width;
  if (width === 0) return;
  const hadFocus = tree.contains(document.activeElement);
  icicle.boxes = layOut(icicle.root, width, icicle.measure);
  if (!icicle.boxes.some((box) => box.rows.includes(icicle.focused))) [icicle.focused] = icicle.root;
  const levels = Math.max(...icicle.boxes.map((box) => box.level)) + 1;
  tree.style.height = `${levels * rowHeight}px`;
  tree.replaceChildren(...icicle.boxes.map(boxElement));
  if (hadFocus) tree.querySelector('[tabindex="0"]').focus();
  showPath();
}

function boxElement(box) {
  const [row] = box.rows;
  const isRun = box.rows.length > 1;
  const isMatch = icicle.matches?.size > 0 && box.rows.some((each) => icicle.matches.has(each));
  const style = ['box', `box-${isRun ? 'none' : nearnessClass(row)}`, isRun && 'run', isMachine(row) && !isRun && 'machine',
    isMatch && 'match', icicle.matches && !isMatch && 'dim', row === icicle.selected && !isRun && 'selected'];
  return element('div', {
    class: style.filter(Boolean).join(' '), role: 'treeitem', 'aria-level': box.level + 1, 'aria-label': boxLabel(box),
    'aria-selected': String(row === icicle.selected && !isRun), tabindex: box.rows.includes(icicle.focused) ? 0 : -1,
    title: boxLabel(box), onclick: () => openBox(box),
    style: { left: `${box.left}px`, width: `${Math.max(box.width - 1, 1)}px`, top: `${box.level * rowHeight}px` },
  }, boxContent(box, isRun));
}

function boxContent(box, isRun) {
  const [row] = box.rows;
  if (box.width < 24) return [];
  const name = isRun ? `${countText(box.rows.length)} groups` : host.groups.name(row);
  const amount = isRun ? undefined : icicle.measure.figure(row);
  return [element('bdi', { class: 'name' }, name),
    ' ', box.width > 150 && amount && element('span', { class: 'amount' }, figureText(amount)),
    !isRun && gauge(row)];
}

// Returns a line whose length is the limit or, if one of these is larger, the consumption or the reservation. Returns
// null for a group without limit and reservation.
function gauge(row) {
  const value = (key) => host.groups.value(key, row) ?? 0;
  const consumed = value(stats('consumed'));
  const reserved = value(allocation('min'));
  const inEffect = value(stats('eMin'));
  if (!limitOf(row).value && reserved === 0) return null;
  const length = Math.max(limitOf(row).value ?? 0, consumed, reserved);
  const part = (kb) => ({ width: `${Math.min(kb / length, 1) * 100}%` });
  return element('span', { class: `gauge ${limitOf(row).isUnlimited ? '' : 'limited'}`, 'aria-hidden': 'true' },
    element('span', { class: 'fill', style: part(consumed) }),
    reserved > 0 && element('span', { class: 'reserved', style: part(reserved) }),
    inEffect > 0 && element('span', { class: 'effective', style: { left: part(inEffect).width } }));
}

function boxLabel(box) {
  const [row] = box.rows;
  const { measure } = icicle;
  if (box.rows.length > 1) return `${pluralText(box.rows.length, 'group')} that are narrow: choose to see them`;
  const figure = measure.figure(row);
  const part = nearness(row);
  const limit = part === undefined ? 'no limit' : `${percentText(part)} of its limit of ${figureText(limitOf(row))}`;
  const amount = figure ? figureText(figure) : 'of its members';
  return `${host.groups.name(row)} ${amount}, ${kindOf(row)}, ${measure.label.toLowerCase()}, ${limit}`;
}

// Selects a group, and zooms to it if it has members. A click on the top box zooms out to the parent group.
function openBox(box) {
  const [row] = box.rows;
  icicle.focused = row;
  if (box.level === 0) icicle.root = rootAbove(box.rows);
  else if (box.rows.length > 1 || host.members[row].length > 0) icicle.root = box.rows;
  if (box.rows.length === 1) select(row);
  else drawIcicle();
}

function rootAbove(rows) {
  return [Math.max(host.groups.of('parent', rows[0]), 0)];
}

// Shows a group in the panel and in the icicle.
function select(row) {
  icicle.selected = row;
  icicle.focused = row;
  if (location.hash !== groupLink(row)) history.pushState(null, '', groupLink(row));
  drawIcicle();
  showPanel(row);
}

function groupLink(row) {
  return `#group-${host.groups.of('id', row)}`;
}

// Zooms so that the group is visible, and selects it.
function reveal(row) {
  const isLeaf = host.members[row].length === 0;
  icicle.root = isLeaf ? rootAbove([row]) : [row];
  for (let box; (box = boxOf(row))?.rows.length > 1; ) icicle.root = box.rows;
  select(row);
}

// Returns the box of a group below the top box.
function boxOf(row) {
  return layOut(icicle.root, icicle.width, icicle.measure).find((box) => box.level > 0 && box.rows.includes(row));
}

function showPath() {
  const [row] = icicle.root;
  const rows = ancestry(row);
  const isRun = icicle.root.length > 1;
  const steps = rows.slice(0, isRun ? -1 : undefined).map((each) =>
    element('li', {}, element('button', { type: 'button', onclick: () => zoomTo([each]),
      'aria-current': each === row ? 'true' : null }, nameElement(host.groups.name(each)))));
  if (isRun) steps.push(element('li', {}, `${countText(icicle.root.length)} groups`));
  show('#path', element('ol', {}, steps));
}

function zoomTo(root) {
  icicle.root = root;
  if (root.length === 1) select(root[0]);
  else drawIcicle();
}

function moveByKey(event) {
  const current = icicle.boxes.findIndex((box) => box.rows.includes(icicle.focused));
  const box = icicle.boxes[current];
  if (!box) return;
  const keys = {
    ArrowDown: () => icicle.boxes.find((each) => each.parent === box),
    ArrowUp: () => box.parent,
    ArrowRight: () => neighbour(box, 1),
    ArrowLeft: () => neighbour(box, -1),
    Home: () => icicle.boxes[0],
    End: () => icicle.boxes.filter((each) => each.level === box.level).at(-1),
  };
  const actions = { Enter: () => openBox(box), ' ': () => openBox(box), Escape: () => zoomTo(rootAbove(icicle.root)) };
  if (!keys[event.key] && !actions[event.key]) return;
  event.preventDefault();
  if (actions[event.key]) return void actions[event.key]();
  const target = keys[event.key]();
  if (target) focusBox(target);
}

function neighbour(box, step) {
  const level = icicle.boxes.filter((each) => each.level === box.level);
  return level[level.indexOf(box) + step];
}

function focusBox(box) {
  const tree = byId('icicle');
  const items = tree.children;
  [icicle.focused] = box.rows;
  for (const [i, each] of icicle.boxes.entries()) items[i].tabIndex = each === box ? 0 : -1;
  items[icicle.boxes.indexOf(box)].focus();
}

const mostMatches = 30;

function searchGroups(text) {
  const wanted = text.trim().toLowerCase();
  const isMatch = (row) => host.groups.name(row).toLowerCase().includes(wanted) || String(host.groups.of('id', row)) === wanted;
  const found = wanted === '' ? [] : host.groups.rows().filter(isMatch);
  icicle.matches = wanted === '' ? null : new Set(found);
  if (!icicle.boxes.some((box) => box.rows.some((row) => icicle.matches?.has(row)))) icicle.root = [0];
  const { all } = extents(measures[0]);
  const first = found.sort((a, b) => all[b] - all[a]).slice(0, mostMatches);
  show('#matches', wanted !== '' && `${pluralText(found.length, 'group')} found${found.length > first.length ? `, the largest ${mostMatches}` : ''}. `,
    first.map((row) => element('button', { type: 'button', onclick: () => reveal(row) }, nameElement(host.groups.name(row)))));
  drawIcicle();
}
