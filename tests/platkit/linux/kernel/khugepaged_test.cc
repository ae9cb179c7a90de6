#include "platkit/linux/kernel/khugepaged.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(Khugepaged, MaxPtesSwap) {
  ExpectFigures("sys/kernel/mm/transparent_hugepage/khugepaged/max_ptes_swap", ReadMaxSwappedPages,
                {{"64\n", Figure(64)}, {"x\n", kUnreadable}, {"", kUnreadable}}, kUnreadable, kAbsent);
}

}  // namespace
}  // namespace platkit
