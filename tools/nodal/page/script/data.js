// The figures of the host: see page_json.h for their form.

async function unpack(id) {
  const text = atob(byId(id).textContent);
  const bytes = Uint8Array.from(text, (character) => character.charCodeAt(0));
  const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream('deflate'));
  return new Uint8Array(await new Response(stream).arrayBuffer());
}

async function readData() {
  const data = JSON.parse(new TextDecoder().decode(await unpack('data')));
  if (data.span) addSeries(data, await unpack('values'));
  return data;
}

// Returns the position of each row in the columns of a record, or -1 for a row without the record. Returns null if all
// rows have the record.
function positions(record, count) {
  if (!record.rows) return null;
  const places = new Int32Array(count).fill(-1);
  record.rows.forEach((row, position) => (places[row] = position));
  return places;
}

class Family {
  constructor(json) {
    this.json = json;
    this.count = json.count;
    this.columns = new Map();
    for (const record of json.records) {
      record.positions = positions(record, json.count);
      record.reasons = new Map();
      for (const [row, reason, from = 0] of record.unreadable ?? []) {
        record.reasons.set(row, [...(record.reasons.get(row) ?? []), [reason, from]]);
      }
      for (const field of record.fields) this.columns.set(`${record.record}.${field.name}`, { record, field });
    }
  }

  // Returns the family's value under a key for a row, such as its name.
  of(key, row) {
    const values = this.json[key];
    return Array.isArray(values) ? values[row] : values;
  }

  name(row) {
    return this.of('name', row);
  }

  // Returns the rows that exist at the instant.
  rows(instant = now.instant) {
    const all = Array.from({ length: this.count }, (_, row) => row);
    return this.json.lives ? all.filter((row) => this.isThere(row, instant)) : all;
  }

  isThere(row, instant = now.instant) {
    return !this.json.lives || this.json.lives.at(row, instant) === 1;
  }

  // Returns the figure of a row at an instant. `key` is "Record.field".
  figure(key, row, instant = now.instant) {
    return new Figure(this, key, row, instant);
  }

  // Returns the value of a figure, or undefined if it is unavailable or unlimited.
  value(key, row, instant = now.instant) {
    return this.figure(key, row, instant).value;
  }

  hasRecord(name, row) {
    const record = this.json.records.find((each) => each.record === name);
    return Boolean(record) && this.isThere(row) && record.fields.some((field) => rawValue(record, field, row, now.instant) !== null);
  }

  // Returns why the record of a row could not be read, or undefined.
  reason(record, row, instant = now.instant) {
    const isUnreadable = record.fields.some(({ series }) => !series || series.at(row, instant) === unreadable);
    return isUnreadable ? record.reasons.get(row)?.findLast(([, from]) => from <= instant)?.[0] : undefined;
  }

  // Returns the records that a row has, or that could not be read.
  recordsOf(row) {
    return this.json.records.filter((each) => this.hasRecord(each.record, row) || this.reason(each, row));
  }
}

// The instant that all views show: an index into data.instants.
const now = { instant: 0 };

// The columns whose figures were looked up since the last call of sources(), by their keys.
const usedColumns = new Map();

// A value, or the reason why there is none.
class Figure {
  constructor(family, key, row, instant) {
    const { record, field } = family.columns.get(key);
    usedColumns.set(key.replace(/\[\d+\]/, '[...]'), { record, field });
    this.family = family;
    this.key = key;
    this.row = row;
    this.record = record;
    this.field = field;
    this.instant = instant;
    this.raw = rawValue(record, field, row, instant);
    this.isUnlimited = Boolean(field.limit) && isAllOnes(this.raw, true);
    const isKnown = this.raw !== null && !this.isUnlimited && !isUnavailable(this.raw, field);
    this.value = isKnown ? this.raw : undefined;
  }

  // Returns why there is no value, in words.
  get reason() {
    if (this.raw !== null) return 'the host does not report it';
    const status = this.family.reason(this.record, this.row, this.instant);
    return status ? `could not be read: ${status}` : 'has no such record';
  }
}

function rawValue(record, field, row, instant) {
  if (field.series) {
    const value = field.series.at(row, instant);
    return isFinite(value) ? value : null;
  }
  const position = record.positions ? record.positions[row] : row;
  if (position < 0) return null;
  const values = field.values[Math.min(instant, field.values.length - 1)];
  return (Array.isArray(values) ? values[position] : values) ?? null;
}

// As in the reports, a limit near the largest amount that a kernel can express means unlimited.
const largestLimit = 0xffffffffef;

function isAllOnes(raw, isLimit) {
  return raw === -1 || (isLimit && raw > largestLimit);
}

function isUnavailable(raw, field) {
  if (field.unit === 'boolean') return raw === -1 || raw === 255;
  return field.unit !== 'ID' && field.unit !== '' && field.unit !== 'bit mask' && isAllOnes(raw, false);
}
