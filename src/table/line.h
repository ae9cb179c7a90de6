// One line of a table.
#ifndef KESTREL_TABLE_LINE_H
#define KESTREL_TABLE_LINE_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "src/table/column_table.h"

namespace kestrel {

// Prints the fields of the shown columns in order. In a table, a value wider than its column is printed whole; the
// overflow is carried, and narrows the following columns until the line is back on the grid. The carry counts modulo
// 256. Where it exceeds a column's width, the field's width becomes negative, that is, left-aligned.
class Line {
 public:
  explicit Line(bool csv) : csv_(csv) {}

  void PrintText(const ColumnDesc &column, std::string_view text);

  // Prints a text from outside, masked for a terminal.
  void PrintForeignText(const ColumnDesc &column, std::string_view text);

  // Prints a number as the column's conversion says; nothing for kS.
  void PrintNumber(const ColumnDesc &column, uint64_t number);

  void End();

 private:
  void Flush();
  void Append(std::string_view text);
  void Pad(int count);

  bool csv_;
  bool first_ = true;
  uint8_t carry_ = 0;
  size_t size_ = 0;
  char text_[1024];  // the end of the line, which is not printed yet
};

}  // namespace kestrel

#endif  // KESTREL_TABLE_LINE_H
