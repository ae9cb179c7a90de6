#include "tests/faults/report_table.h"

#include <algorithm>

#include "tests/support/text.h"

namespace faults {
namespace {

Cells Split(const std::string &line) {
  Cells cells;
  for (size_t start = 0; start <= line.size();) {
    const size_t end = std::min(line.find(',', start), line.size());
    cells.push_back(line.substr(start, end - start));
    start = end + 1;
  }
  return cells;
}

bool IsNumber(const std::string &cell) { return !cell.empty() && cell.find_first_not_of("0123456789") == cell.npos; }

uint64_t Sum(const ReportTable &table, size_t column) {
  uint64_t sum = 0;
  for (const Cells &row : table.rows)
    sum += std::stoull(row.at(column));
  return sum;
}

// A figure of the total row of a table.
uint64_t TotalFigure(const ReportTable &table, Total kind, size_t column) {
  const std::string &name = table.header[column];
  if (kind == Total::kOfZip && (name == "avgZipTime" || name == "avgUnzipTime")) {
    return table.rows.empty() ? 0 : Sum(table, column) / table.rows.size();
  }
  if (kind == Total::kOfHeaps) {
    // Each sum is one column to the left of its own column.
    const bool isZero = name == "max" || name == "maxAvail" || name == "numShrinkOps";
    return isZero ? 0 : Sum(table, column + 1);
  }
  return Sum(table, column);
}

// The number in a cell, or at the end of a name; no value if there is none or if it is 0.
uint64_t NumberIn(const std::string &cell) {
  if (cell.starts_with("0x")) return std::stoull(cell, nullptr, 16);
  const size_t end = cell.find_last_not_of("0123456789");
  const std::string digits = end == cell.npos ? cell : cell.substr(end + 1);
  // The report names page-sharing pools after their memory nodes.
  return digits.empty() || cell.starts_with("pshare-") ? 0 : std::stoull(digits);
}

}  // namespace

std::string Joined(const Cells &cells) {
  std::string line;
  for (const std::string &cell : cells)
    line += (&cell == &cells.front() ? "" : ",") + cell;
  return line;
}

ReportTable::ReportTable(const Report &report, const std::string &output) {
  std::vector<std::string> lines = testing_support::Lines(output);
  const auto end = std::find(lines.begin(), lines.end(), "Description of report header labels:");
  for (auto line = end; line != lines.end(); ++line)
    closing += *line + "\n";
  lines.erase(end, lines.end());
  if (lines.empty()) return;
  header = Split(lines.front());
  for (size_t i = 1; i < lines.size(); ++i)
    rows.push_back(Split(lines[i]));
  const bool endsInTotal =
      report.total != Total::kNone && !rows.empty() && (rows.back().front() == "Total" || rows.back().front().empty());
  if (!endsInTotal) return;
  total = rows.back();
  rows.pop_back();
}

Cells TotalLike(const Cells &other, const ReportTable &table, Total kind) {
  Cells total = other;
  for (size_t column = 0; column < total.size(); ++column) {
    if (IsNumber(total[column])) total[column] = std::to_string(TotalFigure(table, kind, column));
  }
  return total;
}

bool HasOneOwner(const Report &report, const ReportTable &table, const Cells &row) {
  return std::ranges::any_of(std::initializer_list<uint64_t>{113, 127, 131, 137, 139, 149}, [&](uint64_t owner) {
    for (size_t column = 0; column < row.size(); ++column) {
      const bool isShared = std::ranges::count(report.sharedColumns, table.header[column]) != 0;
      if (!isShared && NumberIn(row[column]) % owner != 0) return false;
    }
    return true;
  });
}

}  // namespace faults
