// Writes histories of made-up hosts, for examples and for measurements.
#ifndef SAMPLES_HISTORY_MAKER_H
#define SAMPLES_HISTORY_MAKER_H

#include <errno.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "platkit/history/history_folder.h"
#include "platkit/history/segment_writer.h"

// Ends the program with a message unless the status is HVC_OK.
inline void Require(HVC_ReturnStatus status, const char *what) {
  if (status == HVC_OK) return;
  std::fprintf(stderr, "%s: %s: status %#x\n", program_invocation_short_name, what, status);
  std::exit(EXIT_FAILURE);
}

inline void CopySample(const platkit::history::Sample &from, platkit::history::Sample &to) {
  to.Clear();
  for (size_t i = 0; i < from.size(); ++i)
    to.Add(from[i].key, from[i].type, from[i].payload);
}

// Writes the segments of a history. Replaces segments that already exist.
class HistoryMaker {
 public:
  explicit HistoryMaker(const char *folder, int64_t keyInterval = platkit::history::SegmentWriter::kKeyInterval)
      : writer_(keyInterval) {
    mkdir(folder, S_IRWXU);
    Require(folder_.Open(folder), folder);
  }

  // Opens the segment of this wall time unless it is open.
  platkit::history::SegmentWriter &WriterAt(int64_t wall) {
    const std::string name = platkit::history::SegmentName::At(wall).text();
    if (name != open_) {
      unlinkat(folder_.fd(), name.c_str(), 0);
      Require(writer_.Open(folder_.fd(), name.c_str()), name.c_str());
      open_ = name;
    }
    return writer_;
  }

 private:
  platkit::history::HistoryFolder folder_;
  platkit::history::SegmentWriter writer_;
  std::string open_;
};

#endif  // SAMPLES_HISTORY_MAKER_H
