#include "src/table/column_table.h"

#include <strings.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>

#include "src/table/output.h"

namespace kestrel {
namespace {

bool IsNamed(std::string_view list, std::string_view name) {
  list = list.substr(0, 128);
  while (!list.empty()) {
    const size_t end = std::min(list.find(':'), list.size());
    if (end == name.size() && end > 0 && strncasecmp(list.data(), name.data(), end) == 0) return true;
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return false;
}

// One line of a table. In table mode a value that is wider than its column is printed whole, and the overflow is
// carried: the columns behind it are narrowed until the line is back on the grid. The carry counts modulo 256; where it
// exceeds a column's width, the field's width is negative and its text left-aligned.
class Line {
 public:
  explicit Line(bool csv) : csv_(csv) {}

  void Put(const ColumnDesc &column, std::string_view text) { PutWith(PutField, column, text); }
  void PutForeign(const ColumnDesc &column, std::string_view text) { PutWith(PutForeignField, column, text); }

  void PutNumber(const ColumnDesc &column, auto number) {
    char digits[24];
    const char *end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    Put(column, {digits, static_cast<size_t>(end - digits)});
  }

 private:
  void PutWith(int (*put)(std::string_view, int), const ColumnDesc &column, std::string_view text) {
    if (!first_) PutChar(csv_ ? ',' : ' ');
    first_ = false;
    const int printed = put(text, csv_ ? 0 : column.width - carry_);
    carry_ = static_cast<uint8_t>(carry_ + printed - column.width);
  }

  bool csv_;
  bool first_ = true;
  uint8_t carry_ = 0;
};

void PutValue(Line &line, const ColumnDesc &column, const Value &value) {
  switch (column.conversion) {
    case Conversion::kU: return line.PutNumber(column, static_cast<uint32_t>(value.number()));
    case Conversion::kD: return line.PutNumber(column, static_cast<int32_t>(value.number()));
    case Conversion::kLu: return line.PutNumber(column, value.number());
    case Conversion::kLd: return line.PutNumber(column, static_cast<int64_t>(value.number()));
    case Conversion::kC: {
      const char c = static_cast<char>(value.number());
      return line.Put(column, {&c, 1});
    }
    case Conversion::kS: return line.PutForeign(column, value.text());
  }
}

}  // namespace

void ColumnsApplySelection(ColumnTable table, const char *selection) {
  for (ColumnDesc &column : table) {
    if (selection != nullptr && !column.mandatory() && !IsNamed(selection, column.name)) column.shown = false;
    column.width = static_cast<uint8_t>(std::max<size_t>(column.width, std::strlen(column.name)));
  }
}

NameList ColumnsDescribeSelection(ColumnTable table) {
  NameList names;
  for (const ColumnDesc &column : table)
    names.Offer(column.name, column.shown);
  return names;
}

void TablePrintHeader(ColumnTable table, bool csv) {
  Line line(csv);
  for (const ColumnDesc &column : table) {
    if (column.shown) line.Put(column, column.name);
  }
  EndLine();
}

void TablePrintSeparator(ColumnTable table, bool csv) {
  if (csv) return;
  bool first = true;
  for (const ColumnDesc &column : table) {
    if (!column.shown) continue;
    for (int dashes = column.width + (first ? 0 : 1); dashes > 0; --dashes)
      PutChar('-');
    first = false;
  }
  EndLine();
}

void TablePrintHead(ColumnTable table, bool csv) {
  TablePrintSeparator(table, csv);
  TablePrintHeader(table, csv);
  TablePrintSeparator(table, csv);
}

void TablePrintRow(ColumnTable table, bool csv, bool total, std::span<const Value> values) {
  Line line(csv);
  for (size_t i = 0; i < table.size(); ++i) {
    const ColumnDesc &column = table[i];
    if (!column.shown) continue;
    if (total && !column.inTotal()) {
      line.Put(column, {});
    } else {
      PutValue(line, column, i < values.size() ? values[i] : Value());
    }
  }
  EndLine();
}

void TablePrintDescriptions(ColumnTable table) {
  std::puts("Description of report header labels:");
  for (const ColumnDesc &column : table) {
    if (column.shown) std::printf("%20s: %s\n", column.name, column.description);
  }
}

}  // namespace kestrel
