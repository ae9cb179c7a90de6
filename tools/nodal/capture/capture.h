// Saves the tree of a host as a snapshot.
#ifndef NODAL_CAPTURE_CAPTURE_H
#define NODAL_CAPTURE_CAPTURE_H

#include <string>
#include <vector>

namespace nodal {

struct CaptureOptions {
  std::string snapshot;
  std::vector<std::string> only = {};  // paths; empty: all but PCI devices
  bool anonymize = false;
  std::string keyFile = {};  // the file with the secret of the pseudonyms (see KeyFile); empty: a random key
  // The source that the process reads, as in SourceOptions.
  std::string cache = {};
  std::string root = {};
};

// Saves the tree that the process reads, and prints a summary to standard error. Throws a Failure and writes no
// snapshot if the capture fails or a signal asks the program to end.
void Capture(const CaptureOptions &options);

}  // namespace nodal

#endif  // NODAL_CAPTURE_CAPTURE_H
