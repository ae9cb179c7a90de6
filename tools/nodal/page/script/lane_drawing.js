// Draws the lanes on a canvas. The names and values of the lanes are HTML elements.

function requestDrawing() {
  if (!lanes.isDrawn) return;
  lanes.isDrawn = false;
  requestAnimationFrame(drawLanes);
}

function drawLanes() {
  lanes.isDrawn = true;
  const plot = byId('plot');
  if (!plot) return;
  const canvas = plot.firstChild;
  const height = lanes.all.length * laneHeight + axisHeight;
  const scale = devicePixelRatio;
  lanes.width = plot.clientWidth;
  plot.style.height = `${height}px`;
  const size = [Math.round(lanes.width * scale), Math.round(height * scale)];
  if (canvas.width !== size[0] || canvas.height !== size[1]) [canvas.width, canvas.height] = size;
  const context = canvas.getContext('2d');
  context.setTransform(scale, 0, 0, scale, 0, 0);
  context.clearRect(0, 0, lanes.width, height);
  const colors = getComputedStyle(plot);
  const pen = { context, color: (name) => colors.getPropertyValue(`--${name}`) };
  drawTicks(pen, height);
  lanes.all.forEach((lane, i) => drawLane(pen, lane, i * laneHeight + laneHead));
  drawGaps(pen, height);
  drawCursor(pen, height, now.instant, 'ink', 'cursor-1');
  drawCursor(pen, height, time.second, 'link', 'cursor-2');
  const shown = [now.instant, time.second, ...lanes.all.map((lane) => lane.row)].join();
  if (shown !== lanes.shown) showHeads();
  lanes.shown = shown;
}

function xOf(second) {
  return ((second - lanes.from) / (lanes.to - lanes.from)) * lanes.width;
}

const tickWidths = [1, 5, 10, 30, 60, 300, 600, 1800, 3600, 7200, 10800, 21600, 43200, 86400, 172800, 604800, 2592000, 31536000];

function drawTicks({ context, color }, height) {
  const width = tickWidths.find((each) => (each / (lanes.to - lanes.from)) * lanes.width >= 64) ?? 31536000;
  context.font = '12px system-ui, sans-serif';
  context.textAlign = 'center';
  for (let second = Math.ceil(lanes.from / width) * width; second <= lanes.to; second += width) {
    const text = new Date(second * 1000).toISOString();
    context.fillStyle = color('line');
    context.fillRect(Math.round(xOf(second)), laneHead, 1, height - axisHeight - laneHead);
    context.fillStyle = color('soft');
    const label = second % 86400 === 0 ? text.slice(5, 10) : text.slice(11, width < 60 ? 19 : 16);
    const half = context.measureText(label).width / 2;
    context.fillText(label, Math.min(Math.max(xOf(second), half), lanes.width - half), height - axisHeight + 13);
  }
}

// Returns the indexes of the first and the last instant in sight, widened by one on each side.
function range() {
  return [Math.max(instantAt(lanes.from) - 1, 0), Math.min(instantAt(lanes.to) + 1, time.seconds.length - 1)];
}

// Returns the time at which a step ends: the start of the next step, unless there is a gap.
function endOf(instant) {
  const { seconds, span } = time;
  const isLast = instant + 1 === seconds.length || lanes.breaks.has(instant + 1);
  return isLast ? seconds[instant] + span.step : seconds[instant + 1];
}

function drawLane(pen, lane, top) {
  const { context, color } = pen;
  const [first, last] = range();
  const bottom = top + lanePlot;
  const y = (value) => bottom - (value / lane.top) * (lanePlot - 2);
  context.fillStyle = color('line');
  context.fillRect(0, bottom, lanes.width, 1);
  if (lane.isState) return drawStates(pen, lane, first, last, y, bottom);
  for (let from = first, to; from <= last; from = to + 1) {
    for (to = from; to < last && isFinite(lane.values[to]) && isFinite(lane.values[to + 1]) && !lanes.breaks.has(to + 1); ) ++to;
    if (isFinite(lane.highs[from])) drawPart(pen, lane, from, to, y);
  }
  context.fillStyle = color('bad');
  for (const instant of lane.spikes) if (instant >= first && instant <= last) drawSpike(context, xOf(time.seconds[instant]), lane.isDip ? bottom : top, lane.isDip ? -1 : 1);
}

// Draws a part of a lane that has no gaps: the band as an area, the values as a line.
function drawPart({ context, color }, lane, from, to, y) {
  const path = (values, isBackward) => {
    for (let i = isBackward ? to : from; isBackward ? i >= from : i <= to; i += isBackward ? -1 : 1) context.lineTo(xOf(time.seconds[i]), y(values[i]));
  };
  context.beginPath();
  path(lane.highs);
  context.lineTo(xOf(endOf(to)), y(lane.highs[to]));
  context.lineTo(xOf(endOf(to)), y(lane.lows[to]));
  path(lane.lows, true);
  context.fillStyle = color('far');
  context.fill();
  context.beginPath();
  path(lane.values);
  context.lineTo(xOf(endOf(to)), y(lane.values[to]));
  context.strokeStyle = color('machines');
  context.lineWidth = 1.5;
  context.stroke();
}

// Draws the worst state of each step.
function drawStates({ context, color }, lane, first, last, y, bottom) {
  const colors = { good: color('free'), warning: color('near'), bad: color('at'), unknown: color('none') };
  for (let from = first, to; from <= last; from = to + 1) {
    for (to = from; to < last && lane.highs[to + 1] === lane.highs[from] && !lanes.breaks.has(to + 1); ) ++to;
    const state = lane.highs[from];
    if (!isFinite(state)) continue;
    const left = xOf(time.seconds[from]);
    const top = Math.max(y(state + 1), bottom - lanePlot);
    context.fillStyle = colors[stateClass(state)];
    context.fillRect(left, top, Math.max(xOf(endOf(to)) - left, 1), bottom - top);
  }
}

function drawSpike(context, x, y, direction) {
  context.beginPath();
  context.moveTo(x, y);
  context.lineTo(x - 4, y - 7 * direction);
  context.lineTo(x + 4, y - 7 * direction);
  context.fill();
}

// Hatches the time of each interruption.
function drawGaps({ context, color }, height) {
  context.strokeStyle = color('soft');
  context.lineWidth = 1;
  for (const [from, to] of time.span.events) {
    const left = Math.max(xOf(from), 0);
    const right = Math.min(xOf(to), lanes.width);
    if (right < 0 || left > lanes.width || to <= from) continue;
    context.save();
    context.beginPath();
    context.rect(left, laneHead, Math.max(right - left, 1), height - axisHeight - laneHead);
    context.clip();
    context.beginPath();
    for (let x = left - height; x < right + 1; x += 6) {
      context.moveTo(x, height);
      context.lineTo(x + height, 0);
    }
    context.stroke();
    context.restore();
  }
}

function drawCursor({ context, color }, height, instant, style, id) {
  const element = byId(id);
  element.hidden = instant === null;
  if (instant === null) return;
  const x = xOf(time.seconds[instant]);
  context.fillStyle = color(style);
  context.fillRect(Math.round(x) - 0.5, laneHead - 4, 1.5, height - laneHead);
  element.style.left = `${Math.min(Math.max(x, 0), lanes.width)}px`;
}

function tellCursor(instant, id) {
  if (instant === null) return;
  const element = byId(id);
  element.setAttribute('aria-valuenow', instant);
  element.setAttribute('aria-valuetext', `${instantText(instant)}: ${lanes.all.map((lane) => `${lane.name} ${laneText(lane, instant)}`).join(', ')}`);
}

function laneText(lane, instant) {
  if (!lane.family.isThere(lane.row, instant)) return 'not there';
  const figure = lane.family.figure(lane.key, lane.row, instant);
  return lane.isState ? stateName(figure.value) : figureText(figure);
}

// Shows the names of the lanes, with their values at the cursor.
function showHeads() {
  tellCursor(now.instant, 'cursor-1');
  tellCursor(time.second, 'cursor-2');
  const compare = byId('compare');
  if (compare) compare.checked = time.second !== null;
  document.querySelector('#plot .heads').replaceChildren(...lanes.all.map((lane, i) => {
    const isThere = lane.family.isThere(lane.row);
    const figure = lane.family.figure(lane.key, lane.row);
    const text = laneText(lane, now.instant);
    const scale = lane.isState || !lane.isKnown ? '' : `up to ${amountText(lane.top)}`;
    return element('div', { class: 'head', style: { top: `${i * laneHeight}px` } }, nameElement(lane.name),
      isThere ? element('strong', {}, figureElement(figure, text)) : element('span', { class: 'na' }, text), element('small', {}, scale),
      lane.family === host.groups && lane.row !== 0 && element('button', { type: 'button', 'aria-label': `Remove the lane of ${lane.name}`, onclick: () => toggleLane(lane.row) }, '×'));
  }));
}
