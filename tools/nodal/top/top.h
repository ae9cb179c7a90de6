// nodal top: a live view of a host on the terminal.
#ifndef NODAL_TOP_TOP_H
#define NODAL_TOP_TOP_H

#include <cstdint>
#include <string>
#include <vector>

#include "tools/nodal/top/session.h"

namespace nodal::top {

struct TopOptions {
  SessionOptions session = {};
  std::string cache = {};
  std::string root = {};
  int64_t interval = 0;  // in nanoseconds
  uint64_t count = 0;    // the number of samples; 0: unlimited, or one sample with isBatch
  bool isBatch = false;
};

void Show(const TopOptions &options);

}  // namespace nodal::top

#endif  // NODAL_TOP_TOP_H
