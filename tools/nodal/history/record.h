// Records the running host, or a saved root folder, as a history.
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
  std::string listen = {};             // the address at which to serve the last sample, as for HttpServer; empty: none
};

// Records until a signal arrives or the number of samples is reached. Prints a summary to standard error on exit.
// Throws a Failure.
void Record(const RecordOptions &options);

}  // namespace nodal

#endif  // NODAL_HISTORY_RECORD_H
