// Column tables: the engine that prints every report's rows, as an aligned table or as CSV.
#ifndef KESTREL_TABLE_COLUMN_TABLE_H
#define KESTREL_TABLE_COLUMN_TABLE_H

#include <cstdint>
#include <span>
#include <string_view>

#include "src/table/figure.h"
#include "src/table/name_list.h"

namespace kestrel {

// How a column's value prints: the printf conversions of the same names. The first three take the low 32 bits.
enum class Conversion : uint8_t { kU, kD, kC, kLu, kLd, kS };

// What a column's flags say.
enum ColumnFlag : uint8_t {
  kPlain = 0,
  kInTotal = 1,    // has a value in a total row; else it is blank there
  kMandatory = 2,  // no column selection removes it
};

struct ColumnDesc {
  const char *name;  // header, CSV header, and what -s matches
  const char *description;
  uint8_t width;  // widened to the name by ColumnsApplySelection
  Conversion conversion;
  uint8_t flags;  // of ColumnFlag
  Figure figure = {};
  bool shown = true;  // only ColumnsApplySelection clears it

  bool inTotal() const { return (flags & kInTotal) != 0; }
  bool mandatory() const { return (flags & kMandatory) != 0; }
};

// A report's columns, static and writable: one run prints one table.
using ColumnTable = std::span<ColumnDesc>;

// Hides the columns that a selection (names separated by ':', case ignored, null for all) does not name, and widens
// each column to its name. Only the first 128 characters of a selection count.
void ColumnsApplySelection(ColumnTable table, const char *selection);

// The names of the shown columns, separated by ':'; "(all)" or "(none)".
NameList ColumnsDescribeSelection(ColumnTable table);

void TablePrintHeader(ColumnTable table, bool csv);

// The dashed line; nothing in CSV mode.
void TablePrintSeparator(ColumnTable table, bool csv);

// Separator, header, separator.
void TablePrintHead(ColumnTable table, bool csv);

// Prints a row. `values` has one value per column, shown or not; a missing one at the end counts as empty.
void TablePrintRow(ColumnTable table, bool csv, bool total, std::span<const Value> values);

// The labels and their meanings, for -v.
void TablePrintDescriptions(ColumnTable table);

}  // namespace kestrel

#endif  // KESTREL_TABLE_COLUMN_TABLE_H
