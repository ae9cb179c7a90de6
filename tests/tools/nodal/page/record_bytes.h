#ifndef TESTS_TOOLS_NODAL_PAGE_RECORD_BYTES_H
#define TESTS_TOOLS_NODAL_PAGE_RECORD_BYTES_H

#include <string>

namespace nodal {

template <typename Record>
std::string BytesOfRecord(const Record &record) {
  return {reinterpret_cast<const char *>(&record), sizeof record};
}

}  // namespace nodal

#endif  // TESTS_TOOLS_NODAL_PAGE_RECORD_BYTES_H
