// Column tables: one row per column of a report, and the parts of a printed table around its rows.
#ifndef KESTREL_TABLE_COLUMN_TABLE_H
#define KESTREL_TABLE_COLUMN_TABLE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "src/table/figure.h"
#include "src/table/name_list.h"

namespace kestrel {

// How a column's value prints: the printf conversions of the same names. kU and kD take the low 32 bits of a number, kC
// the low 8.
enum class Conversion : uint8_t { kU, kD, kC, kLu, kLd, kS };

enum ColumnFlag : uint8_t {
  kInTotal = 1,    // has a value in a total row although it has no sum
  kMandatory = 2,  // no column selection hides it
};

struct ColumnDesc {
  const char *name;  // printed in the header, and accepted by -s
  const char *description;
  uint8_t width;  // ColumnsApplySelection widens it to fit the name
  Conversion conversion;
  uint8_t flags = 0;  // bits of ColumnFlag
  Figure figure = {};
  bool shown = true;  // only ColumnsApplySelection clears it

  // Whether the column has a value in a total row. If not, it is blank there.
  bool IsInTotal() const { return (flags & kInTotal) != 0 || figure.sum != FigureSum::kNoSum; }
  bool IsMandatory() const { return (flags & kMandatory) != 0; }
};

inline constexpr size_t kMaxColumns = 64;

// A report's columns. They are static and writable, since one run prints one table.
using ColumnTable = std::span<ColumnDesc>;

// The last part of a column's description: how it is summed, or bits of ColumnFlag.
struct ColumnTraits {
  constexpr ColumnTraits() = default;
  constexpr ColumnTraits(FigureSum how) : sum(how) {}
  constexpr ColumnTraits(int ofColumnFlag) : flags(static_cast<uint8_t>(ofColumnFlag)) {}

  FigureSum sum = FigureSum::kNoSum;
  uint8_t flags = 0;
};

// A column of a table whose rows have type `Row`. `read` is a lambda that returns the figure of a row.
template <typename Row>
struct Column : ColumnDesc {
  template <typename Read>
  constexpr Column(const char *label, const char *meaning, uint8_t minWidth, Conversion printed, Read read,
                   ColumnTraits traits = {})
      : Column(label, meaning, minWidth, printed, FigureUnit::kPlain, read, traits) {}

  template <typename Read>
  constexpr Column(const char *label, const char *meaning, uint8_t minWidth, Conversion printed, FigureUnit unit, Read,
                   ColumnTraits traits = {})
      : ColumnDesc{.name = label,
                   .description = meaning,
                   .width = minWidth,
                   .conversion = printed,
                   .flags = traits.flags,
                   .figure = FigureOf<Row, Read>(unit, traits.sum)} {}
};

// Makes a report's columns from descriptions such as
//   {"min", "Configured memory reservation", 10, kLd, kKB, [](auto &row) { return row.alloc.min; }, kAdd}
template <typename Row, size_t count>
constexpr std::array<ColumnDesc, count> ColumnsOf(const Column<Row> (&described)[count]) {
  static_assert(count <= kMaxColumns);
  std::array<ColumnDesc, count> columns = {};
  for (size_t i = 0; i < count; ++i)
    columns[i] = described[i];
  return columns;
}

// Applies a column selection: names separated by ':', ignoring case; null selects all. Hides the other columns, unless
// they are mandatory, and widens each column to fit its name. Ignores all but the first 128 characters of a selection.
void ColumnsApplySelection(ColumnTable table, const char *selection);

// The names of the shown columns, separated by ':'; "(all)" or "(none)".
NameList ColumnsDescribeSelection(ColumnTable table);

void TablePrintHeader(ColumnTable table, bool csv);

// Prints a line of dashes; prints nothing in CSV.
void TablePrintSeparator(ColumnTable table, bool csv);

// Prints a separator, the header and another separator.
void TablePrintHead(ColumnTable table, bool csv);

// Prints the descriptions of the shown columns, for -v.
void TablePrintDescriptions(ColumnTable table);

}  // namespace kestrel

#endif  // KESTREL_TABLE_COLUMN_TABLE_H
