// The columns of a record: one for each number in it.
#ifndef NODAL_PAGE_COLUMNS_H
#define NODAL_PAGE_COLUMNS_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platkit/record_layout.h"

namespace nodal {

struct Column {
  const platkit::Field *field;
  std::string name;   // such as consumed or sizes[3].free
  uint32_t base = 0;  // the offset of the array entry that has the field; 0 for a field outside of arrays

  std::span<const std::byte> BytesIn(std::span<const std::byte> record) const;
};

// Texts and bytes without a known meaning have no column.
std::vector<Column> ColumnsOf(const platkit::RecordLayout &layout);

}  // namespace nodal

#endif  // NODAL_PAGE_COLUMNS_H
