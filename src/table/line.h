// One line of a table.
#ifndef KESTREL_TABLE_LINE_H
#define KESTREL_TABLE_LINE_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "src/table/column_table.h"

namespace kestrel {

// Prints the fields of the shown columns in order. In a table, a value wider than its column is printed completely. Its
// overflow is carried and narrows the next columns until the line is aligned again. The carry is kept modulo 256. If it
// exceeds the width of a column, the field width becomes negative, so the field is left-aligned.
class Line {
 public:
  explicit Line(bool csv) : csv_(csv) {}

  void PrintText(const ColumnDesc &column, std::string_view text);

  // Prints a text that does not come from kestrel. Masks it if the output is a terminal.
  void PrintForeignText(const ColumnDesc &column, std::string_view text);

  // Prints a number with the column's conversion; nothing for kS.
  void PrintNumber(const ColumnDesc &column, uint64_t number);

  void End();

 private:
  // Prints a field of `size` bytes, which `appendText` appends.
  template <typename AppendText>
  void PrintField(const ColumnDesc &column, size_t size, AppendText appendText);

  void Flush();
  void Append(std::string_view text);
  void AppendMasked(std::string_view text);
  void Pad(int count);

  bool csv_;
  bool first_ = true;
  uint8_t carry_ = 0;
  size_t size_ = 0;
  char text_[1024];  // the part of the line that is not printed yet
};

}  // namespace kestrel

#endif  // KESTREL_TABLE_LINE_H
