// Texts about reports for the manual pages and completions.
#ifndef TOOLS_DESCRIBE_TEXT_H
#define TOOLS_DESCRIBE_TEXT_H

#include <string>
#include <string_view>
#include <vector>

#include "src/reports/report.h"

namespace describe {

enum class Argument { kNone, kNumber, kUnit, kColumns, kFlags };

struct Option {
  char letter;
  const char *longName;  // null if it has none
  Argument argument;
  const char *placeholder;  // for the argument
  const char *meaning;
};

// A report's options in a fixed order.
std::vector<Option> OptionsOf(const kestrel::Report &report);

// The units that a report accepts, the default first.
std::vector<std::string> UnitsOf(const kestrel::Report &report);

// A column's kind: "amount", "number", "text" or "y or n".
std::string KindOf(const kestrel::ColumnDesc &column);

// A column's entry in the row of sums; empty if it has none.
std::string SumOf(const kestrel::Report &report, const kestrel::ColumnDesc &column);

// A column's description, without trailing spaces.
std::string_view MeaningOf(const kestrel::ColumnDesc &column);

}  // namespace describe

#endif  // TOOLS_DESCRIBE_TEXT_H
