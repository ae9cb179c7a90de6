// Rows of figures: between a report's row structure and the table engine.
#ifndef KESTREL_TABLE_REPORT_ROW_H
#define KESTREL_TABLE_REPORT_ROW_H

#include "src/table/column_table.h"

namespace kestrel {

// Prints the figures of the row structure at `row`, each converted to the display unit as its column says.
void PrintFigures(ColumnTable table, bool csv, bool total, const void *row, ReportUnit unit);

// Adds every figure of `row` into `sums`, a structure of the same type, as its column says.
void SumFigures(ColumnTable table, const void *row, void *sums);

// Makes means of the sums over `rows` rows whose columns say so.
void FinishSums(ColumnTable table, void *sums, uint32_t rows);

}  // namespace kestrel

#endif  // KESTREL_TABLE_REPORT_ROW_H
