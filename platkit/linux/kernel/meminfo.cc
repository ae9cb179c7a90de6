#include "platkit/linux/kernel/meminfo.h"

#include <array>

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {

Meminfo ReadMeminfo(HostFiles &files) {
  // The kernel's memory excludes VmallocUsed, because the other lines already contain most of it.
  std::array<Figure, 7> parts;
  Figure anonymousHuge, sharedHuge;
  Meminfo memory;
  const WantedFigure wanted[] = {
      {"MemTotal", &memory.total},
      {"MemFree", &memory.free},
      {"MemAvailable", &memory.available},
      {"Slab", &memory.slab},
      {"KernelStack", &parts[0]},
      {"ShadowCallStack", &parts[1]},
      {"PageTables", &parts[2]},
      {"SecPageTables", &parts[3]},
      {"Percpu", &parts[4]},
      {"NFS_Unstable", &parts[5]},
      {"Bounce", &parts[6]},
      {"HardwareCorrupted", &memory.hardwareCorrupted},
      {"SwapCached", &memory.swapCached},
      {"AnonHugePages", &anonymousHuge},
      {"ShmemHugePages", &sharedHuge},
      {"Zswapped", &memory.zswapped},
  };
  ReadFigures(files, HostPath("proc/meminfo"), wanted);
  memory.transparent = anonymousHuge + sharedHuge;
  memory.kernel = memory.slab;
  for (const Figure part : parts)
    memory.kernel = memory.kernel + part;
  for (Figure *figure : {&memory.total, &memory.free, &memory.available, &memory.kernel, &memory.slab}) {
    *figure = figure->IfAbsent(Figure::Unreadable());
  }
  return memory;
}

}  // namespace platkit
