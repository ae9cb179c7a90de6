#include "platkit/linux/kernel/khugepaged.h"

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {

Figure ReadMaxSwappedPages(HostFiles &files) {
  return ReadAmount(files, HostPath("sys/kernel/mm/transparent_hugepage/khugepaged/max_ptes_swap"));
}

}  // namespace platkit
