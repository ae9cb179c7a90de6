#include "platkit/linux/kernel/page_size.h"

#include <elf.h>
#include <unistd.h>

#include <cstring>
#include <string_view>

namespace platkit {
namespace {

bool IsPageSize(uint64_t size) { return size >= kRecordPage && (size & (size - 1)) == 0; }

}  // namespace

// A saved root may come from a host with another page size. AT_PAGESZ contains the page size of that host. Without
// AT_PAGESZ, the result is the page size of this host.
uint64_t PageSize::Bytes() {
  if (bytes_) return *bytes_;
  bytes_ = static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
  char buffer[1024];
  std::string_view vector;
  if (files_.Read(HostPath("proc/self/auxv"), buffer, vector) != HVC_OK) vector = {};
  for (Elf64_auxv_t entry; vector.size() >= sizeof entry; vector.remove_prefix(sizeof entry)) {
    std::memcpy(&entry, vector.data(), sizeof entry);
    if (entry.a_type == AT_PAGESZ && IsPageSize(entry.a_un.a_val)) bytes_ = entry.a_un.a_val;
  }
  return *bytes_;
}

}  // namespace platkit
