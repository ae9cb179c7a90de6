// Creates elements. Texts become text nodes and never HTML.

// `properties` are attributes, listeners ("on..."), and an object of style properties ("style").
function element(tag, properties = {}, ...children) {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) setProperty(made, name, value);
  made.append(...children.flat().filter((child) => child !== null && child !== undefined && child !== false));
  return made;
}

function setProperty(made, name, value) {
  if (value === undefined || value === null || value === false) return;
  if (name.startsWith('on')) made.addEventListener(name.slice(2), value);
  else if (name === 'style') for (const [key, each] of Object.entries(value)) made.style.setProperty(key, each);
  else made.setAttribute(name, value === true ? '' : value);
}

function byId(id) {
  return document.getElementById(id);
}

function rightCell(...children) {
  return element('td', { class: 'right' }, children);
}

function rowHeader(...children) {
  return element('th', { scope: 'row' }, children);
}

// A name may be in a script that runs from right to left.
function nameElement(name) {
  return element('bdi', {}, name);
}

function emptyText(text) {
  return element('p', { class: 'empty' }, text);
}

function show(id, ...children) {
  document.querySelector(id).replaceChildren(...children.flat().filter(Boolean));
}

// Returns an element with a figure that shows its source when the user points at it.
function figureElement(figure, text = figureText(figure)) {
  const isZero = figure.value === 0;
  const style = figure.isUnlimited ? 'unlimited' : figure.value === undefined ? 'na' : isZero ? 'zero' : 'figure';
  return element('span', { class: style, title: originText(figure) }, text);
}

// A part of a bar; `part` is its share of the bar, from 0 to 1.
function barPart(style, part, title) {
  return part > 0 && element('span', { class: `part ${style}`, style: { width: `${part * 100}%` }, title });
}

function scrolling(label, ...children) {
  return element('div', { class: 'scrolling', tabindex: 0, role: 'group', 'aria-label': label }, children);
}

// Returns a table. `columns` has an entry for each column: {text, title, right}, or {button, sorted, right} if it can
// be sorted.
function table(caption, columns, rows) {
  const header = columns.map((column) =>
    element('th', { scope: 'col', class: column.right && 'right', title: column.title, 'aria-sort': column.sorted },
      column.button ?? column.text));
  return element('table', {}, element('caption', {}, caption), element('thead', {}, element('tr', {}, header)),
    element('tbody', {}, rows));
}

// Lists the sources of the figures that were looked up since the last call.
function sources() {
  const columns = ['figure', 'unit', 'meaning', 'node'].map((text) => ({ text }));
  const rows = [...usedColumns].map(([key, { record, field }]) => element('tr', {}, rowHeader(key),
    [field.unit || 'none', field.meaning, record.node].map((text) => element('td', {}, text))));
  usedColumns.clear();
  const title = 'Where these figures come from';
  return element('details', { class: 'sources' }, element('summary', {}, title), scrolling(title, table(title, columns, rows)));
}
