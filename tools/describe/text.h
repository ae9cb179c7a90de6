// What is said of the reports besides what they say of themselves.
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

// A report's options in a fixed order, without those that it takes but that do something else than their name says.
std::vector<Option> OptionsOf(const kestrel::Report &report);

// The units that a report takes, its own first.
std::vector<std::string> UnitsOf(const kestrel::Report &report);

// What a report's column shows: "amount", "number", "text", "y or n".
std::string KindOf(const kestrel::ColumnDesc &column);

// What a column has in the row of sums; empty if nothing.
std::string SumOf(const kestrel::Report &report, const kestrel::ColumnDesc &column);

// A column's meaning, without blanks at its end.
std::string_view MeaningOf(const kestrel::ColumnDesc &column);

}  // namespace describe

#endif  // TOOLS_DESCRIBE_TEXT_H
