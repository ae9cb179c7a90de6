// The rows of a table.
#ifndef KESTREL_TABLE_REPORT_ROW_H
#define KESTREL_TABLE_REPORT_ROW_H

#include <cstdint>
#include <span>
#include <string_view>

#include "src/table/column_table.h"

namespace kestrel {

// Prints the figures of the row structure at `row`. In a total row, columns without a total are blank.
void PrintFigures(ColumnTable table, bool csv, bool total, const void *row, ReportUnit unit);

// The sums of a table's figures.
class ColumnSums {
 public:
  void Add(ColumnTable table, const void *row);

  // Prints a row of the sums. Columns without a sum show the figures of the row structure at `label`.
  void Print(ColumnTable table, bool csv, bool total, const void *label, ReportUnit unit) const;

 private:
  uint64_t Result(const Figure &figure, size_t column) const;

  uint64_t sums_[kMaxColumns] = {};
  uint32_t rows_ = 0;
};

// A value for a row that is not a structure: a number or a text. The default is both 0 and empty.
class Value {
 public:
  Value() = default;
  Value(uint64_t number) : number_(number) {}
  Value(std::string_view text) : text_(text) {}

  uint64_t number() const { return number_; }
  std::string_view text() const { return text_; }

 private:
  uint64_t number_ = 0;
  std::string_view text_;
};

// Prints a row from one value for each column, shown or not. If the last values are missing, they have the default.
void TablePrintRow(ColumnTable table, bool csv, bool total, std::span<const Value> values);

}  // namespace kestrel

#endif  // KESTREL_TABLE_REPORT_ROW_H
