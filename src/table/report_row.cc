#include "src/table/report_row.h"

#include <algorithm>

namespace kestrel {

void PrintFigures(ColumnTable table, bool csv, bool total, const void *row, ReportUnit unit) {
  constexpr size_t kMostColumns = 64;
  Value values[kMostColumns];
  const size_t count = std::min(table.size(), kMostColumns);
  for (size_t i = 0; i < count; ++i)
    values[i] = LoadFigure(table[i].figure, row, unit);
  TablePrintRow(table, csv, total, {values, count});
}

void SumFigures(ColumnTable table, const void *row, void *sums) {
  for (const ColumnDesc &column : table)
    SumFigure(column.figure, row, sums);
}

void FinishSums(ColumnTable table, void *sums, uint32_t rows) {
  for (const ColumnDesc &column : table)
    FinishSum(column.figure, sums, rows);
}

}  // namespace kestrel
