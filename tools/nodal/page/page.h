// A host as one HTML file.
#ifndef NODAL_PAGE_PAGE_H
#define NODAL_PAGE_PAGE_H

#include <string>

namespace nodal {

struct PageOptions {
  std::string output;
  bool anonymize = false;
  std::string keyFile = {};  // as in CaptureOptions
  // A folder with a history, and times as in RangeOptions. If `history` is set, `cache` and `root` are not used.
  std::string history = {};
  std::string from = {};
  std::string to = {};
  // The source that the process reads, as in SourceOptions.
  std::string cache = {};
  std::string root = {};
};

// Writes the page of the history, or of the host that the process reads. Throws a Failure and leaves no new file if
// this fails or a signal asks the program to end.
void WritePage(const PageOptions &options);

}  // namespace nodal

#endif  // NODAL_PAGE_PAGE_H
