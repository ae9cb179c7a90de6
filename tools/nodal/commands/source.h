// The source that a command reads.
#ifndef NODAL_COMMANDS_SOURCE_H
#define NODAL_COMMANDS_SOURCE_H

#include <string>

namespace nodal {

// At most one member is set. If none is set, the command reads the running host.
struct SourceOptions {
  std::string cache;  // a snapshot, or a moment of a history
  std::string root;   // a folder with a saved /proc and /sys
};

// Makes the process read that source. Throws a Failure if it cannot be opened.
void UseSource(const SourceOptions &source);

}  // namespace nodal

#endif  // NODAL_COMMANDS_SOURCE_H
