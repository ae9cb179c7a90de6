#include "src/table/column_table.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "src/table/line.h"
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

}  // namespace

void ColumnsApplySelection(ColumnTable table, const char *selection) {
  for (ColumnDesc &column : table) {
    if (selection != nullptr && !column.IsMandatory() && !IsNamed(selection, column.name)) column.shown = false;
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
    if (column.shown) line.PrintText(column, column.name);
  }
  line.End();
}

void TablePrintSeparator(ColumnTable table, bool csv) {
  if (csv) return;
  size_t width = 0;
  for (const ColumnDesc &column : table) {
    if (column.shown) width += column.width + (width == 0 ? 0u : 1u);
  }
  PrintDashes(width);
  PrintLine({});
}

void TablePrintHead(ColumnTable table, bool csv) {
  TablePrintSeparator(table, csv);
  TablePrintHeader(table, csv);
  TablePrintSeparator(table, csv);
}

void TablePrintDescriptions(ColumnTable table) {
  std::puts("Description of report header labels:");
  for (const ColumnDesc &column : table) {
    if (column.shown) std::printf("%20s: %s\n", column.name, column.description);
  }
}

}  // namespace kestrel
