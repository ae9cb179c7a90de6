#include "platkit/linux/meminfo.h"

#include <array>

#include "platkit/linux/figure_files.h"

namespace platkit {

Meminfo ReadMeminfo(HostFiles &files) {
  // VmallocUsed is not among them: most of what it counts is counted here already.
  std::array<Figure, 8> parts;
  Meminfo memory;
  const WantedFigure wanted[] = {
      {"MemTotal", &memory.total}, {"MemFree", &memory.free},    {"Active", &memory.active},
      {"Slab", &parts[0]},         {"KernelStack", &parts[1]},   {"ShadowCallStack", &parts[2]},
      {"PageTables", &parts[3]},   {"SecPageTables", &parts[4]}, {"Percpu", &parts[5]},
      {"NFS_Unstable", &parts[6]}, {"Bounce", &parts[7]},
  };
  ReadFigures(files, HostPath("proc/meminfo"), wanted);
  for (const Figure part : parts)
    memory.kernel = memory.kernel + part;
  for (Figure *figure : {&memory.total, &memory.free, &memory.active, &memory.kernel}) {
    *figure = figure->IfAbsent(Figure::Unreadable());
  }
  return memory;
}

}  // namespace platkit
