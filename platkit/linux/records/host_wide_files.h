// Host-wide files that several records use. Values are reused while they are fresh.
#ifndef PLATKIT_LINUX_RECORDS_HOST_WIDE_FILES_H
#define PLATKIT_LINUX_RECORDS_HOST_WIDE_FILES_H

#include "platkit/linux/files/fresh.h"
#include "platkit/linux/kernel/khugepaged.h"
#include "platkit/linux/kernel/meminfo.h"
#include "platkit/linux/kernel/pressure.h"
#include "platkit/linux/kernel/swaps.h"
#include "platkit/linux/kernel/vmstat.h"
#include "platkit/linux/kernel/zoneinfo.h"
#include "platkit/linux/kernel/zram.h"
#include "platkit/linux/kernel/zswap.h"

namespace platkit {

class HostWideFiles {
 public:
  explicit HostWideFiles(HostFiles &files) : files_(files) {}

  const Meminfo &meminfo() {
    return meminfo_.Get(files_.clock(), [this] { return ReadMeminfo(files_); });
  }
  const Vmstat &vmstat() {
    return vmstat_.Get(files_.clock(), [this] { return ReadVmstat(files_); });
  }
  const Zoneinfo &zoneinfo() {
    return zoneinfo_.Get(files_.clock(), [this] { return ReadZoneinfo(files_); });
  }
  const Swaps &swaps() {
    return swaps_.Get(files_.clock(), [this] { return ReadSwaps(files_); });
  }
  const MemoryPressure &pressure() {
    return pressure_.Get(files_.clock(), [this] { return ReadMemoryPressure(files_, HostPath(kHostPressure)); });
  }
  // The memory of all zram devices in use as swap space, in KB.
  Figure zramMemory() {
    return zramMemory_.Get(files_.clock(), [this] { return ReadZramMemory(files_, swaps().zramDevices); });
  }
  Figure maxSwappedPages() {
    return maxSwappedPages_.Get(files_.clock(), [this] { return ReadMaxSwappedPages(files_); });
  }
  Figure zswapMaxPercent() {
    return zswapMaxPercent_.Get(files_.clock(), [this] { return ReadZswapMaxPercent(files_); });
  }

  // The memory in zswap, in KB, before compression. If the kernel does not report the amount: 0 without zswap or while
  // zswap is off, else unreadable.
  Figure Zswapped() {
    const Figure zswapped = meminfo().zswapped;
    if (!zswapped.isAbsent()) return zswapped;
    const Figure percent = zswapMaxPercent();
    return percent.isAbsent() || percent == Figure(0) ? Figure(0) : Figure::Unreadable();
  }

  // Transparent huge pages, in KB. 0 on a kernel without them.
  Figure TransparentPages() {
    const Meminfo &memory = meminfo();
    return memory.total == Figure::Unreadable() ? memory.total : memory.transparent.IfAbsent(Figure(0));
  }

 private:
  HostFiles &files_;
  Fresh<Meminfo> meminfo_;
  Fresh<Vmstat> vmstat_;
  Fresh<Zoneinfo> zoneinfo_;
  Fresh<Swaps> swaps_;
  Fresh<MemoryPressure> pressure_;
  Fresh<Figure> zramMemory_;
  Fresh<Figure> maxSwappedPages_;
  Fresh<Figure> zswapMaxPercent_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_HOST_WIDE_FILES_H
