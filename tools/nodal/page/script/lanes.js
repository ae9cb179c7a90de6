// The lanes: figures over time, with a band from the smallest to the largest value of each step.

const laneHead = 20;
const lanePlot = 44;
const laneHeight = laneHead + lanePlot + 6;
const axisHeight = 34;
const lanes = { all: [], from: 0, to: 1, width: 0, breaks: new Set(), isDrawn: true };

function showLanes() {
  if (!time.isSpan) return;
  const { seconds, span } = time;
  for (const [, to] of span.events) lanes.breaks.add(seconds.findIndex((each) => each >= to));
  showAll();
  lanes.all = [hostLane('memory state', 'GlobalMemoryRecord.memState', { isState: true }), hostLane('free memory', whole('free'), { isDip: true }), groupLane(0)];
  show('#lanes .body', element('p', {}, spanText()), laneControls(),
    element('div', { id: 'plot', onwheel: zoomByWheel, onpointerdown: startDrag, onkeydown: moveCursorByKey },
      element('canvas', { 'aria-hidden': 'true' }), element('div', { class: 'heads' }), handle(false), handle(true)),
    element('div', { id: 'spikes' }), element('div', { id: 'changes' }), eventList());
  lanes.all.forEach((lane) => lane.family.figure(lane.key, lane.row));
  document.querySelector('#lanes .body').append(sources());
  new ResizeObserver(drawLanes).observe(byId('plot'));
  matchMedia('(prefers-color-scheme: dark)').addEventListener('change', drawLanes);
  showSpikes();
}

function spanText() {
  const { span, seconds } = time;
  const tolerance = span.tolerance === 0 ? ''
    : ` To keep the page small, an amount of a group, node or heap stays until it has changed by more than ${toleranceText()}; point at it to see from which sample it is.`;
  return `${countText(span.samples)} samples from ${instantText(0)} to ${instantText(seconds.length - 1)}, in steps of ${durationText(span.step)}. A line shows a sample at the start of each step, and its band the smallest and the largest value in the step. All views show the sample under the cursor.${tolerance}`;
}

function durationText(seconds) {
  const [size, unit] = [[86400, 'd'], [3600, 'h'], [60, 'min'], [1, 's']].find(([each]) => seconds % each === 0);
  return `${seconds / size} ${unit}`;
}

function hostLane(name, key, more) {
  return makeLane({ name, family: host.host, row: 0, key, ...more });
}

function groupLane(row) {
  return makeLane({ name: row === 0 ? 'consumed by groups' : host.groups.name(row), family: host.groups, row, key: stats('consumed') });
}

function makeLane(lane) {
  const { field } = lane.family.columns.get(lane.key);
  const count = time.seconds.length;
  const all = (series) => series.all(lane.row, count).map((value, i) => (lane.family.isThere(lane.row, i) ? value : NaN));
  const values = all(field.series).map((value) => (value >= 0 ? value : NaN));
  const lows = all(field.below).map((below, i) => (values[i] || 0) - below);
  const highs = all(field.above).map((above, i) => (values[i] || 0) + above);
  const known = highs.filter(isFinite);
  const top = lane.isState ? host.states.count : Math.max(...known, 1);
  return { ...lane, values, lows, highs, top, isKnown: known.length > 0, spikes: lane.isState ? [] : spikesOf(lane, values, lows, highs, top) };
}

function hasLane(row) {
  return lanes.all.some((lane) => lane.family === host.groups && lane.row === row);
}

function toggleLane(row) {
  if (hasLane(row)) lanes.all = lanes.all.filter((lane) => lane.family !== host.groups || lane.row !== row);
  else lanes.all.push(groupLane(row));
  showSpikes();
  drawLanes();
}

// A spike is far from the median of its neighbours, and farther than most steps of the lane are.
const spikeRule = { steps: 60, part: 0.05, times: 6 };

function spikesOf(lane, values, lows, highs, top) {
  const edges = lane.isDip ? lows : highs;
  const medians = values.map((_, i) => medianOf(values.slice(Math.max(i - spikeRule.steps, 0), i + spikeRule.steps + 1)));
  const distances = edges.map((edge, i) => (lane.isDip ? medians[i] - edge : edge - medians[i]));
  const usual = medianOf(distances.map(Math.abs));
  const isFar = (i) => distances[i] > Math.max(spikeRule.part * top, spikeRule.times * usual);
  const spikes = [];
  for (let i = 0; i < values.length; ++i) {
    if (!isFar(i)) continue;
    if (i > 0 && isFar(i - 1)) {
      if (distances[i] > distances[spikes.at(-1)]) spikes[spikes.length - 1] = i;
    } else spikes.push(i);
  }
  return spikes.sort((a, b) => distances[b] - distances[a]);
}

function medianOf(values) {
  const sorted = values.filter(isFinite).sort();
  return sorted.length > 0 ? sorted[sorted.length >> 1] : NaN;
}

const mostSpikes = 5;

function showSpikes() {
  const items = lanes.all.flatMap((lane) => lane.spikes.slice(0, mostSpikes).map((instant) => element('li', {},
    element('button', { type: 'button', title: lane.key, onclick: () => moveCursor(false, instant) },
      clockText(instant), ' ', nameElement(lane.name), ' ', amountText((lane.isDip ? lane.lows : lane.highs)[instant])))));
  show('#spikes', element('h3', {}, '▲ Spikes'), items.length > 0 ? element('ul', { class: 'legend' }, items) : element('p', {}, 'None.'),
    element('details', {}, element('summary', {}, 'What a spike is'), element('p', {},
      `A largest value (of free memory: a smallest one) that differs from the median of the ${2 * spikeRule.steps + 1} steps around it by more than ${spikeRule.part * 100} % of the lane's largest value, and by more than ${spikeRule.times} times the median difference. Of spikes that follow each other, the largest is marked; of each lane, the largest ${mostSpikes} are listed.`)));
}

function eventList() {
  const { events, omittedEvents } = time.span;
  if (events.length === 0) return null;
  const utc = (second) => new Date(second * 1000).toISOString().replace('.000', '');
  return element('details', { id: 'events' }, element('summary', {}, pluralText(events.length + omittedEvents, 'interruption')),
    element('ul', {}, events.map(([from, to, reasons]) => element('li', {}, `${utc(from)} to ${utc(to)}: `, nameElement(reasons)))),
    omittedEvents > 0 && element('p', {}, `And ${countText(omittedEvents)} more.`));
}

// The following functions change the part of the span that is in sight.

function showAll() {
  [lanes.from] = time.seconds;
  lanes.to = time.seconds.at(-1) + time.span.step;
}

function setSight(from, width) {
  const [first] = time.seconds;
  const all = time.seconds.at(-1) + time.span.step - first;
  const shown = Math.min(Math.max(width, 4 * time.span.step), all);
  lanes.from = Math.min(Math.max(from, first), first + all - shown);
  lanes.to = lanes.from + shown;
  requestDrawing();
}

function zoom(factor, center = time.seconds[now.instant]) {
  const part = (center - lanes.from) / (lanes.to - lanes.from);
  const width = (lanes.to - lanes.from) * factor;
  setSight(center - width * (part >= 0 && part <= 1 ? part : 0.5), width);
}

function pan(part) {
  setSight(lanes.from + part * (lanes.to - lanes.from), lanes.to - lanes.from);
}

function keepInSight(second) {
  const width = lanes.to - lanes.from;
  if (second < lanes.from || second > lanes.to) setSight(second - width / 2, width);
  else requestDrawing();
}

function showWidth(width) {
  setSight(time.seconds[now.instant] - width / 2, width);
}

function laneControls() {
  const button = (text, onclick, label) => element('button', { type: 'button', onclick, 'aria-label': label }, text);
  const all = time.seconds.at(-1) - time.seconds[0];
  const widths = [['Day', 86400], ['Hour', 3600], ['Minute', 60]].filter(([, width]) => width < all && width >= 4 * time.span.step);
  return element('div', { class: 'controls' }, element('fieldset', {}, element('legend', {}, 'Show'),
    button('All', () => showWidth(Infinity)), widths.map(([text, width]) => button(text, () => showWidth(width))),
    button('+', () => zoom(0.5), 'Zoom in'), button('−', () => zoom(2), 'Zoom out'),
    button('‹', () => pan(-0.25), 'Earlier'), button('›', () => pan(0.25), 'Later')),
  element('label', {}, element('input', { type: 'checkbox', id: 'compare', onchange: ({ target }) => {
    if (target.checked) moveCursor(true, instantAt((lanes.from + time.seconds[now.instant]) / 2));
    else removeSecondCursor();
  } }), ' Compare with a second cursor'),
  element('span', { class: 'hint' }, 'Click, or press an arrow key, to move the cursor, and with Shift the second one. Drag to pan, turn the wheel to zoom.'));
}

function zoomByWheel(event) {
  const { left } = byId('plot').getBoundingClientRect();
  const isWhole = lanes.to - lanes.from >= time.seconds.at(-1) + time.span.step - time.seconds[0];
  if (Math.abs(event.deltaX) > Math.abs(event.deltaY)) pan(event.deltaX / lanes.width);
  else if (event.deltaY < 0 || !isWhole) zoom(1.002 ** event.deltaY, secondAt(event.clientX - left));
  else return;
  event.preventDefault();
}

function secondAt(x) {
  return lanes.from + (x / lanes.width) * (lanes.to - lanes.from);
}

// Drags a cursor or the lanes. A click moves the cursor, and with Shift the second one.
function startDrag(event) {
  if (event.button !== 0 || event.target.closest('button')) return;
  const plot = byId('plot');
  const cursor = event.target.closest('.handle');
  const { left } = plot.getBoundingClientRect();
  const from = lanes.from;
  let hasMoved = false;
  const move = ({ clientX }) => {
    hasMoved ||= Math.abs(clientX - event.clientX) > 3;
    if (cursor) moveCursor(cursor.id === 'cursor-2', nearest(secondAt(clientX - left)));
    else if (hasMoved) setSight(from - ((clientX - event.clientX) / lanes.width) * (lanes.to - lanes.from), lanes.to - lanes.from);
  };
  const end = ({ type, clientX, shiftKey }) => {
    plot.removeEventListener('pointermove', move);
    if (type === 'pointerup' && !hasMoved && !cursor) moveCursor(shiftKey, nearest(secondAt(clientX - left)));
  };
  plot.setPointerCapture(event.pointerId);
  plot.addEventListener('pointermove', move);
  for (const type of ['pointerup', 'pointercancel']) plot.addEventListener(type, end, { once: true });
  (cursor ?? byId('cursor-1')).focus({ preventScroll: true });
  event.preventDefault();
}

function nearest(second) {
  const before = instantAt(second);
  const after = Math.min(before + 1, time.seconds.length - 1);
  return second - time.seconds[before] <= time.seconds[after] - second ? before : after;
}

function moveCursorByKey(event) {
  const isSecond = event.shiftKey || event.target.id === 'cursor-2';
  const at = isSecond ? time.second ?? now.instant : now.instant;
  const targets = { ArrowLeft: at - 1, ArrowDown: at - 1, ArrowRight: at + 1, ArrowUp: at + 1, PageDown: at - 10, PageUp: at + 10, Home: 0, End: Infinity };
  const actions = { '+': () => zoom(0.5), '-': () => zoom(2), Escape: removeSecondCursor };
  if (!event.target.closest('.handle') || (!(event.key in targets) && !(event.key in actions))) return;
  event.preventDefault();
  if (event.key in actions) actions[event.key]();
  else moveCursor(isSecond, targets[event.key]);
}

function handle(isSecond) {
  return element('div', { id: isSecond ? 'cursor-2' : 'cursor-1', class: 'handle', role: 'slider', tabindex: 0, 'aria-label': isSecond ? 'Second cursor' : 'Cursor',
    'aria-valuemin': 0, 'aria-valuemax': time.seconds.length - 1, hidden: isSecond }, isSecond ? '2' : '1');
}
