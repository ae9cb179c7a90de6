// The source that a command reads.
#ifndef NODAL_COMMANDS_SOURCE_H
#define NODAL_COMMANDS_SOURCE_H

#include <string>

namespace nodal {

// At most one of them is set; without any, the running host is read.
struct SourceOptions {
  std::string cache;  // a snapshot
  std::string root;   // a folder with a saved /proc and /sys
};

// Makes the process read that source. Throws a Failure if it cannot be opened.
void UseSource(const SourceOptions &source);

}  // namespace nodal

#endif  // NODAL_COMMANDS_SOURCE_H
