// Figures as text.

const groupFlags = [
  'predefined', 'leaf', 'virtual machine', 'user world', 'system world', 'test world', 'protected', 'self-destruct',
  'non-persistent', 'kernel', 'user-created', 'container', 'sub-container', 'VMM sub-container',
  'user-world sub-container',
];

// Formats an amount in KB for people, such as "3.02 GB". The program has the same function: AmountText in html.cc.
function amountText(kb) {
  if (kb === undefined) return 'n/a';
  let amount = kb;
  let unit = 0;
  for (; Math.abs(amount) >= 1000 && unit < 4; ++unit) amount /= 1024;
  const digits = unit === 0 || amount >= 100 ? 0 : amount >= 10 ? 1 : 2;
  return `${amount.toFixed(digits)} ${['KB', 'MB', 'GB', 'TB', 'PB'][unit]}`;
}

function countText(count) {
  return count === undefined ? 'n/a' : count.toLocaleString('en');
}

// Rounds, but less than the whole is never 100 %, and more than nothing is never 0 %.
function percentText(part) {
  if (!isFinite(part)) return 'n/a';
  const percent = part * 100;
  if (percent > 0 && percent < 1) return '< 1 %';
  return `${countText(percent < 100 ? Math.min(Math.round(percent), 99) : Math.round(percent))} %`;
}

// The number of KB in one unit, for the units of memory.
const kbPerUnit = { KB: 1, bytes: 1 / 1024, '4 KB pages': 4, '2 MB blocks': 2048 };

function inKB(figure) {
  const scale = kbPerUnit[figure.field.unit];
  return scale === undefined || figure.value === undefined ? undefined : figure.value * scale;
}

// Formats a figure. If it has no value, does not say why.
function figureText(figure) {
  if (figure.isUnlimited) return 'unlimited';
  if (figure.value === undefined) return 'n/a';
  const { unit } = figure.field;
  if (unit === 'bytes' && figure.value < 1024) return `${figure.value} bytes`;
  if (unit in kbPerUnit) return amountText(inKB(figure));
  if (unit === 'boolean') return figure.value ? 'yes' : 'no';
  if (unit === 'percent') return `${figure.value} %`;
  if (unit === 'microseconds') return `${countText(figure.value)} µs`;
  if (unit === 'bit mask') return flagsText(figure.value);
  return unit === 'ID' ? String(figure.value) : countText(figure.value);
}

function flagsText(bits) {
  const names = groupFlags.filter((_, bit) => bits & (1 << bit));
  return names.join(', ') || 'none';
}

// Returns all digits of a figure and its source, for tooltips.
function originText(figure) {
  const digits = figure.value === undefined ? figureText(figure) : countText(figure.value);
  const reason = figure.value === undefined && !figure.isUnlimited ? `: ${figure.reason}` : '';
  return `${digits} ${figure.value === undefined ? '' : figure.field.unit}${reason} · ${figure.key}: ${figure.field.meaning}${sampleText(figure)}`;
}

// Names the sample that a figure is from, unless it is the sample of the instant.
function sampleText(figure) {
  const { series } = figure.field;
  if (!series || time.span.tolerance === 0) return '';
  const change = series.find(figure.row, figure.instant);
  if (change < 0 || series.instants[change] === figure.instant) return '';
  return ` · as of ${instantText(series.instants[change])}, since when it changed by at most ${toleranceText()}`;
}

function toleranceText() {
  return `${(time.span.tolerance * 100).toFixed(1)} %`;
}

// Returns the path of the node that has a figure of a group, for "nodal get".
function pathOf(figure) {
  const id = figure.record.node.includes('{group') ? figure.family.of('id', figure.row) : clientOf(figure);
  return figure.record.node.replace(/\{\w+:\w+\}/, id);
}

function clientOf({ family, row, record }) {
  const isOfMonitor = record.record === 'VmSwapInfoRecord' || record.record === 'LPageStatsRecord';
  return family.of(isOfMonitor ? 'monitor' : 'client', row) ?? undefined;
}

function pluralText(count, what) {
  return `${countText(count)} ${what}${count === 1 ? '' : 's'}`;
}
