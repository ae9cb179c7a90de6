// Records the running host, or a saved one, until a signal arrives.
#ifndef NODAL_HISTORY_RECORD_H
#define NODAL_HISTORY_RECORD_H

#include <string>
#include <vector>

#include "tools/nodal/history/recorder.h"

namespace nodal {

struct RecordOptions {
  RecorderOptions recorder;
  std::vector<std::string> only = {};  // paths; empty: all but PCI devices
  std::string root = {};               // a saved root folder; empty: the running host
  std::string listen = {};             // where to serve the last sample, as for HttpServer; empty: nowhere
};

// Prints a summary to standard error at the end. Throws a Failure.
void Record(const RecordOptions &options);

}  // namespace nodal

#endif  // NODAL_HISTORY_RECORD_H
