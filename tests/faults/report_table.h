// Parses the table in the CSV output of a run.
#ifndef TESTS_FAULTS_REPORT_TABLE_H
#define TESTS_FAULTS_REPORT_TABLE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/faults/failure_rows.h"

namespace faults {

using Cells = std::vector<std::string>;

std::string Joined(const Cells &cells);

struct ReportTable {
  ReportTable(const Report &report, const std::string &output);

  Cells header = {};  // empty: the run ended before its table
  std::vector<Cells> rows = {};
  std::optional<Cells> total = {};
  std::string closing = {};  // the descriptions and all text after them
};

// Returns the expected total row of a table. Copies the cells of `other` that are not numbers.
Cells TotalLike(const Cells &other, const ReportTable &table, Total kind);

// True if the figures of a row, and the numbers in its names, are multiples of one owner's number. Ignores the report's
// shared columns.
bool HasOneOwner(const Report &report, const ReportTable &table, const Cells &row);

}  // namespace faults

#endif  // TESTS_FAULTS_REPORT_TABLE_H
