// Computes the places of the boxes of the icicle chart. Each group is a box below the box of its parent group. The
// width of the box shows the group's share.

// Widths in pixels. Groups narrower than minBoxWidth share a box. Opening a shared box divides it into boxes of about
// dividedWidth. Groups whose figures are not available share a box of unknownWidth.
const minBoxWidth = 4;
const dividedWidth = 60;
const unknownWidth = 20;
const mostLevels = 16;

// The measures that the width of a box can show. With `isWhole`, the figure of a group includes the figures of its
// members.
const measures = [
  { name: 'consumed', label: 'Consumption', isWhole: true, figure: (row) => host.groups.figure(stats('consumed'), row) },
  { name: 'reserved', label: 'Reservation', figure: (row) => host.groups.figure(allocation('min'), row) },
  { name: 'swapped', label: 'Swap', figure: (row) => swappedFigure(row) },
  { name: 'touched', label: 'Touched', isWhole: true, figure: (row) => host.groups.figure(stats('touched'), row) },
];

// Earlier results, by measure and instant.
const computed = new Map();

function once(name, compute) {
  const key = `${name} ${now.instant}`;
  if (!computed.has(key)) computed.set(key, compute());
  return computed.get(key);
}

// Returns the extent of each group: its own figure, or the sum of its members if it has none. Without `isWhole`, the
// sum also replaces a smaller figure.
function extents(measure) {
  return once(measure.name, () => computeExtents(measure));
}

function computeExtents(measure) {
  const rows = host.groups.rows();
  const members = new Float64Array(host.groups.count);
  const all = new Float64Array(host.groups.count);
  for (const row of rows.reverse()) {
    const own = measure.figure(row)?.value;
    all[row] = own === undefined ? members[row] : measure.isWhole ? own : Math.max(own, members[row]);
    if (row > 0) members[host.groups.of('parent', row)] += all[row];
  }
  return { all, members };
}

// Returns the members of each group by consumption, largest first. The order is the same for all measures.
function orderedMembers() {
  const { all } = extents(measures[0]);
  return once('order', () => host.members.map((rows) => [...rows].sort((a, b) => all[b] - all[a] || a - b)));
}

// Returns the boxes of `root` and of the groups below it, as {rows, left, width, level, parent}. A box of several rows
// stands for groups that are too narrow to be drawn alone. `root` may be the rows of such a box.
function layOut(root, width, measure) {
  const { all, members } = extents(measure);
  const order = orderedMembers();
  const boxes = [{ rows: root, left: 0, width, level: 0, parent: null }];
  for (let i = 0; i < boxes.length; ++i) {
    const box = boxes[i];
    if (box.level + 1 < mostLevels) boxes.push(...placeMembers(box, all, members, order));
  }
  return boxes;
}

function placeMembers(box, all, members, order) {
  const isRun = box.rows.length > 1;
  if (isRun && box.level > 0) return [];
  const [row] = box.rows;
  const rows = isRun ? box.rows : order[row];
  const extent = isRun ? sum(rows.map((each) => all[each])) : Math.max(all[row], members[row]);
  const sized = rows.filter((each) => all[each] > 0);
  const boxes = joinNarrow(sized, (each) => (box.width * all[each]) / extent, box, isRun ? dividedWidth : Infinity);
  return boxes.concat(placeUnknown(rows, all, box, boxes));
}

// Places rows side by side. Narrow neighbours share a box until it has the width `most`.
function joinNarrow(rows, widthOf, parent, most) {
  const boxes = [];
  let { left } = parent;
  let run = null;
  for (const row of rows) {
    const width = widthOf(row);
    const isNarrow = width < minBoxWidth;
    if (isNarrow && run && run.width < most) {
      run.rows.push(row);
      run.width += width;
    } else {
      boxes.push({ rows: [row], left, width, level: parent.level + 1, parent });
      run = isNarrow ? boxes.at(-1) : null;
    }
    left += width;
  }
  return boxes.filter((box) => box.width >= 1);
}

// Returns a box for the groups whose consumption is not available, if there is room beside the others.
function placeUnknown(rows, all, parent, boxes) {
  const unknown = rows.filter((row) => all[row] === 0 && host.groups.value(stats('consumed'), row) === undefined);
  const left = boxes.length > 0 ? boxes.at(-1).left + boxes.at(-1).width : parent.left;
  const width = Math.min(unknownWidth, parent.left + parent.width - left);
  return unknown.length > 0 && width >= 2 ? [{ rows: unknown, left, width, level: parent.level + 1, parent }] : [];
}
