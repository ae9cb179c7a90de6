#include "platkit/linux/kernel/page_size.h"

#include <unistd.h>

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

// An auxiliary vector with one entry and the terminator.
std::string Vector(uint64_t type, uint64_t value) {
  const uint64_t entries[] = {type, value, 0, 0};
  return {reinterpret_cast<const char *>(entries), sizeof entries};
}

uint64_t BytesOf(const std::string &vector) {
  KernelFiles kernel;
  return PageSize(kernel.With("proc/self/auxv", vector)).Bytes();
}

TEST(PageSize, TheVectorTells) {
  constexpr uint64_t kPageSize = 6;  // AT_PAGESZ
  const auto own = static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
  EXPECT_EQ(BytesOf(Vector(kPageSize, 65536)), 65536u);
  EXPECT_EQ(BytesOf(Vector(7, 65536)), own) << "another entry";
  for (const uint64_t bad : {0u, 1u, 2048u, 65537u, 3u * 4096u})
    EXPECT_EQ(BytesOf(Vector(kPageSize, bad)), own) << bad;
  EXPECT_EQ(BytesOf("short"), own);
  KernelFiles kernel;
  EXPECT_EQ(PageSize(kernel.files()).Bytes(), own) << "missing";
}

TEST(PageSize, Units) {
  KernelFiles kernel;
  PageSize size(kernel.With("proc/self/auxv", Vector(6, 65536)));
  EXPECT_EQ(size.KB(), 64u);
  EXPECT_EQ(size.RecordPages(), 16u);
}

}  // namespace
}  // namespace platkit
