// Moments of a history. A path of the form DIR@TIME names a moment, and can replace the path of a snapshot.
#ifndef NODAL_HISTORY_MOMENT_FILE_H
#define NODAL_HISTORY_MOMENT_FILE_H

#include <optional>
#include <string>

#include "platkit/history/history.h"
#include "tools/nodal/support/output.h"

namespace nodal {

bool IsFolder(const std::string &path);

// Whether the path names a moment: it has the form DIR@TIME, DIR is a folder, and no file has this path.
bool IsMoment(const std::string &path);

// Replaces the time of a moment, which may depend on the end of the history, with a fixed time. Returns other paths
// unchanged. Throws a Failure if the history cannot be read.
std::string WithFixedTime(const std::string &path);

// What is wrong with the time of a moment; empty for times of a known form and for other paths.
std::string ProblemOfTime(const std::string &path);

// Explains why a moment cannot be read.
Failure MomentFailure(const std::string &path, HVC_ReturnStatus status);

// A moment that was written to a snapshot without a name. Throws a Failure.
class MomentFile {
 public:
  explicit MomentFile(const std::string &path);
  ~MomentFile();
  MomentFile(const MomentFile &) = delete;
  MomentFile &operator=(const MomentFile &) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(fd_); }

 private:
  int fd_;
};

// Both functions throw a Failure.
void OpenHistory(const std::string &folder, platkit::history::History &history);
platkit::history::History::Span SpanOf(const std::string &folder, platkit::history::History &history);

// Parses the time in an option to seconds since 1970. Throws a UsageError that names the option.
int64_t TimeOption(const std::string &name, const std::string &text, const platkit::history::History::Span &span);

}  // namespace nodal

#endif  // NODAL_HISTORY_MOMENT_FILE_H
