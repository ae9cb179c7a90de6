// The figures over a span: see figure_changes.h and span_json.h for their form.

// Values in place of a number: the row has no record, or its record could not be read.
const noRecord = NaN;
const unreadable = -Infinity;

class ByteReader {
  constructor(bytes) {
    this.bytes = bytes;
    this.place = 0;
  }

  integer() {
    for (let number = 0, scale = 1; ; scale *= 128) {
      const byte = this.bytes[this.place++];
      number += (byte & 127) * scale;
      if (byte < 128) return number;
    }
  }

  large() {
    this.place += 8;
    return Number(new DataView(this.bytes.buffer).getBigInt64(this.place - 8, true));
  }
}

// The values of a column by row and instant.
class Series {
  constructor(reader, rows) {
    const scale = reader.integer();
    this.starts = new Uint32Array(rows + 1);
    for (let row = 0; row < rows; ++row) this.starts[row + 1] = this.starts[row] + reader.integer();
    const count = this.starts[rows];
    this.instants = new Uint32Array(count);
    this.values = new Float64Array(count);
    this.forEachChange((i, isFirst) => (this.instants[i] = reader.integer() + (isFirst ? 0 : this.instants[i - 1])));
    let last;
    this.forEachChange((i, isFirst) => {
      if (isFirst) last = 0;
      const token = reader.integer();
      if (token < 4) return void (this.values[i] = token === 3 ? reader.large() : [noRecord, unreadable, -1][token]);
      const mapped = token - 4;
      this.values[i] = last += (mapped % 2 ? -(mapped + 1) / 2 : mapped / 2) * scale;
    });
  }

  forEachChange(visit) {
    for (let row = 0; row + 1 < this.starts.length; ++row) {
      for (let i = this.starts[row]; i < this.starts[row + 1]; ++i) visit(i, i === this.starts[row]);
    }
  }

  // Returns the index of the last change at or before an instant, or -1 if there is none.
  find(row, instant) {
    let low = this.starts[row];
    let high = this.starts[row + 1];
    while (low < high) {
      const middle = (low + high) >> 1;
      if (this.instants[middle] <= instant) low = middle + 1;
      else high = middle;
    }
    return low > this.starts[row] ? low - 1 : -1;
  }

  at(row, instant) {
    const i = this.find(row, instant);
    return i < 0 ? noRecord : this.values[i];
  }

  hasAny(row) {
    return this.starts[row] < this.starts[row + 1];
  }

  // Returns the values of a row at all instants.
  all(row, instants) {
    const values = new Float64Array(instants).fill(noRecord);
    for (let i = this.starts[row]; i < this.starts[row + 1]; ++i) values.fill(this.values[i], this.instants[i]);
    return values;
  }
}

// Adds the values to the families of the data.
function addSeries(data, bytes) {
  const reader = new ByteReader(bytes);
  for (const family of Object.values(data.families)) {
    family.lives = new Series(reader, family.count);
    for (const { fields } of family.records) {
      for (const field of fields) {
        const next = () => new Series(reader, family.count);
        field.series = next();
        if (field.band) Object.assign(field, { below: next(), above: next() });
      }
    }
  }
}
