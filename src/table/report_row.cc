#include "src/table/report_row.h"

#include "src/table/line.h"

namespace kestrel {
namespace {

// Prints a line. Calls `print` for each field, with the column's index in the table.
template <typename Print>
void PrintLine(ColumnTable table, bool csv, bool total, Print print) {
  Line line(csv);
  for (size_t i = 0; i < table.size(); ++i) {
    const ColumnDesc &column = table[i];
    if (!column.shown) continue;
    if (total && !column.IsInTotal()) {
      line.PrintText(column, {});
    } else {
      print(line, column, i);
    }
  }
  line.End();
}

void PrintFigure(Line &line, const ColumnDesc &column, const void *row, ReportUnit unit) {
  const Figure &figure = column.figure;
  if (figure.text != nullptr) return line.PrintForeignText(column, figure.text(row));
  if (figure.number == nullptr) return line.PrintNumber(column, 0);
  const uint64_t number = figure.number(row);
  if (figure.unit == FigureUnit::kYesNo) return line.PrintText(column, number != 0 ? "y" : "n");
  line.PrintNumber(column, figure.Displayed(number, unit));
}

}  // namespace

void PrintFigures(ColumnTable table, bool csv, bool total, const void *row, ReportUnit unit) {
  PrintLine(table, csv, total,
            [=](Line &line, const ColumnDesc &column, size_t) { PrintFigure(line, column, row, unit); });
}

void ColumnSums::Add(ColumnTable table, const void *row) {
  ++rows_;
  for (size_t i = 0; i < table.size(); ++i) {
    const Figure &figure = table[i].figure;
    if (figure.sum == FigureSum::kNoSum) continue;
    const uint64_t value = figure.number(row);
    switch (figure.sum) {
      case FigureSum::kNoSum: break;
      case FigureSum::kAddAvailable:
        if (value != figure.Cut(UINT64_MAX)) sums_[i] += value;
        break;
      case FigureSum::kAdd:
      case FigureSum::kMean: sums_[i] += value; break;
      case FigureSum::kAddTwice: sums_[i] += 2 * value; break;
      case FigureSum::kLast: sums_[i] = value; break;
      case FigureSum::kAllOnes: sums_[i] = UINT64_MAX; break;
    }
  }
}

uint64_t ColumnSums::Result(const Figure &figure, size_t column) const {
  const uint64_t sum = figure.Cut(sums_[column]);
  return figure.sum == FigureSum::kMean && rows_ != 0 ? sum / rows_ : sum;
}

void ColumnSums::Print(ColumnTable table, bool csv, bool total, const void *label, ReportUnit unit) const {
  PrintLine(table, csv, total, [=, this](Line &line, const ColumnDesc &column, size_t i) {
    const Figure &figure = column.figure;
    if (figure.sum == FigureSum::kNoSum) return PrintFigure(line, column, label, unit);
    line.PrintNumber(column, figure.Displayed(Result(figure, i), unit));
  });
}

void TablePrintRow(ColumnTable table, bool csv, bool total, std::span<const Value> values) {
  PrintLine(table, csv, total, [values](Line &line, const ColumnDesc &column, size_t i) {
    const Value value = i < values.size() ? values[i] : Value();
    if (column.conversion == Conversion::kS) return line.PrintForeignText(column, value.text());
    line.PrintNumber(column, value.number());
  });
}

}  // namespace kestrel
