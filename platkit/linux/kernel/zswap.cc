#include "platkit/linux/kernel/zswap.h"

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {

Figure ReadZswapMaxPercent(HostFiles &files) {
  char buffer[16];
  std::string_view enabled;
  const HVC_ReturnStatus status = files.ReadShort(HostPath("sys/module/zswap/parameters/enabled"), buffer, enabled);
  if (status == HVC_NOT_FOUND) return {};
  if (status != HVC_OK) return Figure::Unreadable();
  if (enabled == "N\n") return Figure(0);
  if (enabled != "Y\n") return Figure::Unreadable();
  return ReadAmount(files, HostPath("sys/module/zswap/parameters/max_pool_percent")).IfAbsent(Figure::Unreadable());
}

}  // namespace platkit
